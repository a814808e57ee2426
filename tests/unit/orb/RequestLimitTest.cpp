// Requests over the size limit.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "tests/support/ResidentMemory.h"
#include "tests/unit/orb/LogLines.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::Answering;
using orb_tests::RawClient;
using orb_tests::requestTo;

orb::Options smallRequests() {
  orb::Options options = orb_tests::quickOptions();
  options.maxRequestBytes = 65536;
  options.maxMessageBytes = 64 * 1024 * 1024;
  return options;
}

class RequestLimit : public testing::Test {
 protected:
  explicit RequestLimit(const orb::Options& options = smallRequests())
      : server_(orb::startServer(options, {"127.0.0.1", 0}, log_.function())) {
    published_ = object_->publish(servant_.in());
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
  }

  orb_tests::LogLines log_;
  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  PortableServer::ServantBase_var servant_ = new Answering(7);
  CORBA::Object_var published_;
};

// Returns the head of a request that declares a size.
std::string declaring(std::uint32_t size) {
  std::string bytes = requestTo("Key", "getLength").bytes();
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[8 + i] = static_cast<char>(size >> (8 * i));
  }
  return bytes;
}

// Whether the reply is a MARSHAL exception for which isMessageTooLarge() is true.
bool isRefusal(const std::string& reply) {
  const std::string name = "CORBA/MARSHAL:1.0";
  const std::size_t found = reply.find(name);
  std::size_t at = found + name.size() + 1;
  at += (4 - at % 4) % 4;
  if (found == std::string::npos || at + 4 > reply.size()) {
    return false;
  }
  std::uint32_t minor = 0;
  std::memcpy(&minor, reply.data() + at, sizeof minor);
  return orb::isMessageTooLarge(CORBA::MARSHAL(minor, CORBA::COMPLETED_NO));
}

// Sends a request with an argument of `bytes` bytes and returns the reply.
std::string replyTo(const orb::Endpoint& endpoint, std::size_t bytes) {
  const RawClient client(endpoint);
  EXPECT_TRUE(
      client.send(requestTo("Key", "_is_a").align(4).text(std::string(bytes, 'x')).bytes()));
  return client.receive();
}

TEST_F(RequestLimit, RefusesARequestByItsDeclaredSize) {
  const long before = support::residentKib(getpid());
  for (int i = 0; i < 3; ++i) {
    const RawClient client(server_->endpoint());
    ASSERT_TRUE(client.send(declaring(60000000)));
    EXPECT_TRUE(isRefusal(client.receive()));
  }
  EXPECT_LT(support::residentKib(getpid()) - before, 20000);
  const std::vector<std::string> lines = log_.all();
  ASSERT_EQ(1U, lines.size());
  EXPECT_NE(std::string::npos, lines.front().find("getLength")) << lines.front();
}

TEST_F(RequestLimit, KeepsTheConnection) {
  const RawClient client(server_->endpoint());
  const std::string request = declaring(70000);
  ASSERT_TRUE(client.send(request + std::string(70000 + 12 - request.size(), 'x')));
  EXPECT_TRUE(isRefusal(client.receive()));
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").bytes()));
  const std::string reply = client.receive();
  EXPECT_FALSE(reply.empty());
  EXPECT_FALSE(isRefusal(reply));
}

TEST_F(RequestLimit, IsReportedToTheClient) {
  for (const std::size_t bytes : {std::size_t{100000}, std::size_t{3000000}}) {
    EXPECT_TRUE(isRefusal(replyTo(server_->endpoint(), bytes))) << bytes;
  }
  const std::string reply = replyTo(server_->endpoint(), 60000);
  EXPECT_FALSE(reply.empty());
  EXPECT_FALSE(isRefusal(reply));
}

orb::Options largeTypeChecks() {
  orb::Options options = smallRequests();
  options.largeOperations = {"_is_a"};
  return options;
}

class LargeOperation : public RequestLimit {
 protected:
  LargeOperation() : RequestLimit(largeTypeChecks()) {}
};

TEST_F(LargeOperation, IsLimitedByTheMessageSize) {
  const std::string reply = replyTo(server_->endpoint(), 3000000);
  EXPECT_FALSE(reply.empty());
  EXPECT_FALSE(isRefusal(reply));
}

}  // namespace
