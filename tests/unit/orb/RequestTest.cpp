// Observation of requests, and malformed requests.

#include <gtest/gtest.h>

#include <future>
#include <mutex>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::Answering;
using orb_tests::lengthOf;
using orb_tests::RawClient;
using orb_tests::requestTo;

class Requests : public testing::Test {
 protected:
  Requests() {
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
    published_ = object_->publish(servant_.in());
  }

  std::vector<std::string> observed() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return observed_;
  }

  void observe() {
    server_->observeRequests([this](const orb::ObjectKey& key) {
      const std::lock_guard<std::mutex> lock(mutex_);
      observed_.push_back(key);
    });
  }

  std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  PortableServer::ServantBase_var servant_ = new Answering(7);
  CORBA::Object_var published_;
  std::mutex mutex_;
  std::vector<std::string> observed_;
};

// Returns an octet sequence in hexadecimal digits.
std::string hex(const std::string& bytes) {
  static const char* const kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto value = static_cast<unsigned char>(c);
    text += {kDigits[value / 16], kDigits[value % 16]};
  }
  return text;
}

// Returns the reference with a profile of an unknown kind before the other profiles.
std::string withUnknownProfile(CORBA::ORB_ptr orb, CORBA::Object_ptr object) {
  const CORBA::String_var text = orb->object_to_string(object);
  const std::string ior = text.in();
  // IOR:01 000000 <length of type id> <type id> <count of profiles> <profiles>
  const auto byteAt = [&ior](std::size_t index) {
    return std::stoul(ior.substr(4 + 2 * index, 2), nullptr, 16);
  };
  EXPECT_EQ(1U, byteAt(0)) << "not little-endian";
  std::size_t count = 8 + byteAt(4) + 256 * byteAt(5);
  count += (4 - count % 4) % 4;
  EXPECT_EQ(1U, byteAt(count));
  const std::string unknown("\x34\x12\0\0\x08\0\0\0\1\0\0\0abcd", 16);
  return ior.substr(0, 4 + 2 * count) + hex(std::string("\2\0\0\0", 4)) + hex(unknown) +
         ior.substr(4 + 2 * (count + 4));
}

TEST_F(Requests, AcceptReferencesWithUnknownProfiles) {
  const CORBA::Object_var object =
      server_->get()->string_to_object(withUnknownProfile(server_->get(), published_.in()).c_str());
  EXPECT_EQ(7U, lengthOf(object.in()));
}

TEST_F(Requests, AreRejectedWithoutArguments) {
  const PortableServer::ObjectId_var id = server_->rootPoa()->activate_object(servant_.in());
  const CORBA::Object_var reference = server_->rootPoa()->id_to_reference(id.in());
  for (const std::string& key : {std::string("Key"), orb::objectKeyOf(reference.in())}) {
    const RawClient client(server_->endpoint());
    ASSERT_TRUE(client.send(requestTo(key, "next_n").bytes()));
    EXPECT_NE(std::string::npos, client.receive().find("IDL:omg.org/CORBA/MARSHAL:1.0"));
  }
}

TEST_F(Requests, AreObservedWithTheKeysOfTheirTargets) {
  const PortableServer::ServantBase_var other = new Answering(8);
  const PortableServer::ObjectId_var id = server_->rootPoa()->activate_object(other.in());
  const CORBA::Object_var reference = server_->rootPoa()->id_to_reference(id.in());
  const std::string key = orb::objectKeyOf(reference.in());
  observe();
  const RawClient client(server_->endpoint());
  for (const std::string& target : {std::string("Key"), key}) {
    ASSERT_TRUE(client.send(requestTo(target, "getLength").bytes()));
    EXPECT_TRUE(client.answer());
  }
  EXPECT_EQ((std::vector<std::string>{"Key", key}), observed());
  server_->observeRequests(nullptr);
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").bytes()));
  EXPECT_TRUE(client.answer());
  EXPECT_EQ(2U, observed().size());
}

TEST_F(Requests, EndTheObservationAfterRunningObservers) {
  std::promise<void> entered;
  std::promise<void> leave;
  server_->observeRequests([&](const orb::ObjectKey&) {
    entered.set_value();
    leave.get_future().wait();
  });
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").bytes()));
  entered.get_future().wait();
  auto ended = std::async(std::launch::async, [this] { server_->observeRequests(nullptr); });
  EXPECT_EQ(std::future_status::timeout, ended.wait_for(std::chrono::seconds(0)));
  leave.set_value();
  ended.get();
  EXPECT_TRUE(client.answer());
}

}  // namespace
