// Endpoints on Unix sockets.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "orb/resolve.h"
#include "orb/unixsocket.h"
#include "tests/unit/orb/EndpointFixture.h"
#include "tests/unit/orb/RawClient.h"

namespace {

using orb::Endpoint;
using orb::Transport;
using orb_tests::RawClient;
using orb_tests::requestTo;

class UnixEndpoints : public orb_tests::EndpointFixture {
 protected:
  UnixEndpoints() {
    orb::Options options = orb_tests::quickOptions();
    options.serveTimeout = std::chrono::milliseconds(300);
    start({{"127.0.0.1", 0}, socket_}, options);
  }

  const Endpoint socket_{path(), 0, Transport::kUnix};
};

TEST_F(UnixEndpoints, ServeRequestsAndNameTheTransport) {
  const RawClient client(socket_);
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").bytes()));
  ASSERT_TRUE(client.answer());
  EXPECT_EQ(Transport::kUnix, peer().transport);
  EXPECT_EQ("", peer().address);
  EXPECT_EQ(1U, peer().endpoint);
}

TEST_F(UnixEndpoints, CloseAConnectionWithAnIncompleteRequest) {
  const RawClient client(socket_);
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").bytes().substr(0, 20)));
  EXPECT_TRUE(client.isClosedByPeer());
}

TEST_F(UnixEndpoints, AreAddressableByACorbaloc) {
  const std::string text = orb::corbaloc(socket_, "Key");
  const CORBA::Object_var object =
      orb::resolve(server_->get(), text, std::chrono::milliseconds(1000));
  EXPECT_EQ(orb::format(socket_), orb::addressOf(object.in()));
  const CORBA::Object_var beside = orb::objectBeside(server_->get(), object.in(), "Other");
  EXPECT_EQ(orb::format(socket_), orb::addressOf(beside.in()));
  EXPECT_EQ("Other", orb::objectKeyOf(beside.in()));
}

TEST_F(UnixEndpoints, RemoveTheirFileAtTheEnd) {
  EXPECT_TRUE(std::filesystem::is_socket(socket_.host));
  object_.reset();
  server_.reset();
  EXPECT_FALSE(std::filesystem::exists(socket_.host));
}

TEST_F(UnixEndpoints, RefuseAPathInUseWithOneLine) {
  object_.reset();
  server_.reset();
  const int live = orb::listenOnUnixSocket(socket_.host);
  try {
    orb::startServer({}, socket_, nullptr);
    FAIL() << "two servers listen";
  } catch (const orb::EndpointError& failure) {
    EXPECT_EQ("cannot listen on " + orb::format(socket_) + ": another process listens there",
              std::string(failure.what()));
  }
  ::close(live);
}

}  // namespace
