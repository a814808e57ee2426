// Tests of the request guard of a well-known object.

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <utility>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb::Request;
using orb_tests::Answering;
using orb_tests::LargeReplies;
using orb_tests::lengthOf;
using orb_tests::RawClient;
using orb_tests::requestTo;

class RequestGuards : public testing::Test {
 protected:
  void publish(orb::RequestGuard guard) {
    published_ = object_->publish(servant_.in(), std::move(guard));
  }

  static std::string getLength() { return requestTo("Key", "getLength").bytes(); }

  static bool isTransient(const std::string& answer) {
    return answer.find("IDL:omg.org/CORBA/TRANSIENT:1.0") != std::string::npos;
  }

  bool refusesNewRequests() {
    const RawClient client(server_->endpoint());
    return client.send(getLength()) && isTransient(client.receive());
  }

  std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  std::function<CORBA::ULong()> answer_ = [] { return 7U; };
  const PortableServer::ServantBase_var servant_ = new Answering([this] { return answer_(); });
  CORBA::Object_var published_;
};

TEST_F(RequestGuards, ReceiveOperationPeerAndSize) {
  std::promise<Request> seen;
  publish([&seen](const Request& request) {
    seen.set_value(request);
    return nullptr;
  });
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(getLength()));
  EXPECT_TRUE(client.answer());
  const Request request = seen.get_future().get();
  EXPECT_EQ("getLength", request.operation);
  EXPECT_EQ(orb::Peer::Transport::kTcp, request.peer.transport);
  EXPECT_EQ("127.0.0.1", request.peer.address);
  EXPECT_EQ("", request.peer.subject);
  EXPECT_EQ(0U, request.peer.endpoint);
  EXPECT_EQ(getLength().size(), request.bytes);
}

TEST_F(RequestGuards, RunBeforeTheArgumentsAreDecoded) {
  std::promise<std::string> operation;
  publish([&operation](const Request& request) {
    operation.set_value(request.operation);
    return nullptr;
  });
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(requestTo("Key", "next_n").bytes()));  // without the argument
  EXPECT_EQ("next_n", operation.get_future().get());
  EXPECT_NE(std::string::npos, client.receive().find("IDL:omg.org/CORBA/MARSHAL:1.0"));
}

TEST_F(RequestGuards, RejectARequestWithTheirException) {
  publish([](const Request&) -> std::shared_ptr<void> {
    throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO);
  });
  answer_ = [] {
    ADD_FAILURE() << "the servant was called";
    return 0U;
  };
  EXPECT_THROW(lengthOf(published_), CORBA::NO_RESOURCES);
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(getLength()));
  const std::string answer = client.receive();
  EXPECT_NE(std::string::npos, answer.find("IDL:omg.org/CORBA/NO_RESOURCES:1.0")) << answer;
}

TEST_F(RequestGuards, KeepTheTokenUntilTheReplyIsSent) {
  const PortableServer::Servant_var<LargeReplies> servant = new LargeReplies;
  std::promise<void> gone;
  std::atomic<bool> alive{true};
  const auto destroy = [&](int* token) {
    delete token;
    alive = false;
    gone.set_value();
  };
  published_ = object_->publish(
      servant.in(), [&](const Request&) { return std::shared_ptr<void>(new int, destroy); });
  {
    const RawClient client(server_->endpoint());
    ASSERT_TRUE(client.send(requestTo("Key", "next_n").number(1).bytes()));
    EXPECT_TRUE(client.isAnswered());
    EXPECT_TRUE(alive);  // the reply exceeds the socket buffers
  }
  gone.get_future().wait();
}

TEST_F(RequestGuards, ReleaseTheTokenWhenTheOperationFails) {
  std::weak_ptr<void> token;
  publish([&token](const Request&) {
    const auto made = std::make_shared<int>();
    token = made;
    return made;
  });
  answer_ = []() -> CORBA::ULong { throw CORBA::NO_MEMORY(0, CORBA::COMPLETED_NO); };
  EXPECT_THROW(lengthOf(published_), CORBA::NO_MEMORY);
  object_->retire();  // returns after the end of the request
  EXPECT_TRUE(token.expired());
}

TEST_F(RequestGuards, CannotAdmitARequestAfterRetire) {
  std::promise<void> entered;
  std::promise<void> leave;
  std::atomic<int> runs{0};
  publish([&](const Request&) {
    if (++runs == 1) {
      entered.set_value();
      leave.get_future().wait();
    }
    return nullptr;
  });
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(getLength()));
  entered.get_future().wait();
  auto retired = std::async(std::launch::async, [this] { object_->retire(); });
  while (!refusesNewRequests()) {
  }
  const int runsBefore = runs;
  EXPECT_TRUE(refusesNewRequests());
  EXPECT_EQ(runsBefore, runs);  // the guard is not asked about a request that is rejected anyway
  EXPECT_EQ(std::future_status::timeout, retired.wait_for(std::chrono::seconds(0)));
  leave.set_value();
  retired.get();
  EXPECT_TRUE(isTransient(client.receive()));
}

TEST_F(RequestGuards, AreReleasedWithTheServant) {
  const auto watched = std::make_shared<int>();
  publish([watched](const Request&) { return watched; });
  EXPECT_EQ(2, watched.use_count());
  object_->retire();
  EXPECT_EQ(1, watched.use_count());
  publish(nullptr);
  EXPECT_EQ(7U, lengthOf(published_));
}

TEST_F(RequestGuards, DoNotChangeCurrentPeer) {
  publish(nullptr);
  std::promise<orb::Peer> seen;
  answer_ = [&seen] {
    seen.set_value(orb::currentPeer());
    return 0U;
  };
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(getLength()));
  const orb::Peer peer = seen.get_future().get();
  EXPECT_EQ(orb::Peer::Transport::kTcp, peer.transport);
  EXPECT_EQ("127.0.0.1", peer.address);
  EXPECT_EQ(orb::Peer::Transport::kLocal, orb::currentPeer().transport);
  EXPECT_EQ("", orb::currentPeer().address);
}

TEST_F(RequestGuards, SeeACallOfThisProcessAsALocalPeerOrOverTheLoopback) {
  std::promise<Request> seen;
  publish([&seen](const Request& request) {
    seen.set_value(request);
    return nullptr;
  });
  EXPECT_EQ(7U, lengthOf(published_));
  // One of the ORBs makes local calls to a fixed key over the network.
  const orb::Peer peer = seen.get_future().get().peer;
  const bool local = peer.transport == orb::Peer::Transport::kLocal;
  EXPECT_EQ(local ? "" : "127.0.0.1", peer.address);
}

TEST(FormatOfAPeer, NamesTheAddressAndTheCertificate) {
  using Transport = orb::Peer::Transport;
  EXPECT_EQ("", orb::format(orb::Peer()));
  EXPECT_EQ("192.0.2.1", orb::format(orb::Peer{Transport::kTcp, "192.0.2.1", "", 0}));
  EXPECT_EQ("a local socket", orb::format(orb::Peer{Transport::kUnix, "", "", 1}));
  EXPECT_EQ("::1 (CN=operator,O=Net)",
            orb::format(orb::Peer{Transport::kTls, "::1", "CN=operator,O=Net", 0}));
}

}  // namespace
