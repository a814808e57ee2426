// The event channel: connection, failures, reconnection and naming service.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "agent/notifications/ChannelSink.h"
#include "tests/unit/agent/notifications/FakeChannel.h"
#include "tests/unit/agent/notifications/FakeNames.h"
#include "tests/unit/agent/notifications/Fixture.h"
#include "tests/unit/agent/notifications/Waits.h"
#include "tests/unit/agent/notifications/WirePeer.h"

namespace {

using namespace notification_tests;

using Act = WirePeer::Act;
using Acts = WirePeer::Acts;

constexpr std::chrono::hours kNever{1};

class Channels : public NotifierFixture {
 protected:
  Channels() : place_(server_->wellKnownObject("Channel")), channel_(server_->rootPoa()) {
    options_.channel = referenceTo("Channel");
    options_.firstBackOff = std::chrono::milliseconds(1);
    options_.longestBackOff = std::chrono::milliseconds(5);
    options_.queueLimit = 3;
  }

  ~Channels() override { notifier_.reset(); }

  std::string referenceTo(const std::string& key) {
    return "corbaloc:iiop:1.2@" + orb::format(server_->endpoint()) + "/" + key;
  }

  void open() { const CORBA::Object_var reference = place_->publish(channel_.servant()); }
  void close() {
    channel_.forgetProxies();
    place_->retire();
  }

  ProxyCalls pushes(std::size_t count) { return channel_.record.waitFor(count); }

  // Starts a notifier with an unusable channel. Returns the logged reason. Checks that the channel
  // does not delay the destructor.
  std::string reasonOfFailure(const std::string& reference) {
    options_.channel = reference;
    options_.firstBackOff = options_.longestBackOff = kNever;
    testing::internal::CaptureStderr();
    start();
    publish(2);
    EXPECT_TRUE(eventually([this] { return !notifier_->flush(kPatience); }));
    EXPECT_EQ((ReceiverStates{downChannel(Queued{2}, Sent{0}, Lost{0})}), receivers());
    const auto begin = std::chrono::steady_clock::now();
    notifier_.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    const std::string log = testing::internal::GetCapturedStderr();
    const std::string before = " does not accept notifications, which stay queued: ";
    const std::size_t found = log.find(before);
    return found == std::string::npos ? log : log.substr(found + before.size());
  }

  std::unique_ptr<orb::WellKnownObject> place_;
  FakeChannel channel_;
};

TEST_F(Channels, ReceiveEveryEventInAnAny) {
  open();
  start();
  publish(3);
  EXPECT_EQ(
      (ProxyCalls{connected(1), pushed(1, event(1)), pushed(1, event(2)), pushed(1, event(3))}),
      pushes(4));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{3}, Lost{0})}));
  EXPECT_EQ(orb::format(server_->endpoint()),
            std::string(notifier_->status().receivers[0].receiver.in()));
  notifier_.reset();
  EXPECT_EQ(disconnected(1), pushes(5).back());
}

TEST_F(Channels, AreConnectedBeforeTheFirstEvent) {
  open();
  start();
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{0}, Lost{0})}));
}

TEST_F(Channels, MayStartAfterTheAgent) {
  start();
  publish(5);
  EXPECT_TRUE(becomes({downChannel(Queued{3}, Sent{0}, Lost{2})}));
  open();
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, gap(1, 2, 2)), pushed(1, event(3)),
                        pushed(1, event(4)), pushed(1, event(5))}),
            pushes(5));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{3}, Lost{2})}));
}

TEST_F(Channels, AreRetriedWithTheConfiguredBackOff) {
  using std::chrono::milliseconds;
  Waits waits{milliseconds(100)};
  options_.wait = waits.function();
  options_.firstBackOff = milliseconds(30);
  options_.longestBackOff = milliseconds(70);
  start();
  EXPECT_TRUE(eventually([&] { return waits.begun().size() >= 4; }));
  Waits::Lengths begun = waits.begun();
  begun.resize(4);
  EXPECT_EQ(
      (Waits::Lengths{milliseconds(30), milliseconds(60), milliseconds(70), milliseconds(70)}),
      begun);
  notifier_.reset();
}

TEST_F(Channels, ReceiveQueuedEventsAndGapsAfterAReconnect) {
  open();
  start();
  publish(1);
  pushes(2);
  close();
  publish(1);
  EXPECT_TRUE(becomes({downChannel(Queued{1}, Sent{1}, Lost{0})}));
  publish(6);
  EXPECT_TRUE(becomes({downChannel(Queued{4}, Sent{1}, Lost{3})}));
  open();
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1)), connected(2), pushed(2, event(2)),
                        pushed(2, gap(3, 5, 3)), pushed(2, event(6)), pushed(2, event(7)),
                        pushed(2, event(8))}),
            pushes(8));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{5}, Lost{3})}));
}

TEST_F(Channels, ReplaceADeletedProxy) {
  open();
  start();
  publish(1);
  pushes(2);
  channel_.forgetProxies();
  publish(1);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1)), connected(2), pushed(2, event(2))}),
            pushes(4));
}

TEST_F(Channels, ReplaceADeletedProxyWhileIdle) {
  options_.idleCheck = std::chrono::milliseconds(1);
  open();
  start();
  pushes(1);
  channel_.forgetProxies();
  EXPECT_EQ((ProxyCalls{connected(1), connected(2)}), pushes(2));
}

TEST_F(Channels, ReplaceADisconnectedProxy) {
  open();
  std::atomic<bool> first{true};
  channel_.onPush([&](const Delivered&) {
    if (first.exchange(false)) {
      throw CosEventComm::Disconnected();
    }
  });
  start();
  publish(2);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1)), connected(2), pushed(2, event(1)),
                        pushed(2, event(2))}),
            pushes(5));
  notifier_.reset();
}

TEST_F(Channels, ReplaceAProxyWhoseKeyBelongsToAnotherObject) {
  open();
  start();
  publish(1);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
  channel_.reuseKeysOfProxies();
  publish(2);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1)), connected(2), pushed(2, event(2)),
                        pushed(2, event(3))}),
            pushes(5));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{3}, Lost{0})}));
}

TEST_F(Channels, AreNotBlockedByAnEventThatEveryProxyAnswersWithBadOperation) {
  open();
  channel_.onPush([](const Delivered& pushed) {
    if (pushed == event(1)) {
      throw CORBA::BAD_OPERATION(0, CORBA::COMPLETED_NO);
    }
  });
  start();
  publish(2);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1)), connected(2), pushed(2, event(1)),
                        connected(3), pushed(3, event(1)), connected(4), pushed(4, event(1)),
                        connected(5), pushed(5, event(1)), connected(6), pushed(6, gap(1, 1, 1)),
                        pushed(6, event(2))}),
            pushes(13));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{1})}));
}

TEST_F(Channels, ReceiveAFailedEventAgain) {
  open();
  std::atomic<int> left{2};
  channel_.onPush([&](const Delivered&) {
    if (left-- > 0) {
      throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_MAYBE);
    }
  });
  start();
  publish(2);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1)), pushed(1, event(1)), pushed(1, event(1)),
                        pushed(1, event(2))}),
            pushes(5));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{2}, Lost{0})}));
}

TEST_F(Channels, AreNotBlockedByAnEventThatAlwaysFails) {
  open();
  channel_.onPush([](const Delivered& pushed) {
    if (pushed == event(1)) {
      throw CORBA::MARSHAL(0, CORBA::COMPLETED_NO);
    }
  });
  start();
  publish(2);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1)), pushed(1, event(1)), pushed(1, event(1)),
                        pushed(1, event(1)), pushed(1, event(1)), pushed(1, gap(1, 1, 1)),
                        pushed(1, event(2))}),
            pushes(8));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{1})}));
}

// The channel closes the connection at every push of the same event.
TEST_F(Channels, AreNotBlockedByAnEventThatAlwaysClosesTheConnection) {
  WirePeer peer("push", Acts(10, Act::kClose));
  channel_.useProxy(peer.reference(), orb());
  open();
  start();
  publish(2);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{1})}));
  Acts requests(10, Act::kClose);
  requests.insert(requests.end(), {Act::kAnswer, Act::kAnswer});
  EXPECT_EQ(requests, peer.requests().all());
}

TEST_F(Channels, ThatBlockDelayNoSubscriber) {
  options_.queueLimit = 100;
  Gate gate;
  open();
  channel_.onPush([&](const Delivered&) { gate.wait(); });
  start();
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{0}, Lost{0})}));
  ServedConsumer consumer = makeConsumer();
  subscribe(consumer);
  publish(3);
  EXPECT_EQ((Deliveries{event(1), event(2), event(3)}), consumer.received().waitFor(3));
  EXPECT_TRUE(
      becomes({channel(Queued{3}, Sent{0}, Lost{0}), subscriber(Queued{0}, Sent{3}, Lost{0})}));
  gate.open();
  EXPECT_TRUE(
      becomes({channel(Queued{0}, Sent{3}, Lost{0}), subscriber(Queued{0}, Sent{3}, Lost{0})}));
}

TEST_F(Channels, ThatAreUnavailableDoNotShortenAFlushOfSubscribers) {
  Gate gate;
  const auto flushing = std::this_thread::get_id();
  Waits waits(std::chrono::milliseconds(100), [&] {
    if (std::this_thread::get_id() == flushing) {
      gate.open();
    }
  });
  options_.wait = waits.function();
  start();
  ServedConsumer consumer =
      makeConsumer([&](const CosNotification::StructuredEvent&) { gate.wait(); });
  subscribe(consumer);
  EXPECT_TRUE(
      becomes({downChannel(Queued{0}, Sent{0}, Lost{0}), subscriber(Queued{0}, Sent{0}, Lost{0})}));
  publish(3);
  EXPECT_FALSE(notifier_->flush(kPatience));
  EXPECT_EQ((ReceiverStates{downChannel(Queued{3}, Sent{0}, Lost{0}),
                            subscriber(Queued{0}, Sent{3}, Lost{0})}),
            receivers());
  gate.open();
  notifier_.reset();
}

TEST_F(Channels, ReceiveAnEventAgainAfterATimeout) {
  options_.pushTimeout = std::chrono::milliseconds(100);
  WirePeer peer("push", Acts(7, Act::kIgnore));
  channel_.useProxy(peer.reference(), orb());
  open();
  start();
  publish(1);
  Acts requests(7, Act::kIgnore);
  requests.push_back(Act::kAnswer);
  EXPECT_EQ(requests, peer.requests().waitFor(8));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
}

TEST_F(Channels, ReceiveAnEventAgainAfterAClosedConnection) {
  options_.firstBackOff = kNever;  // a retry would exceed the timeout of the test
  WirePeer peer("push", {Act::kAnswer, Act::kClose});
  channel_.useProxy(peer.reference(), orb());
  open();
  start();
  publish(2);
  EXPECT_EQ((Acts{Act::kAnswer, Act::kClose, Act::kAnswer}), peer.requests().waitFor(3));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{2}, Lost{0})}));
}

TEST_F(Channels, ThatAreSilentDoNotDelayTheDestructor) {
  options_.pushTimeout = std::chrono::milliseconds(1000);
  WirePeer peer("_is_a", Acts(9, Act::kIgnore));
  options_.channel = peer.reference();
  start();
  publish(1);
  EXPECT_EQ(Act::kIgnore, peer.requests().waitFor(1).at(0));
  const auto begin = std::chrono::steady_clock::now();
  notifier_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2000));
}

TEST_F(Channels, WithASilentNamingServiceDoNotDelayTheDestructor) {
  options_.pushTimeout = std::chrono::milliseconds(1000);
  WirePeer peer("resolve_str", Acts(9, Act::kIgnore));
  options_.channel = "corbaname:iiop:1.2@127.0.0.1:" + std::to_string(peer.port()) + "#channel";
  start();
  EXPECT_EQ(Act::kIgnore, peer.requests().waitFor(1).at(0));
  const auto begin = std::chrono::steady_clock::now();
  notifier_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2000));
}

TEST_F(Channels, AreRetriedWhenForSuppliersTimesOut) {
  options_.pushTimeout = std::chrono::milliseconds(100);
  WirePeer peer("for_suppliers", Acts(9, Act::kIgnore));
  options_.channel = peer.reference();
  start();
  EXPECT_LE(2U, peer.requests().waitFor(2).size());
  notifier_.reset();
}

TEST_F(Channels, AreRetriedWhenObtainPushConsumerTimesOut) {
  options_.pushTimeout = std::chrono::milliseconds(100);
  WirePeer peer("obtain_push_consumer", Acts(9, Act::kIgnore));
  channel_.useAdmin(peer.reference(), orb());
  open();
  start();
  EXPECT_LE(2U, peer.requests().waitFor(2).size());
  notifier_.reset();
}

TEST_F(Channels, ThatDoNotAnswerTheDisconnectDoNotDelayTheDestructor) {
  options_.pushTimeout = kNever;
  WirePeer peer("disconnect_push_consumer", {Act::kIgnore});
  channel_.useProxy(peer.reference(), orb());
  open();
  start();
  publish(1);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
  const auto begin = std::chrono::steady_clock::now();
  notifier_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
  EXPECT_EQ(Acts{Act::kIgnore}, peer.requests().all());
}

// The first proxy has another address than the channel, as after a move of the channel.
class ChannelsWithAName : public Channels {
 protected:
  ChannelsWithAName()
      : namesPlace_(server_->wellKnownObject("Names")),
        names_(new FakeNames(orb())),
        namesOwner_(names_) {
    const CORBA::Object_var reference = namesPlace_->publish(names_);
    options_.channel =
        "corbaname:iiop:1.2@" + orb::format(server_->endpoint()) + "/Names#TopoEvents";
    open();
  }

  ~ChannelsWithAName() override {
    notifier_.reset();
    namesPlace_->retire();
  }

  // Starts with a first proxy at the peer. Later proxies are those of the fake channel.
  void startWithProxyAt(const WirePeer& peer) {
    channel_.useProxyOnce(peer.reference(), orb());
    start();
  }

  const std::string here_ = referenceTo("Channel");
  std::unique_ptr<orb::WellKnownObject> namesPlace_;
  FakeNames* const names_;
  const PortableServer::ServantBase_var namesOwner_;
};

TEST_F(ChannelsWithAName, AreFoundAtTheNewAddressWhenTheOldAddressIsUnreachable) {
  auto peer = std::make_unique<WirePeer>("push", Acts());
  const std::string there = peer->reference();
  names_->bindTo({here_, there, there, here_});
  startWithProxyAt(*peer);
  publish(1);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
  peer.reset();
  publish(2);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(2)), pushed(1, event(3))}), pushes(3));
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{3}, Lost{0})}));
  EXPECT_EQ((Texts{here_, there, there, here_}), names_->resolved.all());
}

TEST_F(ChannelsWithAName, AreResolvedByTheUnescapedName) {
  const std::string service = options_.channel.substr(0, options_.channel.find('#'));
  const std::pair<const char*, const char*> names[] = {
      {"#a%20%2fb", "a /b"}, {"#%41", "A"},   {"#x%4ay", "xJy"}, {"#x%4Ay", "xJy"}, {"#a%4", "a%4"},
      {"#a%", "a%"},         {"#%zz", "%zz"}, {"#%4z", "%4z"},   {"#a#b", "a#b"}};
  names_->bindTo({here_});
  Texts wanted;
  for (const auto& [escaped, name] : names) {
    options_.channel = service + escaped;
    wanted.emplace_back(name);
    start();
    EXPECT_EQ(wanted, names_->asked.waitFor(wanted.size())) << escaped;
    notifier_.reset();
  }
}

// The name for the log and the status.
TEST_F(ChannelsWithAName, AreNamedByTheBeginningOfALongReference) {
  const std::string longest = "corbaname:" + std::string(90, 'x');
  EXPECT_EQ(longest, agent::ChannelSink::nameOf(orb(), longest));
  EXPECT_EQ(longest + "...", agent::ChannelSink::nameOf(orb(), longest + "y"));
}

TEST_F(ChannelsWithAName, AreFoundAtTheNewAddressWhenTheOldAddressTimesOut) {
  options_.pushTimeout = std::chrono::milliseconds(1000);
  options_.idleCheck = std::chrono::milliseconds(1);
  WirePeer peer("_non_existent", Acts(9, Act::kIgnore));
  names_->bindTo({here_});
  startWithProxyAt(peer);
  EXPECT_EQ((ProxyCalls{connected(1)}), pushes(1));
  publish(1);
  EXPECT_EQ((ProxyCalls{connected(1), pushed(1, event(1))}), pushes(2));
}

TEST_F(ChannelsWithAName, AreNotResolvedDuringTheDestructor) {
  options_.pushTimeout = std::chrono::milliseconds(1000);
  options_.idleCheck = std::chrono::milliseconds(1);
  WirePeer peer("_non_existent", Acts(9, Act::kIgnore));
  names_->bindTo({here_});
  startWithProxyAt(peer);
  EXPECT_EQ(Act::kIgnore, peer.requests().waitFor(1).at(0));
  const auto begin = std::chrono::steady_clock::now();
  notifier_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2000));
  EXPECT_EQ((Texts{here_}), names_->resolved.all());
}

TEST_F(ChannelsWithAName, KeepAnUnreachableProxyAtTheAddressOfTheName) {
  WirePeer peer("_non_existent", Acts(4, Act::kClose));
  options_.idleCheck = std::chrono::milliseconds(1);
  names_->bindTo({here_, peer.reference()});
  startWithProxyAt(peer);
  EXPECT_EQ((Acts{Act::kClose, Act::kClose, Act::kClose, Act::kClose, Act::kAnswer}),
            peer.requests().waitFor(5));
  publish(1);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
  EXPECT_EQ(ProxyCalls{}, channel_.record.all());
  EXPECT_EQ((Texts{here_, peer.reference(), peer.reference()}), names_->resolved.all());
}

TEST_F(ChannelsWithAName, KeepAnUnreachableProxyWhileTheNameIsUnbound) {
  WirePeer peer("_non_existent", Acts(2, Act::kClose));
  options_.idleCheck = std::chrono::milliseconds(1);
  names_->bindTo({here_, ""});
  testing::internal::CaptureStderr();
  startWithProxyAt(peer);
  peer.requests().waitFor(3);
  publish(1);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
  EXPECT_EQ(ProxyCalls{}, channel_.record.all());
  EXPECT_EQ((Texts{here_, ""}), names_->resolved.all());
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::AllOf(testing::HasSubstr("which stay queued: "),
                             testing::Not(testing::HasSubstr("no object of the name"))));
}

TEST_F(ChannelsWithAName, KeepAnUnreachableProxyWhileTheNewAddressIsUnreachable) {
  WirePeer peer("_non_existent", Acts(2, Act::kClose));
  options_.idleCheck = std::chrono::milliseconds(1);
  const std::string unreachable =
      "corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(closedPort()) + "/Channel";
  names_->bindTo({here_, unreachable});
  startWithProxyAt(peer);
  peer.requests().waitFor(3);
  publish(1);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
  EXPECT_EQ(ProxyCalls{}, channel_.record.all());
  EXPECT_EQ((Texts{here_, unreachable}), names_->resolved.all());
}

TEST_F(ChannelsWithAName, AreNotResolvedWhileTheProxyAnswers) {
  WirePeer peer("_non_existent", {});
  options_.idleCheck = std::chrono::milliseconds(1);
  names_->bindTo({here_});
  startWithProxyAt(peer);
  peer.requests().waitFor(3);
  EXPECT_EQ((Texts{here_}), names_->resolved.all());
}

TEST_F(ChannelsWithAName, AreNotResolvedWithoutACorbaname) {
  WirePeer peer("_non_existent", Acts(2, Act::kClose));
  options_.channel = here_;
  options_.idleCheck = std::chrono::milliseconds(1);
  startWithProxyAt(peer);
  peer.requests().waitFor(3);
  publish(1);
  EXPECT_TRUE(becomes({channel(Queued{0}, Sent{1}, Lost{0})}));
  EXPECT_EQ(ProxyCalls{}, channel_.record.all());
}

TEST_F(Channels, AreUnavailableWhenUnreachable) {
  EXPECT_EQ(0U, reasonOfFailure("corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(closedPort()) +
                                "/Channel")
                    .find("TRANSIENT"));
}

TEST_F(Channels, AreUnavailableWithAMalformedReference) {
  EXPECT_EQ(0U, reasonOfFailure("no reference")
                    .find("the reference is malformed: it starts with none of IOR:, corbaloc:, "));
}

TEST_F(Channels, AreUnavailableWithACorbanameWithoutAName) {
  EXPECT_EQ(0U, reasonOfFailure("corbaname::127.0.0.1:1")
                    .find("the reference is malformed: it has no #NAME"));
}

TEST_F(ChannelsWithAName, AreUnavailableWhileTheNameIsUnbound) {
  names_->bindTo({""});
  EXPECT_EQ(0U, reasonOfFailure(options_.channel)
                    .find("the naming service has no object of the name 'TopoEvents'"));
}

TEST_F(Channels, AreUnavailableWithANilReference) {
  const CORBA::String_var nil = orb()->object_to_string(CORBA::Object::_nil());
  EXPECT_EQ(0U, reasonOfFailure(nil.in()).find("the reference is nil"));
}

TEST_F(Channels, AreUnavailableWithAReferenceToAnotherType) {
  const ServedConsumer consumer = makeConsumer();
  const CORBA::String_var reference = orb()->object_to_string(consumer.reference);
  EXPECT_EQ(
      0U, reasonOfFailure(reference.in()).find("the reference does not refer to an event channel"));
}

TEST_F(Channels, AreUnavailableWithoutANamingService) {
  EXPECT_EQ(0U,
            reasonOfFailure("corbaname:iiop:127.0.0.1:" + std::to_string(closedPort()) + "#a/b.c")
                .find("TRANSIENT"));
}

}  // namespace
