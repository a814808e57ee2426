// Limits and timeouts of incoming connections.

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <list>
#include <thread>

#include "tests/unit/orb/LogLines.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::Answering;
using orb_tests::Message;
using orb_tests::RawClient;
using orb_tests::requestTo;

constexpr std::size_t kMostConnections = 4;

orb::Options tightOptions() {
  orb::Options options = orb_tests::quickOptions();
  options.maxConnections = kMostConnections;
  options.serveTimeout = std::chrono::milliseconds(300);
  return options;
}

bool isServed(const RawClient& client) {
  return client.send(requestTo("Key", "getLength").bytes()) && client.answer();
}

class IncomingConnections : public testing::Test {
 protected:
  explicit IncomingConnections(const orb::Options& options = tightOptions()) {
    server_ = orb::startServer(options, {"127.0.0.1", 0}, log_.function());
    object_ = server_->wellKnownObject("Key");
    published_ = object_->publish(servant_.in());
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
  }

  // Connects repeatedly until the server, which has to notice closed connections, admits a client.
  bool isServedInTheEnd() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
      if (isServed(RawClient(server_->endpoint()))) {
        return true;
      }
    }
    return false;
  }

  // Waits until the server has noticed the closed connections.
  bool isOpenInTheEnd(std::size_t connections) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (server_->openConnections() != connections && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
    return server_->openConnections() == connections;
  }

  orb_tests::LogLines log_;
  PortableServer::ServantBase_var servant_ = new Answering(7);
  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<orb::WellKnownObject> object_;
  CORBA::Object_var published_;
};

TEST_F(IncomingConnections, EndWhenARequestIsIncompleteAfterTheTimeout) {
  const std::string request = requestTo("Key", "getLength").bytes();
  const std::string beginning =
      Message(2, Message::Type::kRequest, true).number(1).align(8).bytes();
  std::list<RawClient> clients;
  for (const std::string& part : {request.substr(0, 1), request.substr(0, 6),
                                  request.substr(0, request.size() - 10), beginning}) {
    clients.emplace_back(server_->endpoint());
    ASSERT_TRUE(clients.back().send(part));
  }
  for (const RawClient& client : clients) {
    EXPECT_TRUE(client.isClosedByPeer());
  }
  EXPECT_EQ(1, log_.count("a connection was closed: its request was not complete in time"));
  clients.clear();
  EXPECT_TRUE(isServedInTheEnd());
}

TEST_F(IncomingConnections, ExpireInTheOrderOfTheirRequests) {
  const RawClient first(server_->endpoint());
  ASSERT_TRUE(first.send("G"));
  const RawClient other(server_->endpoint());
  const auto later = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
  while (std::chrono::steady_clock::now() < later) {
    ASSERT_TRUE(isServed(other));
  }
  const RawClient second(server_->endpoint());
  ASSERT_TRUE(second.send("G"));
  EXPECT_TRUE(first.isClosedByPeer());
  EXPECT_TRUE(second.isClosedByPeer());
}

TEST_F(IncomingConnections, EndWhenASecondRequestIsIncompleteAfterTheTimeout) {
  const RawClient client(server_->endpoint());
  const std::string request = requestTo("Key", "getLength").bytes();
  ASSERT_TRUE(client.send(request + request.substr(0, 20)));
  EXPECT_TRUE(client.answer());
  EXPECT_TRUE(client.isClosedByPeer());
}

TEST_F(IncomingConnections, EndWhenARequestArrivesByteByByteBeyondTheTimeout) {
  const RawClient client(server_->endpoint());
  std::promise<void> closed;
  std::thread trickle([&client, end = closed.get_future()] {
    const std::string bytes(2000, 'x');
    client.send(Message(2, Message::Type::kRequest, false).raw(bytes).bytes().substr(0, 12));
    while (end.wait_for(std::chrono::milliseconds(20)) == std::future_status::timeout &&
           client.send("x")) {
    }
  });
  EXPECT_TRUE(client.isClosedByPeer());
  closed.set_value();
  trickle.join();
}

TEST_F(IncomingConnections, StayOpenBetweenRequestsLongerThanTheRequestTimeout) {
  const RawClient client(server_->endpoint());
  EXPECT_TRUE(isServed(client));
  const RawClient other(server_->endpoint());
  ASSERT_TRUE(other.send("G"));
  EXPECT_TRUE(other.isClosedByPeer());  // after the request timeout
  EXPECT_TRUE(isServed(client));
}

TEST_F(IncomingConnections, AreCountedWhileTheyAreOpen) {
  EXPECT_EQ(0, server_->openConnections());
  std::list<RawClient> clients;
  for (std::size_t i = 1; i <= 3; ++i) {
    clients.emplace_back(server_->endpoint());
    ASSERT_TRUE(isServed(clients.back()));
    EXPECT_EQ(i, server_->openConnections());
  }
  clients.pop_front();
  EXPECT_TRUE(isOpenInTheEnd(2));
  clients.clear();
  EXPECT_TRUE(isOpenInTheEnd(0));
}

TEST_F(IncomingConnections, AreClosedAndLoggedOnceOverTheLimit) {
  std::list<RawClient> admitted;
  for (std::size_t i = 0; i < kMostConnections; ++i) {
    admitted.emplace_back(server_->endpoint());
    ASSERT_TRUE(isServed(admitted.back()));
  }
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(RawClient(server_->endpoint()).isClosedByPeer());
  }
  EXPECT_TRUE(isServed(admitted.front()));
  EXPECT_EQ(1, log_.count("connections are refused: 4 connections"));
  admitted.clear();
  EXPECT_TRUE(isServedInTheEnd());
}

orb::Options littleMemory() {
  orb::Options options = orb_tests::quickOptions();
  options.maxMessageBytes = 256 * 1024;
  options.maxRequestBytes = options.maxMessageBytes;
  return options;
}

class CrowdedConnections : public IncomingConnections {
 protected:
  CrowdedConnections() : IncomingConnections(littleMemory()) {}
};

TEST_F(CrowdedConnections, AreServedAfterTheReceiveBudgetIsFree) {
  const std::string request = requestTo("Key", "_is_a").text(std::string(200000, 'x')).bytes();
  std::list<RawClient> clients;
  for (int i = 0; i < 3; ++i) {  // together more than the receive budget
    clients.emplace_back(server_->endpoint());
    ASSERT_TRUE(clients.back().send(request.substr(0, request.size() - 10)));
  }
  for (const RawClient& client : clients) {
    ASSERT_TRUE(client.send(request.substr(request.size() - 10)));
  }
  for (const RawClient& client : clients) {
    EXPECT_TRUE(client.answer());
  }
}

orb::Options shortIdleTime() {
  orb::Options options = orb_tests::quickOptions();
  options.idleTimeout = std::chrono::seconds(2);
  return options;
}

class IdleConnections : public IncomingConnections {
 protected:
  IdleConnections() : IncomingConnections(shortIdleTime()) {}
};

TEST_F(IdleConnections, AreClosedAfterTheIdleTimeout) {
  const RawClient silent(server_->endpoint());
  const RawClient served(server_->endpoint());
  ASSERT_TRUE(isServed(served));
  EXPECT_TRUE(silent.isAnswered());  // a CloseConnection message, or the end
  EXPECT_TRUE(served.isAnswered());
}

}  // namespace
