// Notifications from the notifier to consumers, refused subscriptions, and the session.

#include "agent/notifications/Notifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "agent/notifications/SessionServant.h"
#include "tests/unit/agent/notifications/Fixture.h"
#include "tests/unit/agent/support/CapturedLog.h"

namespace {

using namespace notification_tests;

class Notifiers : public NotifierFixture {
 protected:
  // Subscribes a consumer with this last id, publishes one notification, and returns the first
  // events of the consumer.
  Deliveries afterSubscribingWith(const std::string& last, std::size_t count) {
    ServedConsumer consumer = makeConsumer();
    subscribe(consumer, last);
    publish(1);
    return consumer.received().waitFor(count);
  }
};

// The parts of an event that differ between the kinds of notifications.
struct EventKind {
  std::string type;
  Value object;
  Value edgePointRelated;
  Value body;
};

bool operator==(const EventKind& left, const EventKind& right) {
  return left.type == right.type && left.object == right.object &&
         left.edgePointRelated == right.edgePointRelated && left.body == right.body;
}

void PrintTo(const EventKind& kind, std::ostream* out) {
  *out << kind.type;
  for (const Value& value : {kind.object, kind.edgePointRelated, kind.body}) {
    *out << ", ";
    PrintTo(value, out);
  }
}

TEST_F(Notifiers, SendEachKindOfNotification) {
  start();
  Record<EventKind> kinds;
  ServedConsumer consumer = makeConsumer([&](const CosNotification::StructuredEvent& event) {
    const EventParts parts = partsOf(event);
    kinds.add({parts.type, parts.at("objectName"), parts.at("edgePointRelated"), parts.body});
  });
  subscribe(consumer);
  CORBA::Any body;
  body <<= "text";
  const auto name = objectName("TopoSubnetwork", "core");
  notifier_->objectCreated(name, body, true);
  notifier_->objectDeleted(name, false);
  notifier_->attributesChanged(name, attribute("a", "b"), true, nullptr);
  notifier_->attributesChanged(name, attribute("a", "b"), false, &body);
  const Value object{"name", "{EMS=E, TopoSubnetwork=core}"};
  const Value yes{"boolean", "true"};
  const Value no{"boolean", "false"};
  const Value text{"string", "text"};
  EXPECT_EQ((std::vector<EventKind>{{"NT_OBJECT_CREATION", object, yes, text},
                                    {"NT_OBJECT_DELETION", object, no, kNoValue},
                                    {"NT_ATTRIBUTE_VALUE_CHANGE", object, yes, kNoValue},
                                    {"NT_ATTRIBUTE_VALUE_CHANGE", object, no, text}}),
            kinds.waitFor(4));
  EXPECT_EQ((Deliveries{event(1), event(2), event(3), event(4)}), consumer.received().all());
  notifier_.reset();
}

TEST(NotifierOptions, HaveTheDocumentedDefaults) {
  EXPECT_EQ(std::chrono::seconds(3), agent::NotifierOptions().pushTimeout);
  EXPECT_EQ(10000U, agent::NotifierOptions().queueLimit);
  EXPECT_EQ(64U << 20, agent::NotifierOptions().queueBytes);
}

TEST_F(Notifiers, StampNotificationsWithTheTimeOfTheClock) {
  start();
  publish(1);
  Record<Value> times;
  ServedConsumer consumer = makeConsumer([&](const CosNotification::StructuredEvent& event) {
    times.add(partsOf(event).at("emsTime"));
  });
  subscribe(consumer, "0");
  publish(1);
  EXPECT_EQ(std::vector<Value>(2, {"string", "20240229235958.7Z"}), times.waitFor(2));
  notifier_.reset();
}

TEST_F(Notifiers, CountNotificationsAndListReceivers) {
  start();
  EXPECT_EQ(ReceiverStates{}, receivers());
  publish(2);
  const ServedConsumer consumer = makeConsumer();
  const auto subscription = subscribe(consumer);
  publish(3);
  EXPECT_TRUE(notifier_->flush(kPatience));
  const agent::NotifierStatus status = notifier_->status();
  EXPECT_EQ(5U, status.notifications);
  EXPECT_EQ(0U, status.subscribersDropped);
  EXPECT_EQ((ReceiverStates{subscriber(Queued{0}, Sent{3}, Lost{0})}), receivers());
  EXPECT_EQ(orb::format(server_->endpoint()), std::string(status.receivers[0].receiver.in()));
  subscription->unsubscribe();
  EXPECT_EQ(ReceiverStates{}, receivers());
}

TEST_F(Notifiers, DeliverOneOrderToAllSubscribersOfConcurrentNotifications) {
  start();
  ServedConsumer one = makeConsumer();
  ServedConsumer other = makeConsumer();
  subscribe(one);
  subscribe(other);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] { publish(500); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  Deliveries wanted;
  for (std::uint64_t id = 1; id <= 2000; ++id) {
    wanted.push_back(event(id));
  }
  EXPECT_EQ(wanted, one.received().waitFor(wanted.size()));
  EXPECT_EQ(wanted, other.received().waitFor(wanted.size()));
}

TEST_F(Notifiers, MakeIdsOfChangeNumberAndPosition) {
  start();
  ServedConsumer consumer = makeConsumer();
  subscribe(consumer);
  change_ = 5;
  publish(2);
  change_ = 6;
  publish(1);
  change_ = 5;
  publish(1);
  EXPECT_EQ(
      (Deliveries{event(idOf(5, 1)), event(idOf(5, 2)), event(idOf(6, 1)), event(idOf(6, 2))}),
      consumer.received().waitFor(4));
}

TEST_F(Notifiers, NeverRepeatAnIdAfterARestart) {
  start();
  publish(1);
  restart();
  ServedConsumer consumer = makeConsumer();
  subscribe(consumer);
  publish(2);
  EXPECT_EQ((Deliveries{event(idOf(1, 1)), event(idOf(1, 2))}), consumer.received().waitFor(2));
}

TEST_F(Notifiers, ReportNoGapToANewSubscriber) {
  start();
  publish(3);
  EXPECT_EQ((Deliveries{event(4)}), afterSubscribingWith("", 1));
}

TEST_F(Notifiers, ReportNoGapSinceTheLastId) {
  start();
  EXPECT_EQ((Deliveries{event(1)}), afterSubscribingWith("0", 1));
  publish(2);
  EXPECT_EQ((Deliveries{event(4)}), afterSubscribingWith("3", 1));
}

TEST_F(Notifiers, ReportTheGapSinceTheLastNotificationId) {
  start();
  publish(5);
  EXPECT_EQ((Deliveries{gap(3, 5, 3), event(6)}), afterSubscribingWith("2", 2));
  EXPECT_EQ((Deliveries{gap(1, 6, 6), event(7)}), afterSubscribingWith("0", 2));
}

TEST_F(Notifiers, ReportAnUnknownCountSinceAnIdOfAnEarlierRun) {
  start();
  publish(5);
  restart();
  EXPECT_EQ((Deliveries{gap(6, idOf(1, 0), 0), event(idOf(1, 1))}), afterSubscribingWith("5", 2));
  EXPECT_EQ((Deliveries{gap(idOf(1, 0), idOf(1, 1), 0), event(idOf(1, 2))}),
            afterSubscribingWith(std::to_string((1 << 20) - 1), 2));
  EXPECT_EQ((Deliveries{gap(idOf(1, 1), idOf(1, 2), 2), event(idOf(1, 3))}),
            afterSubscribingWith(std::to_string(idOf(1, 0)), 2));
}

// The gap report covers the notifications up to the subscription; the next event follows.
TEST_F(Notifiers, LoseNothingBetweenTheGapAndTheFirstNotification) {
  start();
  publish(1);
  std::thread publisher([this] { publish(2000); });
  for (int i = 0; i < 20; ++i) {
    ServedConsumer consumer = makeConsumer();
    const auto subscription = subscribe(consumer, "0");
    publish(1);
    const Deliveries received = consumer.received().waitFor(2);
    const std::uint64_t last = received.at(0).gap.last;
    EXPECT_EQ(gap(1, last, last), received.at(0));
    EXPECT_EQ(event(last + 1), received.at(1));
    subscription->unsubscribe();
  }
  publisher.join();
}

TEST_F(Notifiers, RefuseMalformedAndFutureIds) {
  start();
  publish(2);
  const ServedConsumer consumer = makeConsumer();
  const auto refused = [&](const std::string& last) { return refusal(consumer.reference, last); };
  const auto newer = [](const std::string& id) {
    return invalidInput("the last notification id \"" + id +
                        "\" is newer than any notification of this agent");
  };
  const auto noNumber = [](const std::string& id) {
    return invalidInput("the last notification id \"" + id + "\" is no number");
  };
  for (const char* text : {"3", "18446744073709551616"}) {
    EXPECT_EQ(newer(text), refused(text));
  }
  for (const char* text : {"-1", "+1", " 1", "1 ", "x", "0x1", "1.0", "18446744073709551616x"}) {
    EXPECT_EQ(noNumber(text), refused(text));
  }
  EXPECT_EQ(noNumber("1\\x0a"), refused("1\n"));
  EXPECT_EQ(ReceiverStates{}, receivers());
}

TEST_F(Notifiers, RefuseANilConsumer) {
  start();
  EXPECT_EQ(invalidInput("the consumer is nil"),
            refusal(CosNotifyComm::StructuredPushConsumer::_nil(), ""));
}

TEST_F(Notifiers, RefuseSubscribersBeyondTheLimit) {
  options_.maxSubscribers = 2;
  start();
  const ServedConsumer consumer = makeConsumer();
  const auto first = subscribe(consumer);
  subscribe(consumer);
  EXPECT_EQ(capacityExceeded("there are 2 subscribers already"), refusal(consumer.reference, ""));
  first->unsubscribe();
  EXPECT_TRUE(eventually([&] { return refusal(consumer.reference, "") == kAccepted; }));
}

TEST_F(Notifiers, CountASubscriberUntilItsLastCallHasEnded) {
  options_.maxSubscribers = 1;
  start();
  Gate gate;
  ServedConsumer consumer =
      makeConsumer([&](const CosNotification::StructuredEvent&) { gate.wait(); });
  const auto subscription = subscribe(consumer);
  publish(1);
  consumer.received().waitFor(1);
  subscription->unsubscribe();
  EXPECT_EQ(capacityExceeded("there are 1 subscribers already"), refusal(consumer.reference, ""));
  gate.open();
  EXPECT_TRUE(eventually([&] { return refusal(consumer.reference, "") == kAccepted; }));
  notifier_.reset();
}

TEST_F(Notifiers, EvictTheOldestNotificationsBeyondTheLimitOfBytes) {
  options_.queueBytes = std::size_t{64} << 10;
  start();
  Gate gate;
  ServedConsumer consumer =
      makeConsumer([&](const CosNotification::StructuredEvent&) { gate.wait(); });
  subscribe(consumer);
  publish(1);
  consumer.received().waitFor(1);
  testing::internal::CaptureStderr();
  for (const std::size_t length : {20000, 20000, 20000, 100000}) {
    const std::string text(length, 'x');
    notifier_->attributesChanged({}, attribute("label", text.c_str()), true, nullptr);
  }
  testing::internal::GetCapturedStderr();
  EXPECT_EQ((ReceiverStates{subscriber(Queued{2}, Sent{0}, Lost{3})}), receivers());
  gate.open();
  EXPECT_EQ((Deliveries{event(1), gap(2, 3, 2), event(4), gap(5, 5, 1)}),
            consumer.received().waitFor(4));
  notifier_.reset();
}

TEST_F(Notifiers, SendTwiceToAConsumerThatSubscribesTwice) {
  start();
  ServedConsumer consumer = makeConsumer();
  subscribe(consumer);
  subscribe(consumer);
  publish(1);
  EXPECT_EQ((Deliveries{event(1), event(1)}), consumer.received().waitFor(2));
}

TEST_F(Notifiers, ReportAGapForNotificationsWithoutAnIdOfTheirChange) {
  options_.ids.lastPosition = 4;
  start();
  testing::internal::CaptureStderr();
  ServedConsumer consumer = makeConsumer();
  subscribe(consumer);
  publish(3);
  EXPECT_TRUE(notifier_->flush(kPatience));
  publish(1);
  EXPECT_TRUE(notifier_->flush(kPatience));
  publish(1);
  change_ = 1;
  publish(1);
  EXPECT_EQ(
      (Deliveries{event(1), event(2), event(3), gap(4, 4, 1), gap(4, 4, 1), event(idOf(1, 1))}),
      consumer.received().waitFor(6));
  EXPECT_EQ((ReceiverStates{subscriber(Queued{0}, Sent{4}, Lost{2})}), receivers());
  EXPECT_EQ(4U, notifier_->status().notifications);
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string line = "a change has more than 3 notifications, the others are lost";
  EXPECT_NE(std::string::npos, log.find(line));
  EXPECT_EQ(log.find(line), log.rfind(line));
}

TEST_F(Notifiers, ReportAGapForANotificationWithoutMemory) {
  std::atomic<bool> failing{false};
  notifier_ = std::make_unique<agent::Notifier>(*server_, options_, changes(), [&] {
    if (failing.exchange(false)) {
      throw std::bad_alloc();
    }
    return someTime();
  });
  ServedConsumer consumer = makeConsumer();
  subscribe(consumer);
  publish(1);
  failing = true;
  EXPECT_THROW(publish(1), std::bad_alloc);
  publish(1);
  EXPECT_EQ((Deliveries{event(1), gap(2, 2, 1), event(3)}), consumer.received().waitFor(3));
  EXPECT_EQ(2U, notifier_->status().notifications);
  notifier_.reset();
}

TEST_F(Notifiers, ReportAnUnknownGapToAllReceivers) {
  start();
  ServedConsumer consumer = makeConsumer();
  ServedConsumer other = makeConsumer();
  subscribe(consumer);
  subscribe(other);
  publish(1);
  notifier_->reportGap();
  publish(1);
  const Deliveries wanted{event(1), gap(2, 2, 0), event(3)};
  EXPECT_EQ(wanted, consumer.received().waitFor(3));
  EXPECT_EQ(wanted, other.received().waitFor(3));
  EXPECT_EQ(2U, notifier_->status().notifications);
  EXPECT_EQ((Deliveries{gap(2, 3, 0), event(4)}), afterSubscribingWith("1", 2));
}

TEST_F(Notifiers, FlushWaitsForQueuedNotifications) {
  start();
  Gate gate;
  ServedConsumer consumer =
      makeConsumer([&](const CosNotification::StructuredEvent&) { gate.wait(); });
  subscribe(consumer);
  EXPECT_TRUE(notifier_->flush(std::chrono::milliseconds(0)));
  publish(2);
  EXPECT_FALSE(notifier_->flush(std::chrono::milliseconds(1)));
  gate.open();
  EXPECT_TRUE(notifier_->flush(kPatience));
  EXPECT_EQ((Deliveries{event(1), event(2)}), consumer.received().all());
}

TEST_F(Notifiers, FlushWaitsForEveryReceiver) {
  start();
  Gate gate;
  ServedConsumer slow = makeConsumer([&](const CosNotification::StructuredEvent&) { gate.wait(); });
  ServedConsumer good = makeConsumer();
  subscribe(slow);
  subscribe(good);
  publish(1);
  good.received().waitFor(1);
  EXPECT_TRUE(
      becomes({subscriber(Queued{1}, Sent{0}, Lost{0}), subscriber(Queued{0}, Sent{1}, Lost{0})}));
  EXPECT_FALSE(notifier_->flush(std::chrono::milliseconds(1)));
  gate.open();
  EXPECT_TRUE(notifier_->flush(kPatience));
  notifier_.reset();
}

class Sessions : public Notifiers {
 protected:
  Sessions() : place_(server_->wellKnownObject("TopoAgentSession")) {
    options_.maxSubscribers = 2;
    start();
    const PortableServer::ServantBase_var servant =
        new agent::SessionServant(*notifier_, TopoAgent::EA_DENIED);
    const CORBA::Object_var published = place_->publish(servant.in());
    session_ = TopoAgent::Session_I::_narrow(published);
  }

  ~Sessions() override { place_->retire(); }

  const std::unique_ptr<orb::WellKnownObject> place_;
  TopoAgent::Session_I_var session_;
};

TEST_F(Sessions, Subscribe) {
  ServedConsumer consumer = makeConsumer();
  publish(2);
  const TopoAgent::Subscription_I_var subscription =
      session_->subscribe(consumer.reference.in(), "1");
  publish(1);
  EXPECT_EQ((Deliveries{gap(2, 2, 1), event(3)}), consumer.received().waitFor(2));
  EXPECT_TRUE(isSubscribed(subscription));
  EXPECT_THROW(session_->subscribe(consumer.reference.in(), "x"),
               globaldefs::ProcessingFailureException);
}

TEST_F(Sessions, ReturnTheAccessToEvents) {
  EXPECT_EQ(TopoAgent::EA_DENIED, session_->getEventAccess());
}

TEST_F(Sessions, RaiseInvalidInputWithTheReasonOfTheRefusal) {
  try {
    session_->subscribe(CosNotifyComm::StructuredPushConsumer::_nil(), "");
    ADD_FAILURE() << "subscribed";
  } catch (const globaldefs::ProcessingFailureException& failure) {
    EXPECT_EQ(globaldefs::EXCPT_INVALID_INPUT, failure.exceptionType);
    EXPECT_STREQ("the consumer is nil", failure.errorReason.in());
  }
}

TEST_F(Sessions, RaiseCapacityExceededWithTheReasonOfTheRefusal) {
  const ServedConsumer consumer = makeConsumer();
  const TopoAgent::Subscription_I_var first = session_->subscribe(consumer.reference.in(), "");
  const TopoAgent::Subscription_I_var second = session_->subscribe(consumer.reference.in(), "");
  try {
    session_->subscribe(consumer.reference.in(), "");
    ADD_FAILURE() << "subscribed";
  } catch (const globaldefs::ProcessingFailureException& failure) {
    EXPECT_EQ(globaldefs::EXCPT_CAPACITY_EXCEEDED, failure.exceptionType);
    EXPECT_STREQ("there are 2 subscribers already", failure.errorReason.in());
  }
}

TEST_F(Sessions, LogRefusedSubscriptionsAtALimitedRate) {
  support::CapturedLog captured(agent::kLogTraces);
  for (int i = 0; i < 500; ++i) {
    EXPECT_THROW(session_->subscribe(CosNotifyComm::StructuredPushConsumer::_nil(), ""),
                 globaldefs::ProcessingFailureException);
  }
  const std::string log = captured.text();
  EXPECT_NE(std::string::npos,
            log.find("a subscription of this process is refused: the consumer is nil"));
  EXPECT_GE(100, std::count(log.begin(), log.end(), '\n'));
}

}  // namespace
