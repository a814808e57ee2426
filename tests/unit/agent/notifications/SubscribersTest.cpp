// Subscribers: delivery, slow and failing consumers, checks while idle, limits.

#include <gtest/gtest.h>

#include "agent/base/Log.h"
#include "tests/unit/agent/notifications/Fixture.h"
#include "tests/unit/agent/notifications/WirePeer.h"

namespace {

using namespace notification_tests;

using Act = WirePeer::Act;
using Acts = WirePeer::Acts;
using CosNotification::StructuredEvent;

constexpr const char* kPush = "push_structured_event";

class Subscribers : public NotifierFixture {
 protected:
  TopoAgent::Subscription_I_var subscribePeer(const WirePeer& peer) {
    const CosNotifyComm::StructuredPushConsumer_var consumer = consumerAt(peer.reference());
    return subscribeAt(consumer);
  }

  std::uint64_t dropped() { return notifier_->status().subscribersDropped; }

  // Expects that a consumer with this hook is dropped after its first event, with this reason in
  // the log, and that another consumer stays.
  void expectDrop(Consumer::Hook hook, const std::string& why) {
    testing::internal::CaptureStderr();
    start();
    ServedConsumer bad = makeConsumer(std::move(hook));
    ServedConsumer good = makeConsumer();
    const auto ended = subscribe(bad);
    const auto kept = subscribe(good);
    publish(2);
    EXPECT_TRUE(eventually([&] { return !isSubscribed(ended); }));
    EXPECT_EQ((Deliveries{event(1), event(2)}), good.received().waitFor(2));
    EXPECT_EQ((Deliveries{event(1)}), bad.received().all());
    EXPECT_TRUE(isSubscribed(kept));
    EXPECT_EQ(1U, dropped());
    EXPECT_EQ(1U, receivers().size());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, log.find("is dropped: " + why)) << log;
  }
};

TEST_F(Subscribers, ReceiveNotificationsInOrder) {
  start();
  WirePeer peer(kPush, {});
  subscribePeer(peer);
  publish(5);
  EXPECT_EQ(Acts(5, Act::kAnswer), peer.requests().waitFor(5));
  EXPECT_TRUE(becomes({subscriber(Queued{0}, Sent{5}, Lost{0})}));
}

TEST_F(Subscribers, ThatBlockDelayNoOtherSubscriber) {
  options_.queueLimit = 2;
  start();
  Gate gate;
  ServedConsumer slow = makeConsumer([&](const StructuredEvent&) { gate.wait(); });
  ServedConsumer good = makeConsumer();
  subscribe(slow);
  subscribe(good);
  publish(1);
  slow.received().waitFor(1);
  for (std::uint64_t id = 2; id <= 6; ++id) {
    publish(1);
    EXPECT_EQ(event(id), good.received().waitFor(id).back());
  }
  EXPECT_TRUE(
      becomes({subscriber(Queued{3}, Sent{0}, Lost{3}), subscriber(Queued{0}, Sent{6}, Lost{0})}));
  gate.open();
  EXPECT_EQ((Deliveries{event(1), gap(2, 4, 3), event(5), event(6)}), slow.received().waitFor(4));
  notifier_.reset();
}

TEST_F(Subscribers, AreDroppedAfterTheCallTimeout) {
  testing::internal::CaptureStderr();
  options_.pushTimeout = std::chrono::milliseconds(50);
  start();
  WirePeer peer(kPush, {Act::kIgnore});
  ServedConsumer good = makeConsumer();
  const auto ended = subscribePeer(peer);
  subscribe(good);
  publish(3);
  EXPECT_TRUE(eventually([&] { return !isSubscribed(ended); }));
  EXPECT_EQ((Acts{Act::kIgnore}), peer.requests().all());
  EXPECT_EQ((Deliveries{event(1), event(2), event(3)}), good.received().waitFor(3));
  EXPECT_EQ(1U, dropped());
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos,
            log.find("subscriber 127.0.0.1:" + std::to_string(peer.port()) + " is dropped: "));
  EXPECT_NE(std::string::npos, log.find(", 3 notifications not sent")) << log;
}

TEST_F(Subscribers, AreDroppedWhenUnreachable) {
  start();
  const CosNotifyComm::StructuredPushConsumer_var unreachable =
      consumerAt("corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(closedPort()) + "/object");
  const TopoAgent::Subscription_I_var ended = subscribeAt(unreachable);
  EXPECT_TRUE(eventually([&] { return !isSubscribed(ended); }));
  EXPECT_EQ(1U, dropped());
}

TEST_F(Subscribers, ReceiveTheEventAgainAfterAClosedConnection) {
  start();
  WirePeer peer(kPush, {Act::kAnswer, Act::kClose});
  const auto kept = subscribePeer(peer);
  publish(3);
  EXPECT_EQ((Acts{Act::kAnswer, Act::kClose, Act::kAnswer, Act::kAnswer}),
            peer.requests().waitFor(4));
  EXPECT_TRUE(becomes({subscriber(Queued{0}, Sent{3}, Lost{0})}));
  EXPECT_TRUE(isSubscribed(kept));
}

TEST_F(Subscribers, AreDroppedWhenTheRepeatedCallIsClosed) {
  start();
  WirePeer peer(kPush, {Act::kClose, Act::kClose});
  const auto ended = subscribePeer(peer);
  publish(1);
  EXPECT_TRUE(eventually([&] { return !isSubscribed(ended); }));
  EXPECT_EQ((Acts{Act::kClose, Act::kClose}), peer.requests().all());
}

TEST_F(Subscribers, AreDroppedAfterDisconnected) {
  expectDrop([](const StructuredEvent&) { throw CosEventComm::Disconnected(); }, "Disconnected");
}

TEST_F(Subscribers, AreDroppedAfterObjectNotExist) {
  expectDrop([](const StructuredEvent&) { throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO); },
             "OBJECT_NOT_EXIST");
}

TEST_F(Subscribers, AreDroppedAfterAnyException) {
  expectDrop([](const StructuredEvent&) { throw CORBA::NO_MEMORY(0, CORBA::COMPLETED_MAYBE); },
             "NO_MEMORY");
}

TEST_F(Subscribers, ReceiveNothingAfterUnsubscribe) {
  start();
  Gate gate;
  ServedConsumer consumer = makeConsumer([&](const StructuredEvent&) { gate.wait(); });
  const auto subscription = subscribe(consumer);
  publish(3);
  consumer.received().waitFor(1);
  subscription->unsubscribe();
  EXPECT_FALSE(isSubscribed(subscription));
  EXPECT_EQ(ReceiverStates{}, receivers());
  gate.open();
  publish(1);
  notifier_.reset();
  EXPECT_EQ((Deliveries{event(1)}), consumer.received().all());
}

TEST_F(Subscribers, MayUnsubscribeWithinAPush) {
  start();
  Gate subscribed;
  Gate unsubscribed;
  TopoAgent::Subscription_I_var subscription;
  ServedConsumer consumer = makeConsumer([&](const StructuredEvent&) {
    subscribed.wait();
    subscription->unsubscribe();
    unsubscribed.open();
  });
  subscription = subscribe(consumer);
  publish(2);
  subscribed.open();
  EXPECT_TRUE(unsubscribed.wait());
  EXPECT_FALSE(isSubscribed(subscription));
  EXPECT_EQ(0U, dropped());
  notifier_.reset();
  EXPECT_EQ((Deliveries{event(1)}), consumer.received().all());
}

TEST_F(Subscribers, MaySubscribeWithinAPush) {
  start();
  ServedConsumer other = makeConsumer();
  Gate done;
  ServedConsumer consumer = makeConsumer([&](const StructuredEvent&) {
    subscribe(other, "0");
    done.open();
  });
  subscribe(consumer);
  publish(1);
  EXPECT_TRUE(done.wait());
  EXPECT_EQ((Deliveries{gap(1, 1, 1)}), other.received().waitFor(1));
  notifier_.reset();
}

TEST_F(Subscribers, UnsubscribeOnlyOnce) {
  start();
  const ServedConsumer consumer = makeConsumer();
  const auto subscription = subscribe(consumer);
  subscription->unsubscribe();
  EXPECT_THROW(subscription->unsubscribe(), CORBA::OBJECT_NOT_EXIST);
}

TEST_F(Subscribers, HaveNoObjectAfterUnsubscribe) {
  start();
  const ServedConsumer consumer = makeConsumer();
  const auto subscription = subscribe(consumer);
  EXPECT_FALSE(subscription->_is_a("IDL:Other:1.0"));
  subscription->unsubscribe();
  EXPECT_THROW(subscription->_is_a("IDL:Other:1.0"), CORBA::OBJECT_NOT_EXIST);
}

TEST_F(Subscribers, AreLoggedAtSubscription) {
  agent::setLogLevel(agent::kLogEvents);
  testing::internal::CaptureStderr();
  start();
  const ServedConsumer consumer = makeConsumer();
  subscribe(consumer);
  agent::setLogLevel(agent::kLogErrors);
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find(
                "subscriber " + orb::format(server_->endpoint()) + " subscribes"));
}

TEST_F(Subscribers, AreCheckedWhileIdle) {
  options_.idleCheck = std::chrono::milliseconds(5);
  options_.pushTimeout = std::chrono::milliseconds(50);
  start();
  WirePeer peer("_non_existent", {Act::kAnswer, Act::kAnswer, Act::kIgnore});
  const auto ended = subscribePeer(peer);
  EXPECT_EQ((Acts{Act::kAnswer, Act::kAnswer, Act::kIgnore}), peer.requests().waitFor(3));
  EXPECT_TRUE(eventually([&] { return !isSubscribed(ended); }));
}

TEST_F(Subscribers, StayAfterOneClosedConnectionDuringACheck) {
  options_.idleCheck = std::chrono::milliseconds(5);
  start();
  WirePeer peer("_non_existent", {Act::kAnswer, Act::kClose});
  const auto kept = subscribePeer(peer);
  Acts asked = peer.requests().waitFor(4);
  asked.resize(4);
  EXPECT_EQ((Acts{Act::kAnswer, Act::kClose, Act::kAnswer, Act::kAnswer}), asked);
  EXPECT_TRUE(isSubscribed(kept));
}

TEST_F(Subscribers, AreDroppedAfterTwoClosedConnectionsDuringACheck) {
  options_.idleCheck = std::chrono::milliseconds(5);
  start();
  WirePeer peer("_non_existent", {Act::kAnswer, Act::kClose, Act::kClose});
  const auto ended = subscribePeer(peer);
  EXPECT_TRUE(eventually([&] { return !isSubscribed(ended); }));
  EXPECT_EQ((Acts{Act::kAnswer, Act::kClose, Act::kClose}), peer.requests().all());
}

TEST_F(Subscribers, AreDroppedWhenACheckFindsNoConsumer) {
  options_.idleCheck = std::chrono::milliseconds(5);
  start();
  testing::internal::CaptureStderr();
  ServedConsumer consumer = makeConsumer();
  const auto subscription = subscribe(consumer);
  publish(1);
  EXPECT_EQ((Deliveries{event(1)}), consumer.received().waitFor(1));
  const PortableServer::ObjectId_var id = server_->rootPoa()->reference_to_id(consumer.reference);
  server_->rootPoa()->deactivate_object(id.in());
  EXPECT_TRUE(eventually([&] { return !isSubscribed(subscription); }));
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(
                                   "is dropped: the consumer does not exist any more"));
}

TEST_F(Subscribers, AreLimitedPerPeer) {
  options_.maxSubscribersPerPeer = 2;
  start();
  const ServedConsumer consumer = makeConsumer();
  subscribe(consumer, "", "10.0.0.1");
  const auto second = subscribe(consumer, "", "10.0.0.1");
  EXPECT_EQ(capacityExceeded("there are 2 subscribers of address 10.0.0.1 already"),
            refusal(consumer.reference, "", "10.0.0.1"));
  EXPECT_EQ(kAccepted, refusal(consumer.reference, "", "10.0.0.2"));
  second->unsubscribe();
  EXPECT_TRUE(eventually([&] { return refusal(consumer.reference, "", "10.0.0.1") == kAccepted; }));
}

TEST_F(Subscribers, AreLimitedUntilTheirConsumersAnswer) {
  options_.maxUnanswered = 3;
  options_.maxUnansweredPerPeer = 2;
  start();
  auto silent = std::make_unique<WirePeer>("_non_existent", Acts(99, Act::kIgnore));
  const CosNotifyComm::StructuredPushConsumer_var consumer = consumerAt(silent->reference());
  EXPECT_EQ(kAccepted, refusal(consumer, "", "10.0.0.1"));
  EXPECT_EQ(kAccepted, refusal(consumer, "", "10.0.0.1"));
  const std::string unanswered = "whose consumers have not answered yet";
  EXPECT_EQ(capacityExceeded("there are 2 subscribers of address 10.0.0.1 " + unanswered),
            refusal(consumer, "", "10.0.0.1"));
  EXPECT_EQ(kAccepted, refusal(consumer, "", "10.0.0.2"));
  EXPECT_EQ(capacityExceeded("there are 3 subscribers " + unanswered),
            refusal(consumer, "", "10.0.0.3"));
  silent.reset();
  EXPECT_TRUE(eventually([&] { return refusal(consumer, "", "10.0.0.3") == kAccepted; }));
}

TEST_F(Subscribers, DoNotCountAsUnansweredAfterAnAnswer) {
  options_.maxUnanswered = 1;
  start();
  for (std::uint64_t i = 1; i <= 3; ++i) {
    ServedConsumer consumer = makeConsumer();
    subscribe(consumer);
    publish(1);
    EXPECT_EQ((Deliveries{event(i)}), consumer.received().waitFor(1));
  }
  EXPECT_EQ(3U, receivers().size());
}

TEST_F(Subscribers, WithDeadReferencesDoNotBlockOtherSubscribers) {
  options_.maxSubscribers = 5;
  start();
  const CosNotifyComm::StructuredPushConsumer_var unreachable =
      consumerAt("corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(closedPort()) + "/object");
  testing::internal::CaptureStderr();
  for (int i = 0; i < 50; ++i) {
    refusal(unreachable, "", "10.0.0.1");
  }
  const ServedConsumer consumer = makeConsumer();
  EXPECT_TRUE(eventually([&] { return refusal(consumer.reference, "", "10.0.0.2") == kAccepted; }));
  EXPECT_TRUE(becomes({subscriber(Queued{0}, Sent{0}, Lost{0})}));
  testing::internal::GetCapturedStderr();
}

TEST_F(Subscribers, HaveUnpredictableObjectKeys) {
  start();
  const ServedConsumer consumer = makeConsumer();
  const orb::ObjectKey one = orb::objectKeyOf(subscribe(consumer));
  const orb::ObjectKey other = orb::objectKeyOf(subscribe(consumer));
  ASSERT_EQ(one.size(), other.size());
  std::size_t different = 0;
  for (std::size_t i = 0; i < one.size(); ++i) {
    different += one[i] == other[i] ? 0 : 1;
  }
  EXPECT_LE(8U, different);  // of 16 random octets
}

TEST_F(Subscribers, WithAReferenceOverTheLimitAreRefused) {
  start();
  const std::string place = "corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(closedPort()) + "/";
  const CosNotifyComm::StructuredPushConsumer_var shorter =
      consumerAt(place + std::string(65000, 'k'));
  const CosNotifyComm::StructuredPushConsumer_var longer =
      consumerAt(place + std::string(65536, 'k'));
  EXPECT_EQ(kAccepted, refusal(shorter, ""));
  EXPECT_EQ(invalidInput("the consumer's reference is longer than 65536 bytes"),
            refusal(longer, ""));
}

TEST_F(Subscribers, AreNamedByTheBeginningOfALongHostName) {
  start();
  testing::internal::CaptureStderr();
  const CosNotifyComm::StructuredPushConsumer_var consumer =
      consumerAt("corbaloc:iiop:1.2@" + std::string(60000, 'h') + ":1/object");
  const TopoAgent::Subscription_I_var ended = subscribeAt(consumer);
  EXPECT_TRUE(eventually([&] { return !isSubscribed(ended); }));
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(
                                   "subscriber " + std::string(100, 'h') + "... is dropped"));
}

TEST_F(Subscribers, EndWithTheNotifier) {
  start();
  const ServedConsumer consumer = makeConsumer();
  const auto subscription = subscribe(consumer);
  notifier_.reset();
  EXPECT_FALSE(isSubscribed(subscription));
}

TEST_F(Subscribers, ThatDoNotAnswerDelayTheDestructorByOneTimeout) {
  options_.pushTimeout = std::chrono::milliseconds(1000);
  start();
  std::vector<std::unique_ptr<WirePeer>> peers;
  for (int i = 0; i < 5; ++i) {
    peers.push_back(std::make_unique<WirePeer>(kPush, Acts(9, Act::kIgnore)));
    subscribePeer(*peers.back());
  }
  publish(1);
  for (const auto& peer : peers) {
    peer->requests().waitFor(1);
  }
  const auto begin = std::chrono::steady_clock::now();
  notifier_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2500));
}

TEST_F(Subscribers, AreNotDelayedByEndedSubscribers) {
  start();
  for (int i = 0; i < 50; ++i) {
    const ServedConsumer consumer = makeConsumer();
    const auto subscription = subscribe(consumer);
    publish(1);
    subscription->unsubscribe();
  }
  EXPECT_EQ(ReceiverStates{}, receivers());
}

}  // namespace
