// Failures of calls with incomplete or missing replies.

#include <gtest/gtest.h>

#include <thread>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::Message;

// A server that reads one request, sends a fixed text, and closes the connection.
class RawPeer {
 public:
  explicit RawPeer(std::string answer)
      : answer_(std::move(answer)), listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    bind(listener_, general, size);
    listen(listener_, 8);
    getsockname(listener_, general, &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  ~RawPeer() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }
  RawPeer(const RawPeer&) = delete;
  RawPeer& operator=(const RawPeer&) = delete;

  std::string corbaloc() const {
    return "corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(port_) + "/Key";
  }

 private:
  void serve() const {
    int connection = accept(listener_, nullptr, nullptr);
    while (connection >= 0) {
      char request[4096];
      if (recv(connection, request, sizeof request, 0) > 0) {
        send(connection, answer_.data(), answer_.size(), MSG_NOSIGNAL);
      }
      close(connection);
      connection = accept(listener_, nullptr, nullptr);
    }
  }

  const std::string answer_;
  const int listener_;
  std::uint16_t port_ = 0;
  std::thread thread_;
};

// Calls a RawPeer and returns the classification of the failure.
class BadReplies : public testing::Test {
 protected:
  template <typename Check>
  void expectOfCall(const std::string& answer, Check check) {
    const RawPeer peer(answer);
    const CORBA::Object_var object = client_->get()->string_to_object(peer.corbaloc().c_str());
    try {
      object->_non_existent();
      FAIL() << "the call succeeded";
    } catch (const CORBA::SystemException& failure) {
      check(failure);
    }
  }

  std::unique_ptr<orb::Orb> client_ = orb::startClient(orb_tests::quickOptions());
};

TEST_F(BadReplies, ReportsAConnectionThatEndsInTheReply) {
  Message reply(2, Message::Type::kReply, false);
  reply.number(2).number(0).raw(std::string(100000, '\0'));
  const std::string whole = reply.bytes();
  expectOfCall(whole.substr(0, 50000), [](const CORBA::SystemException& failure) {
    EXPECT_TRUE(orb::isBrokenOff(failure)) << orb::describe(failure);
    EXPECT_FALSE(orb::isUnreachable(failure)) << orb::describe(failure);
    EXPECT_FALSE(orb::isMessageTooLarge(failure)) << orb::describe(failure);
  });
}

TEST_F(BadReplies, ReportsAConnectionThatEndsBeforeTheReply) {
  expectOfCall("", [](const CORBA::SystemException& failure) {
    EXPECT_FALSE(orb::isBrokenOff(failure)) << orb::describe(failure);
    EXPECT_TRUE(orb::isUnreachable(failure)) << orb::describe(failure);
    EXPECT_TRUE(orb::isConnectionClosed(failure)) << orb::describe(failure);
  });
}

}  // namespace
