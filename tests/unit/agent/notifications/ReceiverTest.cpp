// The queue and the thread of a receiver with a scripted sink.

#include "agent/notifications/Receiver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <future>
#include <new>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

#include "agent/base/Log.h"
#include "tests/fakes/FailingNew.h"
#include "tests/support/WithOrb.h"
#include "tests/unit/agent/notifications/Events.h"
#include "tests/unit/agent/notifications/Waits.h"
#include "tests/unit/agent/support/CapturedLog.h"

namespace {

using namespace notification_tests;
using agent::CallOutcome;
using agent::Receiver;

constexpr std::chrono::hours kNever{1};

const CallOutcome kDone{};
const CallOutcome kUnavailable{CallOutcome::kUnavailable, "no answer"};
const CallOutcome kRejected{CallOutcome::kRejected, "too large"};
const CallOutcome kFatal{CallOutcome::kFatal, "it is deleted"};
// A rejection, after which allocations of the receiver's thread fail until the next call of the
// sink.
const CallOutcome kStarves{CallOutcome::kRejected, "starves"};
const CallOutcome kThrows{CallOutcome::kDone, "std::bad_alloc"};  // throws std::bad_alloc instead

// A call of the sink.
struct SinkCall {
  enum Kind { kConnect, kPush, kCheck, kDisconnect };

  Kind kind;
  Delivered event;  // of a push
};
using SinkCalls = std::vector<SinkCall>;

bool operator==(const SinkCall& left, const SinkCall& right) {
  return left.kind == right.kind && left.event == right.event;
}

void PrintTo(const SinkCall& call, std::ostream* out) {
  constexpr std::array<const char*, 4> kNames{"connect", "push ", "check", "disconnect"};
  *out << kNames.at(call.kind);
  if (call.kind == SinkCall::kPush) {
    PrintTo(call.event, out);
  }
}

// Expected calls.
const SinkCall kConnectCall{SinkCall::kConnect, {}};
const SinkCall kCheckCall{SinkCall::kCheck, {}};
const SinkCall kDisconnectCall{SinkCall::kDisconnect, {}};

SinkCall pushOf(const Delivered& event) {
  return {SinkCall::kPush, event};
}

// The outcomes of the sink's calls, and a record of the calls. Thread-safety: any thread. Outlives
// the receiver and its sink.
struct Script {
  // The next outcome of a kind of call; kDone when none is left.
  CallOutcome next(std::vector<CallOutcome>& outcomes) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (outcomes.empty()) {
      return kDone;
    }
    CallOutcome outcome = outcomes.front();
    outcomes.erase(outcomes.begin());
    if (outcome.reason == kThrows.reason) {
      throw std::bad_alloc();
    }
    return outcome;
  }

  void setPushes(std::vector<CallOutcome> outcomes) {
    const std::lock_guard<std::mutex> lock(mutex);
    pushes = std::move(outcomes);
  }

  void setChecks(std::vector<CallOutcome> outcomes) {
    const std::lock_guard<std::mutex> lock(mutex);
    checks = std::move(outcomes);
  }

  // Waits if a test blocks the push of this event.
  void waitForGate(const Delivered& event) {
    for (const auto& [blocked, gate] : gates) {
      if (blocked == event) {
        gate->wait();
      }
    }
  }

  bool isFinished() {
    const std::lock_guard<std::mutex> lock(mutex);
    return connects.empty() && pushes.empty() && checks.empty();
  }

  std::mutex mutex;
  std::vector<CallOutcome> connects;
  std::vector<CallOutcome> pushes;
  std::vector<CallOutcome> checks;
  std::vector<std::pair<Delivered, std::shared_ptr<Gate>>> gates;  // of pushes that wait
  Record<SinkCall> record;                                         // every call
};

class ScriptedSink final : public agent::NotificationSink {
 public:
  explicit ScriptedSink(Script& script) : script_(script) {}

  CallOutcome connect(const Stopping& /*stopping*/) override {
    starving_.reset();
    script_.record.add(kConnectCall);
    return script_.next(script_.connects);
  }

  CallOutcome push(const CosNotification::StructuredEvent& event,
                   const Stopping& /*stopping*/) override {
    starving_.reset();
    const Delivered delivered = deliveredBy(event);
    script_.record.add(pushOf(delivered));
    script_.waitForGate(delivered);
    CallOutcome outcome = script_.next(script_.pushes);
    if (outcome.reason == kStarves.reason) {
      starving_.emplace(0);
    }
    return outcome;
  }

  CallOutcome check(const Stopping& /*stopping*/) override {
    script_.record.add(kCheckCall);
    return script_.next(script_.checks);
  }

  void disconnect() override { script_.record.add(kDisconnectCall); }

 private:
  Script& script_;
  std::optional<fakes::FailingNew> starving_;
};

std::size_t linesWith(const std::string& text, const std::string& log) {
  std::size_t count = 0;
  for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
    ++count;
  }
  return count;
}

class Receivers : public support::WithOrb {
 protected:
  Receivers() {
    settings_.name = "host:1";
    settings_.queue.notifications = 3;
    settings_.idleCheck = kNever;
    settings_.firstBackOff = std::chrono::milliseconds(1);
    settings_.longestBackOff = std::chrono::milliseconds(2);
    settings_.clock = someTime;
    settings_.wait = waits_.function();
  }

  void make() {
    receiver_ = std::make_unique<Receiver>(std::make_unique<ScriptedSink>(script_), settings_,
                                           [this] { dropped_.open(); });
  }

  void start() {
    make();
    receiver_->start();
  }

  void offer(std::uint64_t first, std::uint64_t last) {
    for (std::uint64_t id = first; id <= last; ++id) {
      auto event = agent::objectDeletion({}, false);
      agent::stamp(*event, id, someTime());
      receiver_->offer({id, std::move(event), 1});
    }
  }

  // Stops the receiver, waits for its end and returns all calls to the sink.
  SinkCalls calls() {
    receiver_->stop();
    receiver_->join();
    return script_.record.all();
  }

  bool drains() {
    return receiver_->waitUntilDrained(std::chrono::steady_clock::now() + kPatience);
  }

  ReceiverState status() { return stateOf(receiver_->status()); }

  // Expected states.
  ReceiverState up(Queued queued, Sent sent, Lost lost) const {
    return settings_.isChannel ? channel(queued, sent, lost) : subscriber(queued, sent, lost);
  }
  static ReceiverState down(Queued queued, Sent sent, Lost lost) {
    return downChannel(queued, sent, lost);
  }

  std::shared_ptr<Gate> blockPush(const Delivered& event) {
    script_.gates.emplace_back(event, std::make_shared<Gate>());
    return script_.gates.back().second;
  }

  Script script_;
  Waits waits_{std::chrono::milliseconds(100)};
  Receiver::Settings settings_;
  Gate dropped_;
  std::unique_ptr<Receiver> receiver_;
};

TEST_F(Receivers, SendNotificationsInOrder) {
  start();
  offer(1, 3);
  EXPECT_TRUE(drains());
  EXPECT_EQ(up(Queued{0}, Sent{3}, Lost{0}), status());
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(event(2)), pushOf(event(3)),
                       kDisconnectCall}),
            calls());
}

TEST_F(Receivers, SendNotificationsThatWereQueuedBeforeTheStart) {
  make();
  receiver_->beginWithGap({3, 9, 4});
  offer(10, 11);
  EXPECT_EQ(up(Queued{2}, Sent{0}, Lost{0}), status());
  receiver_->start();
  EXPECT_TRUE(drains());
  EXPECT_EQ(up(Queued{0}, Sent{2}, Lost{0}), status());
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(gap(3, 9, 4)), pushOf(event(10)), pushOf(event(11)),
                       kDisconnectCall}),
            calls());
}

TEST_F(Receivers, SendAGapReportInThePlaceOfEvictedNotifications) {
  const auto gate = blockPush(event(1));
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 9);
  EXPECT_EQ(up(Queued{4}, Sent{0}, Lost{5}), status());
  gate->open();
  EXPECT_TRUE(drains());
  EXPECT_EQ(up(Queued{0}, Sent{4}, Lost{5}), status());
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(gap(2, 6, 5)), pushOf(event(7)),
                       pushOf(event(8)), pushOf(event(9)), kDisconnectCall}),
            calls());
}

TEST_F(Receivers, DoNotCountAGapReportAsQueued) {
  const auto gate = blockPush(gap(1, 2, 2));
  make();
  offer(1, 5);
  receiver_->start();
  script_.record.waitFor(2);
  EXPECT_EQ(up(Queued{3}, Sent{0}, Lost{2}), status());
  gate->open();
}

TEST_F(Receivers, SendAnotherGapReportForEvictionsDuringAGapReport) {
  const auto first = blockPush(event(1));
  const auto second = blockPush(gap(2, 2, 1));
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 5);
  first->open();
  script_.record.waitFor(3);
  offer(6, 7);
  second->open();
  EXPECT_TRUE(drains());
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(gap(2, 2, 1)), pushOf(gap(3, 4, 2)),
                       pushOf(event(5)), pushOf(event(6)), pushOf(event(7)), kDisconnectCall}),
            calls());
}

TEST_F(Receivers, SendReportedGapsInOrder) {
  make();
  offer(1, 1);
  receiver_->reportGap({2, 2, 1});
  receiver_->reportGap({2, 2, 1});
  offer(3, 3);
  receiver_->start();
  EXPECT_TRUE(drains());
  EXPECT_EQ(up(Queued{0}, Sent{2}, Lost{2}), status());
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(gap(2, 2, 2)), pushOf(event(3)),
                       kDisconnectCall}),
            calls());
}

TEST_F(Receivers, SendAReportedGapWithoutWaitingForANotification) {
  start();
  offer(1, 1);
  EXPECT_TRUE(drains());
  EXPECT_TRUE(eventually([this] { return waits_.present() == 1; }));
  receiver_->reportGap({2, 2, 1});
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(gap(2, 2, 1))}),
            script_.record.waitFor(3));
}

TEST_F(Receivers, RepeatAPushToAnUnavailableChannel) {
  settings_.isChannel = true;
  script_.pushes = {kDone, kUnavailable};
  script_.connects = {kDone, kUnavailable, kUnavailable};
  make();
  offer(1, 3);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{3}, Lost{0}); }));
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(event(2)), kConnectCall, kConnectCall,
                       kConnectCall, pushOf(event(2)), pushOf(event(3)), kDisconnectCall}),
            calls());
}

TEST_F(Receivers, MergeAnUndeliveredGapWithLaterEvictions) {
  settings_.isChannel = true;
  const auto gate = blockPush(gap(1, 2, 2));
  script_.pushes = {kUnavailable};
  make();
  offer(1, 5);
  receiver_->start();
  script_.record.waitFor(2);
  offer(6, 6);
  gate->open();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{3}, Lost{3}); }));
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(gap(1, 2, 2)), kConnectCall, pushOf(gap(1, 3, 3)),
                       pushOf(event(4)), pushOf(event(5)), pushOf(event(6)), kDisconnectCall}),
            calls());
}

TEST_F(Receivers, DoNotEvictTheNotificationInDelivery) {
  settings_.isChannel = true;
  settings_.firstBackOff = settings_.longestBackOff = kNever;
  script_.pushes = {kUnavailable};
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 10);
  EXPECT_TRUE(eventually([this] { return status() == down(Queued{4}, Sent{0}, Lost{6}); }));
}

TEST_F(Receivers, DiscardANotificationAfterFiveRejections) {
  settings_.isChannel = true;
  script_.pushes = {kRejected, kUnavailable, kRejected, kRejected, kRejected, kRejected};
  make();
  offer(1, 2);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), kConnectCall, pushOf(event(1)), kConnectCall,
                       pushOf(event(1)), kConnectCall, pushOf(event(1)), kConnectCall,
                       pushOf(event(1)), kConnectCall, pushOf(event(1)), kConnectCall,
                       pushOf(gap(1, 1, 1)), pushOf(event(2)), kDisconnectCall}),
            calls());
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find(
                "event channel host:1 rejects notification 1, which is discarded: too large"));
}

TEST_F(Receivers, DiscardAlsoTheGapReportOfADiscardedNotification) {
  settings_.isChannel = true;
  script_.pushes = std::vector<CallOutcome>(10, kRejected);
  make();
  offer(1, 2);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
  SinkCalls wanted;
  for (int i = 0; i < 10; ++i) {
    wanted.insert(wanted.end(), {kConnectCall, pushOf(i < 5 ? event(1) : gap(1, 1, 1))});
  }
  wanted.insert(wanted.end(), {kConnectCall, pushOf(event(2)), kDisconnectCall});
  EXPECT_EQ(wanted, calls());
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(
                                   "rejects a gap report, which is discarded: too large"));
}

TEST_F(Receivers, RetryAChannelAfterAnException) {
  settings_.isChannel = true;
  settings_.idleCheck = std::chrono::milliseconds(1);
  script_.connects = {kThrows};
  script_.pushes = {kDone, kThrows};
  make();
  offer(1, 2);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{2}, Lost{0}); }));
  script_.setChecks({kThrows});
  EXPECT_TRUE(eventually([this] { return script_.isFinished(); }));
  offer(3, 3);
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{3}, Lost{0}); }));
  SinkCalls calls = this->calls();
  calls.erase(std::remove(calls.begin(), calls.end(), kCheckCall), calls.end());
  EXPECT_EQ((SinkCalls{kConnectCall, kConnectCall, pushOf(event(1)), pushOf(event(2)), kConnectCall,
                       pushOf(event(2)), kConnectCall, pushOf(event(3)), kDisconnectCall}),
            calls);
  EXPECT_NE(
      std::string::npos,
      testing::internal::GetCapturedStderr().find(
          "event channel host:1 does not accept notifications, which stay queued: std::bad_alloc"));
}

TEST_F(Receivers, DiscardANotificationAfterFiveExceptions) {
  settings_.isChannel = true;
  script_.pushes = std::vector<CallOutcome>(5, kThrows);
  make();
  offer(1, 2);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
}

TEST_F(Receivers, DropASubscriberAfterAnException) {
  script_.pushes = {kDone, kThrows};
  make();
  offer(1, 3);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(dropped_.wait());
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(event(2))}), calls());
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find(
                "subscriber host:1 is dropped: std::bad_alloc, 2 notifications not sent"));
}

TEST_F(Receivers, CountTheRejectionsOfEachNotificationSeparately) {
  settings_.isChannel = true;
  script_.pushes = {kRejected, kRejected, kRejected, kRejected, kDone, kRejected};
  make();
  offer(1, 2);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{2}, Lost{0}); }));
}

TEST_F(Receivers, DiscardAGapReportAfterFiveRejections) {
  settings_.isChannel = true;
  script_.pushes = std::vector<CallOutcome>(5, kRejected);
  make();
  receiver_->reportGap({1, 2, 2});
  offer(3, 3);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{2}); }));
  SinkCalls wanted;
  for (int i = 0; i < 5; ++i) {
    wanted.insert(wanted.end(), {kConnectCall, pushOf(gap(1, 2, 2))});
  }
  wanted.insert(wanted.end(), {kConnectCall, pushOf(event(3)), kDisconnectCall});
  EXPECT_EQ(wanted, calls());
}

TEST_F(Receivers, ResetTheBackOffAfterASuccess) {
  settings_.isChannel = true;
  script_.pushes = {kUnavailable, kUnavailable, kDone, kUnavailable};
  make();
  offer(1, 2);
  receiver_->start();
  EXPECT_TRUE(eventually(
      [this] { return status() == up(Queued{0}, Sent{2}, Lost{0}) && waits_.present() == 1; }));
  using std::chrono::milliseconds;
  EXPECT_EQ((Waits::Lengths{milliseconds(1), milliseconds(2), milliseconds(1), kNever}),
            waits_.begun());
}

TEST_F(Receivers, ReportAGapForNotificationsBeyondTheLimitOfBytes) {
  settings_.queue.bytes = 2;
  const auto gate = blockPush(event(1));
  testing::internal::CaptureStderr();
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 5);
  receiver_->offer({6, agent::objectDeletion({}, false), 3});
  EXPECT_EQ(up(Queued{3}, Sent{0}, Lost{3}), status());
  gate->open();
  EXPECT_TRUE(drains());
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(gap(2, 3, 2)), pushOf(event(4)),
                       pushOf(event(5)), pushOf(gap(6, 6, 1)), kDisconnectCall}),
            calls());
  EXPECT_EQ(1U, linesWith("subscriber host:1 does not keep up: its queue is full",
                          testing::internal::GetCapturedStderr()));
}

TEST_F(Receivers, LogEachOverflowOnce) {
  testing::internal::CaptureStderr();
  start();
  for (std::uint64_t id : {1, 2}) {
    receiver_->offer({id, nullptr, settings_.queue.bytes + 1});
    EXPECT_TRUE(drains());
  }
  calls();
  EXPECT_EQ(2U, linesWith("its queue is full", testing::internal::GetCapturedStderr()));
}

TEST_F(Receivers, DiscardARejectedNotificationWhileMemoryIsShort) {
  settings_.isChannel = true;
  settings_.wait = Receiver::waitFor;  // the record of waits takes memory
  script_.pushes = std::vector<CallOutcome>(5, kStarves);
  make();
  offer(1, 2);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
}

TEST_F(Receivers, DropASubscriberWhileMemoryIsShort) {
  script_.pushes = {{CallOutcome::kFatal, kStarves.reason}};
  make();
  offer(1, 1);
  receiver_->start();
  EXPECT_TRUE(dropped_.wait());
}

TEST_F(Receivers, HaveAnsweredAfterTheFirstConnection) {
  settings_.isChannel = true;
  script_.connects = {kUnavailable};
  make();
  EXPECT_FALSE(receiver_->hasAnswered());
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return receiver_->hasAnswered(); }));
  EXPECT_EQ((SinkCalls{kConnectCall, kConnectCall, kDisconnectCall}), calls());
}

TEST_F(Receivers, HaveNotAnsweredAfterAFailedConnection) {
  script_.connects = {kFatal};
  start();
  EXPECT_TRUE(dropped_.wait());
  EXPECT_FALSE(receiver_->hasAnswered());
}

TEST_F(Receivers, DropASubscriberAfterAFatalFailure) {
  script_.pushes = {kDone, kFatal};
  make();
  offer(1, 3);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(dropped_.wait());
  EXPECT_TRUE(drains());  // a dropped receiver counts as drained
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), pushOf(event(2))}), calls());
  EXPECT_TRUE(receiver_->ended());
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find(
                "subscriber host:1 is dropped: it is deleted, 2 notifications not sent"));
  EXPECT_EQ(up(Queued{1}, Sent{1}, Lost{0}), status());
  offer(4, 4);
  EXPECT_EQ(up(Queued{1}, Sent{1}, Lost{0}), status());
}

TEST_F(Receivers, CheckAnIdleSink) {
  settings_.idleCheck = std::chrono::milliseconds(1);
  script_.checks = {kDone, kDone, kFatal};
  start();
  EXPECT_TRUE(dropped_.wait());
  EXPECT_EQ((SinkCalls{kConnectCall, kCheckCall, kCheckCall, kCheckCall}), calls());
}

TEST_F(Receivers, ReconnectAfterAFailedCheck) {
  settings_.isChannel = true;
  settings_.idleCheck = std::chrono::milliseconds(1);
  script_.checks = {kUnavailable};
  start();
  SinkCalls calls = script_.record.waitFor(4);
  calls.resize(4);
  EXPECT_EQ((SinkCalls{kConnectCall, kCheckCall, kConnectCall, kCheckCall}), calls);
}

TEST_F(Receivers, LogTheFailureAndTheRecoveryOfAChannelOnce) {
  settings_.isChannel = true;
  script_.connects = {kUnavailable, kUnavailable, kUnavailable};
  support::CapturedLog captured(agent::kLogEvents);
  start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{0}, Lost{0}); }));
  calls();
  const std::string log = captured.text();
  const std::string down =
      "event channel host:1 does not accept notifications, which stay queued: no answer";
  EXPECT_NE(std::string::npos, log.find(down));
  EXPECT_EQ(log.find(down), log.rfind(down));
  EXPECT_NE(std::string::npos, log.find("event channel host:1 answers again"));
}

TEST_F(Receivers, AreDownUntilTheFirstPushSucceeds) {
  settings_.isChannel = true;
  const auto gate = blockPush(event(1));
  make();
  offer(1, 1);
  receiver_->start();
  script_.record.waitFor(2);
  EXPECT_EQ(down(Queued{1}, Sent{0}, Lost{0}), status());
  gate->open();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{0}); }));
}

TEST_F(Receivers, DoubleTheBackOffUpToItsLimit) {
  settings_.isChannel = true;
  settings_.firstBackOff = std::chrono::milliseconds(10);
  settings_.longestBackOff = std::chrono::milliseconds(70);
  script_.connects = std::vector<CallOutcome>(5, kUnavailable);
  start();
  EXPECT_TRUE(eventually([this] { return waits_.begun().size() == 6; }));
  using std::chrono::milliseconds;
  EXPECT_EQ((Waits::Lengths{milliseconds(10), milliseconds(20), milliseconds(40), milliseconds(70),
                            milliseconds(70), kNever}),
            waits_.begun());
}

TEST_F(Receivers, LogTheConnectionOfAChannelOnly) {
  agent::setLogLevel(agent::kLogEvents);
  testing::internal::CaptureStderr();
  for (const bool isChannel : {true, false}) {
    settings_.isChannel = isChannel;
    start();
    offer(1, 3);
    EXPECT_TRUE(drains());
    calls();
  }
  agent::setLogLevel(agent::kLogErrors);
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string line = "event channel host:1 is connected";
  EXPECT_NE(std::string::npos, log.find(line));
  EXPECT_EQ(log.find(line), log.rfind(line));
  EXPECT_EQ(std::string::npos, log.find("subscriber"));
}

TEST_F(Receivers, StopDuringABackOff) {
  settings_.isChannel = true;
  settings_.firstBackOff = settings_.longestBackOff = kNever;
  script_.connects = {kUnavailable};
  start();
  offer(1, 1);
  EXPECT_FALSE(drains());
  EXPECT_EQ((SinkCalls{kConnectCall}), calls());
}

TEST_F(Receivers, SendNothingAfterAStop) {
  const auto gate = blockPush(event(1));
  start();
  offer(1, 3);
  script_.record.waitFor(2);
  receiver_->stop();
  offer(4, 4);
  EXPECT_TRUE(receiver_->waitUntilDrained(std::chrono::steady_clock::now()));
  gate->open();
  EXPECT_EQ((SinkCalls{kConnectCall, pushOf(event(1)), kDisconnectCall}), calls());
}

TEST_F(Receivers, StopWakesWaitingThreads) {
  const auto gate = blockPush(event(1));
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  std::future<bool> sent = std::async(std::launch::async, [this] { return drains(); });
  EXPECT_TRUE(eventually([this] { return waits_.present() == 1; }));
  receiver_->stop();
  EXPECT_EQ(std::future_status::ready, sent.wait_for(kPatience / 2));
  gate->open();
  EXPECT_TRUE(sent.get());
}

TEST_F(Receivers, EndAfterTheRunningCall) {
  const auto gate = blockPush(event(1));
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  EXPECT_FALSE(receiver_->ended());
  receiver_->stop();
  EXPECT_FALSE(receiver_->ended());
  gate->open();
  receiver_->join();
  EXPECT_TRUE(receiver_->ended());
}

TEST_F(Receivers, IgnoreAFatalFailureAfterAStop) {
  const auto gate = blockPush(event(1));
  script_.pushes = {kFatal};
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  testing::internal::CaptureStderr();
  receiver_->stop();
  gate->open();
  calls();
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_F(Receivers, AreDestroyedWithoutAStart) {
  make();
  EXPECT_TRUE(receiver_->ended());
  offer(1, 1);
}

TEST_F(Receivers, WaitUntilDrainedReturnsFalseAtTheDeadline) {
  const auto gate = blockPush(event(1));
  start();
  offer(1, 1);
  EXPECT_FALSE(receiver_->waitUntilDrained(std::chrono::steady_clock::now()));
  gate->open();
  EXPECT_TRUE(drains());
}

}  // namespace
