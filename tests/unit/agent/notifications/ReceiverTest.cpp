// The queue and the thread of a receiver, with a sink that does as it is told.

#include "agent/notifications/Receiver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <map>
#include <new>
#include <optional>

#include "agent/base/Log.h"
#include "tests/fakes/FailingNew.h"
#include "tests/support/WithOrb.h"
#include "tests/unit/agent/notifications/Events.h"
#include "tests/unit/agent/notifications/Waits.h"

namespace {

using namespace notification_tests;
using agent::CallOutcome;
using agent::Receiver;

constexpr std::chrono::hours kNever{1};

const CallOutcome kDone{};
const CallOutcome kUnavailable{CallOutcome::kUnavailable, "no answer"};
const CallOutcome kRejected{CallOutcome::kRejected, "too large"};
const CallOutcome kFatal{CallOutcome::kFatal, "it has gone"};
// A refusal. There is no memory on the receiver's thread until the next call of the sink.
const CallOutcome kStarves{CallOutcome::kRejected, "starves"};
const CallOutcome kThrows{CallOutcome::kDone, "std::bad_alloc"};  // no outcome but that exception

// Outlives the receiver and its sink.
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

  bool nothingIsLeft() {
    const std::lock_guard<std::mutex> lock(mutex);
    return connects.empty() && pushes.empty() && checks.empty();
  }

  std::mutex mutex;
  std::vector<CallOutcome> connects;
  std::vector<CallOutcome> pushes;
  std::vector<CallOutcome> checks;
  std::map<std::string, std::shared_ptr<Gate>> gates;  // a push of this event waits for
  Record record;                                       // every call
};

class ScriptedSink final : public agent::NotificationSink {
 public:
  explicit ScriptedSink(Script& script) : script_(script) {}

  CallOutcome connect(const Stopping& /*stopping*/) override {
    starving_.reset();
    script_.record.add("connect");
    return script_.next(script_.connects);
  }

  CallOutcome push(const CosNotification::StructuredEvent& event,
                   const Stopping& /*stopping*/) override {
    starving_.reset();
    const std::string text = briefly(event);
    script_.record.add(text);
    if (script_.gates.count(text) != 0) {
      script_.gates[text]->wait();
    }
    CallOutcome outcome = script_.next(script_.pushes);
    if (outcome.reason == kStarves.reason) {
      starving_.emplace(0);
    }
    return outcome;
  }

  CallOutcome check(const Stopping& /*stopping*/) override {
    script_.record.add("check");
    return script_.next(script_.checks);
  }

  void disconnect() override { script_.record.add("disconnect"); }

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
                                           [this] { gone_.open(); });
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

  // All calls to the sink, once the receiver has ended.
  Texts calls() {
    receiver_->stop();
    receiver_->join();
    return script_.record.all();
  }

  bool sendsAll() {
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

  std::shared_ptr<Gate> holdBack(const std::string& event) {
    return script_.gates[event] = std::make_shared<Gate>();
  }

  Script script_;
  Waits waits_{std::chrono::milliseconds(100)};
  Receiver::Settings settings_;
  Gate gone_;
  std::unique_ptr<Receiver> receiver_;
};

TEST_F(Receivers, SendInOrder) {
  start();
  offer(1, 3);
  EXPECT_TRUE(sendsAll());
  EXPECT_EQ(up(Queued{0}, Sent{3}, Lost{0}), status());
  EXPECT_EQ((Texts{"connect", "1", "2", "3", "disconnect"}), calls());
}

TEST_F(Receivers, SendWhatWasOfferedBeforeTheStart) {
  make();
  receiver_->beginWithGap({3, 9, 4});
  offer(10, 11);
  EXPECT_EQ(up(Queued{2}, Sent{0}, Lost{0}), status());
  receiver_->start();
  EXPECT_TRUE(sendsAll());
  EXPECT_EQ(up(Queued{0}, Sent{2}, Lost{0}), status());
  EXPECT_EQ((Texts{"connect", "lost 3-9 4", "10", "11", "disconnect"}), calls());
}

TEST_F(Receivers, TellWhatOverflowedBeforeTheNextEvent) {
  const auto gate = holdBack("1");
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 9);
  EXPECT_EQ(up(Queued{4}, Sent{0}, Lost{5}), status());
  gate->open();
  EXPECT_TRUE(sendsAll());
  EXPECT_EQ(up(Queued{0}, Sent{4}, Lost{5}), status());
  EXPECT_EQ((Texts{"connect", "1", "lost 2-6 5", "7", "8", "9", "disconnect"}), calls());
}

TEST_F(Receivers, CountNoWordAsAnEventThatWaits) {
  const auto gate = holdBack("lost 1-2 2");
  make();
  offer(1, 5);
  receiver_->start();
  script_.record.waitFor(2);
  EXPECT_EQ(up(Queued{3}, Sent{0}, Lost{2}), status());
  gate->open();
}

TEST_F(Receivers, TellAnewWhatOverflowsWhileTheyTell) {
  const auto first = holdBack("1");
  const auto told = holdBack("lost 2-2 1");
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 5);
  first->open();
  script_.record.waitFor(3);
  offer(6, 7);
  told->open();
  EXPECT_TRUE(sendsAll());
  EXPECT_EQ((Texts{"connect", "1", "lost 2-2 1", "lost 3-4 2", "5", "6", "7", "disconnect"}),
            calls());
}

TEST_F(Receivers, TellOfMissedOnesInTheirPlace) {
  make();
  offer(1, 1);
  receiver_->reportGap({2, 2, 1});
  receiver_->reportGap({2, 2, 1});
  offer(3, 3);
  receiver_->start();
  EXPECT_TRUE(sendsAll());
  EXPECT_EQ(up(Queued{0}, Sent{2}, Lost{2}), status());
  EXPECT_EQ((Texts{"connect", "1", "lost 2-2 2", "3", "disconnect"}), calls());
}

TEST_F(Receivers, TellOfMissedOnesAtOnce) {
  start();
  offer(1, 1);
  EXPECT_TRUE(sendsAll());
  EXPECT_TRUE(eventually([this] { return waits_.present() == 1; }));
  receiver_->reportGap({2, 2, 1});
  EXPECT_EQ((Texts{"connect", "1", "lost 2-2 1"}), script_.record.waitFor(3));
}

TEST_F(Receivers, SendAgainWhatWasNotTaken) {
  settings_.isChannel = true;
  script_.pushes = {kDone, kUnavailable};
  script_.connects = {kDone, kUnavailable, kUnavailable};
  make();
  offer(1, 3);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{3}, Lost{0}); }));
  EXPECT_EQ((Texts{"connect", "1", "2", "connect", "connect", "connect", "2", "3", "disconnect"}),
            calls());
}

TEST_F(Receivers, MergeWordThatWasNotTakenWithMore) {
  settings_.isChannel = true;
  const auto gate = holdBack("lost 1-2 2");
  script_.pushes = {kUnavailable};
  make();
  offer(1, 5);
  receiver_->start();
  script_.record.waitFor(2);
  offer(6, 6);
  gate->open();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{3}, Lost{3}); }));
  EXPECT_EQ((Texts{"connect", "lost 1-2 2", "connect", "lost 1-3 3", "4", "5", "6", "disconnect"}),
            calls());
}

TEST_F(Receivers, KeepWhatTheyHoldWhileTheRestOverflows) {
  settings_.isChannel = true;
  settings_.firstBackOff = settings_.longestBackOff = kNever;
  script_.pushes = {kUnavailable};
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 10);
  EXPECT_TRUE(eventually([this] { return status() == down(Queued{4}, Sent{0}, Lost{6}); }));
}

TEST_F(Receivers, LeaveOutWhatIsRefusedAgainAndAgain) {
  settings_.isChannel = true;
  script_.pushes = {kRejected, kUnavailable, kRejected, kRejected, kRejected, kRejected};
  make();
  offer(1, 2);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
  EXPECT_EQ((Texts{"connect", "1", "connect", "1", "connect", "1", "connect", "1", "connect", "1",
                   "connect", "1", "connect", "lost 1-1 1", "2", "disconnect"}),
            calls());
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find(
                "event channel host:1 rejects notification 1, which is discarded: too large"));
}

TEST_F(Receivers, LeaveOutANotificationAndThenTheWordOfIt) {
  settings_.isChannel = true;
  script_.pushes = std::vector<CallOutcome>(10, kRejected);
  make();
  offer(1, 2);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
  Texts wanted;
  for (int i = 0; i < 10; ++i) {
    wanted.insert(wanted.end(), {"connect", i < 5 ? "1" : "lost 1-1 1"});
  }
  wanted.insert(wanted.end(), {"connect", "2", "disconnect"});
  EXPECT_EQ(wanted, calls());
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find(
                                   "rejects a gap report, which is discarded: too large"));
}

TEST_F(Receivers, TryAChannelAgainWhoseCallsThrow) {
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
  EXPECT_TRUE(eventually([this] { return script_.nothingIsLeft(); }));
  offer(3, 3);
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{3}, Lost{0}); }));
  Texts calls = this->calls();
  calls.erase(std::remove(calls.begin(), calls.end(), "check"), calls.end());
  EXPECT_EQ((Texts{"connect", "connect", "1", "2", "connect", "2", "connect", "3", "disconnect"}),
            calls);
  EXPECT_NE(
      std::string::npos,
      testing::internal::GetCapturedStderr().find(
          "event channel host:1 does not accept notifications, which stay queued: std::bad_alloc"));
}

TEST_F(Receivers, LeaveOutAnEventOverWhichAChannelThrowsAgainAndAgain) {
  settings_.isChannel = true;
  script_.pushes = std::vector<CallOutcome>(5, kThrows);
  make();
  offer(1, 2);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
}

TEST_F(Receivers, AreDroppedWhenTheirSinkThrows) {
  script_.pushes = {kDone, kThrows};
  make();
  offer(1, 3);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(gone_.wait());
  EXPECT_EQ((Texts{"connect", "1", "2"}), calls());
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find(
                "subscriber host:1 is dropped: std::bad_alloc, 2 notifications not sent"));
}

TEST_F(Receivers, CountTheRefusalsOfEachNotificationAlone) {
  settings_.isChannel = true;
  script_.pushes = {kRejected, kRejected, kRejected, kRejected, kDone, kRejected};
  make();
  offer(1, 2);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{2}, Lost{0}); }));
}

TEST_F(Receivers, LeaveOutWordOfLostOnesThatIsRefusedAgainAndAgain) {
  settings_.isChannel = true;
  script_.pushes = std::vector<CallOutcome>(5, kRejected);
  make();
  receiver_->reportGap({1, 2, 2});
  offer(3, 3);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{2}); }));
  Texts wanted;
  for (int i = 0; i < 5; ++i) {
    wanted.insert(wanted.end(), {"connect", "lost 1-2 2"});
  }
  wanted.insert(wanted.end(), {"connect", "3", "disconnect"});
  EXPECT_EQ(wanted, calls());
}

TEST_F(Receivers, BeginWithTheFirstPauseAfterEverySuccess) {
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

TEST_F(Receivers, ReportANotificationBeyondTheMemoryOfTheQueueAsLost) {
  settings_.queue.bytes = 2;
  const auto gate = holdBack("1");
  testing::internal::CaptureStderr();
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  offer(2, 5);
  receiver_->offer({6, agent::objectDeletion({}, false), 3});
  EXPECT_EQ(up(Queued{3}, Sent{0}, Lost{3}), status());
  gate->open();
  EXPECT_TRUE(sendsAll());
  EXPECT_EQ((Texts{"connect", "1", "lost 2-3 2", "4", "5", "lost 6-6 1", "disconnect"}), calls());
  EXPECT_EQ(1U, linesWith("subscriber host:1 does not keep up: its queue is full",
                          testing::internal::GetCapturedStderr()));
}

TEST_F(Receivers, LogThatTheirQueueIsFullAgainAfterItWasEmpty) {
  testing::internal::CaptureStderr();
  start();
  for (std::uint64_t id : {1, 2}) {
    receiver_->offer({id, nullptr, settings_.queue.bytes + 1});
    EXPECT_TRUE(sendsAll());
  }
  calls();
  EXPECT_EQ(2U, linesWith("its queue is full", testing::internal::GetCapturedStderr()));
}

TEST_F(Receivers, LeaveOutARefusedEventOfAChannelWhileMemoryIsShort) {
  settings_.isChannel = true;
  settings_.wait = Receiver::waitFor;  // the record of waits takes memory
  script_.pushes = std::vector<CallOutcome>(5, kStarves);
  make();
  offer(1, 2);
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{1}); }));
}

TEST_F(Receivers, ReportThatTheirSinkIsGoneWhileMemoryIsShort) {
  script_.pushes = {{CallOutcome::kFatal, kStarves.reason}};
  make();
  offer(1, 1);
  receiver_->start();
  EXPECT_TRUE(gone_.wait());
}

TEST_F(Receivers, SayWhetherTheirSinkHasAnswered) {
  settings_.isChannel = true;
  script_.connects = {kUnavailable};
  make();
  EXPECT_FALSE(receiver_->hasAnswered());
  receiver_->start();
  EXPECT_TRUE(eventually([this] { return receiver_->hasAnswered(); }));
  EXPECT_EQ((Texts{"connect", "connect", "disconnect"}), calls());
}

TEST_F(Receivers, HaveNotAnsweredBeforeTheirSinkHas) {
  script_.connects = {kFatal};
  start();
  EXPECT_TRUE(gone_.wait());
  EXPECT_FALSE(receiver_->hasAnswered());
}

TEST_F(Receivers, AreDroppedWhenTheirSinkIsGone) {
  script_.pushes = {kDone, kFatal};
  make();
  offer(1, 3);
  testing::internal::CaptureStderr();
  receiver_->start();
  EXPECT_TRUE(gone_.wait());
  EXPECT_TRUE(sendsAll());  // nothing is waited for any more
  EXPECT_EQ((Texts{"connect", "1", "2"}), calls());
  EXPECT_TRUE(receiver_->ended());
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find(
                "subscriber host:1 is dropped: it has gone, 2 notifications not sent"));
  EXPECT_EQ(up(Queued{1}, Sent{1}, Lost{0}), status());
  offer(4, 4);
  EXPECT_EQ(up(Queued{1}, Sent{1}, Lost{0}), status());
}

TEST_F(Receivers, LookForASilentSink) {
  settings_.idleCheck = std::chrono::milliseconds(1);
  script_.checks = {kDone, kDone, kFatal};
  start();
  EXPECT_TRUE(gone_.wait());
  EXPECT_EQ((Texts{"connect", "check", "check", "check"}), calls());
}

TEST_F(Receivers, ConnectAgainWhenASilentSinkDoesNotAnswer) {
  settings_.isChannel = true;
  settings_.idleCheck = std::chrono::milliseconds(1);
  script_.checks = {kUnavailable};
  start();
  Texts calls = script_.record.waitFor(4);
  calls.resize(4);
  EXPECT_EQ((Texts{"connect", "check", "connect", "check"}), calls);
}

TEST_F(Receivers, SayOnceThatAChannelIsDownAndOnceThatItIsBack) {
  settings_.isChannel = true;
  script_.connects = {kUnavailable, kUnavailable, kUnavailable};
  testing::internal::CaptureStderr();
  start();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{0}, Lost{0}); }));
  calls();
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string down =
      "event channel host:1 does not accept notifications, which stay queued: no answer";
  EXPECT_NE(std::string::npos, log.find(down));
  EXPECT_EQ(log.find(down), log.rfind(down));
  EXPECT_NE(std::string::npos, log.find("event channel host:1 answers again"));
}

TEST_F(Receivers, AreNotBackBeforeAPushIsTaken) {
  settings_.isChannel = true;
  const auto gate = holdBack("1");
  make();
  offer(1, 1);
  receiver_->start();
  script_.record.waitFor(2);
  EXPECT_EQ(down(Queued{1}, Sent{0}, Lost{0}), status());
  gate->open();
  EXPECT_TRUE(eventually([this] { return status() == up(Queued{0}, Sent{1}, Lost{0}); }));
}

TEST_F(Receivers, DoubleThePauseBetweenTwoTriesUpToTheLongest) {
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

TEST_F(Receivers, SayThatAChannelIsConnectedAndNothingOfASubscriber) {
  agent::setLogLevel(agent::kLogEvents);
  testing::internal::CaptureStderr();
  for (const bool isChannel : {true, false}) {
    settings_.isChannel = isChannel;
    start();
    offer(1, 3);
    EXPECT_TRUE(sendsAll());
    calls();
  }
  agent::setLogLevel(agent::kLogErrors);
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string line = "event channel host:1 is connected";
  EXPECT_NE(std::string::npos, log.find(line));
  EXPECT_EQ(log.find(line), log.rfind(line));
  EXPECT_EQ(std::string::npos, log.find("subscriber"));
}

TEST_F(Receivers, StopAtOnceBetweenTwoTries) {
  settings_.isChannel = true;
  settings_.firstBackOff = settings_.longestBackOff = kNever;
  script_.connects = {kUnavailable};
  start();
  offer(1, 1);
  EXPECT_FALSE(sendsAll());
  EXPECT_EQ((Texts{"connect"}), calls());
}

TEST_F(Receivers, SendNothingMoreAfterAStop) {
  const auto gate = holdBack("1");
  start();
  offer(1, 3);
  script_.record.waitFor(2);
  receiver_->stop();
  offer(4, 4);
  EXPECT_TRUE(receiver_->waitUntilDrained(std::chrono::steady_clock::now()));
  gate->open();
  EXPECT_EQ((Texts{"connect", "1", "disconnect"}), calls());
}

TEST_F(Receivers, LetWhoWaitsForThemGoOnAfterAStop) {
  const auto gate = holdBack("1");
  start();
  offer(1, 1);
  script_.record.waitFor(2);
  std::future<bool> sent = std::async(std::launch::async, [this] { return sendsAll(); });
  EXPECT_TRUE(eventually([this] { return waits_.present() == 1; }));
  receiver_->stop();
  EXPECT_EQ(std::future_status::ready, sent.wait_for(kPatience / 2));
  gate->open();
  EXPECT_TRUE(sent.get());
}

TEST_F(Receivers, HaveNotEndedBeforeTheirCallHas) {
  const auto gate = holdBack("1");
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

TEST_F(Receivers, AreNotDroppedWhenTheyStopBefore) {
  const auto gate = holdBack("1");
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

TEST_F(Receivers, MayEndWithoutAStart) {
  make();
  EXPECT_TRUE(receiver_->ended());
  offer(1, 1);
}

TEST_F(Receivers, SayWhenTheTimeIsOver) {
  const auto gate = holdBack("1");
  start();
  offer(1, 1);
  EXPECT_FALSE(receiver_->waitUntilDrained(std::chrono::steady_clock::now()));
  gate->open();
  EXPECT_TRUE(sendsAll());
}

}  // namespace
