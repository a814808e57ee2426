// Endpoints on Unix sockets.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "orb/resolve.h"
#include "orb/unixsocket.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb::Endpoint;
using orb::Transport;
using orb_tests::Answering;
using orb_tests::RawClient;
using orb_tests::requestTo;

class UnixEndpoints : public testing::Test {
 protected:
  UnixEndpoints() {
    orb::Options options = orb_tests::quickOptions();
    options.serveTimeout = std::chrono::milliseconds(300);
    server_ = orb::startServer(options, {{"127.0.0.1", 0}, socket_}, nullptr);
    object_ = server_->wellKnownObject("Key");
    published_ = object_->publish(servant_.in(), [this](const orb::Request& request) {
      const std::lock_guard<std::mutex> lock(mutex_);
      peer_ = request.peer;
      return nullptr;
    });
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
  }

  orb::Peer peer() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return peer_;
  }

  const support::TemporaryDirectory folder_;
  const Endpoint socket_{(folder_.path() / "a.sock").string(), 0, Transport::kUnix};
  const PortableServer::ServantBase_var servant_ = new Answering(7);
  std::mutex mutex_;
  orb::Peer peer_;
  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<orb::WellKnownObject> object_;
  CORBA::Object_var published_;
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
