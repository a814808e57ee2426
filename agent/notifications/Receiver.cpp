#include "agent/notifications/Receiver.h"

#include <algorithm>
#include <utility>

namespace agent {
namespace {

// After so many rejections by a channel, an event is discarded and no longer blocks the queue.
constexpr int kMaxRejections = 5;

bool isNotification(const std::optional<Delivery>& delivery) {
  return delivery && std::holds_alternative<Notification>(*delivery);
}

}  // namespace

Receiver::Receiver(std::unique_ptr<NotificationSink> sink, Settings settings, OnDropped onDropped)
    : settings_(std::move(settings)),
      onDropped_(std::move(onDropped)),
      sink_(std::move(sink)),
      backOff_(settings_.firstBackOff),
      queue_(settings_.queue) {}

Receiver::~Receiver() {
  stop();
  join();
}

void Receiver::start() {
  ended_.store(false);
  try {
    thread_ = std::thread([this] { run(); });
  } catch (...) {
    ended_.store(true);
    throw;
  }
}

void Receiver::offer(const Notification& notification) {
  bool overflowBegins = false;
  {
    const MutexLock lock(mutex_);
    if (stopping_.load()) {
      return;
    }
    const std::uint64_t before = queue_.evicted();
    queue_.push(notification);
    overflowBegins = queue_.evicted() != before && !std::exchange(overflowing_, true);
    workArrived_.notify_one();
  }
  if (overflowBegins) {
    logLine(kLogErrors, [] {
      return std::string(" does not keep up: its queue is full, its oldest notifications are lost");
    });
  }
}

void Receiver::reportGap(const Gap& gap) {
  queueGap(gap, gap.count);
}

void Receiver::beginWithGap(const Gap& gap) {
  queueGap(gap, 0);
}

void Receiver::queueGap(const Gap& gap, std::uint64_t lost) {
  const MutexLock lock(mutex_);
  if (!stopping_.load()) {
    discarded_ += lost;
    queue_.reportGap(gap);
    workArrived_.notify_one();
  }
}

void Receiver::stop() {
  {
    const MutexLock lock(mutex_);
    stopping_.store(true);
    queue_.clear();
  }
  workArrived_.notify_one();
  drained_.notify_all();
}

void Receiver::join() {
  if (thread_.joinable()) {
    thread_.join();
  }
}

bool Receiver::waitFor(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                       std::chrono::milliseconds longest, const std::function<bool()>& condition) {
  return changed.wait_for(lock, longest, condition);
}

void Receiver::run() {
  while (runOnceGuarded()) {
  }
  if (connected_) {
    attempt(CallOutcome::kFatal, [this] {
      sink_->disconnect();
      return CallOutcome{};
    });
  }
  ended_.store(true);
}

// Only a lack of memory explains an exception here. The thread of a channel and the process
// survive the exception.
bool Receiver::runOnceGuarded() noexcept {
  try {
    return runOnce();
  } catch (const std::exception& failure) {
    return recoverFrom(failure.what());
  } catch (...) {
    return recoverFrom("unknown exception");
  }
}

bool Receiver::recoverFrom(const char* reason) {
  if (!settings_.isChannel) {
    drop(reason);
    return false;
  }
  connected_ = false;
  exchangeLink(Link::kDown);
  return backOff();
}

bool Receiver::runOnce() {
  if (!connected_) {
    return connect();
  }
  switch (waitForWork()) {
    case Work::kDeliver:
      return deliverCurrent();
    case Work::kCheck:
      return continueAfter(
          attempt(CallOutcome::kUnavailable, [this] { return sink_->check(stopping_); }));
    case Work::kStop:
      break;
  }
  return false;
}

bool Receiver::connect() {
  const CallOutcome outcome =
      attempt(CallOutcome::kUnavailable, [this] { return sink_->connect(stopping_); });
  connected_ = outcome.kind == CallOutcome::kDone;
  if (connected_) {
    answered_.store(true);
  }
  // With queued events the first push decides whether the link is up.
  if (connected_ && isDrained()) {
    markUp();
  }
  return continueAfter(outcome);
}

Receiver::Work Receiver::waitForWork() {
  MutexLock lock(mutex_);
  settings_.wait(workArrived_, lock.native(), settings_.idleCheck, [this]() REQUIRES(mutex_) {
    return stopping_.load() || current_ || !queue_.empty();
  });
  if (stopping_.load()) {
    return Work::kStop;
  }
  if (!current_) {
    current_ = queue_.take();
  }
  return current_ ? Work::kDeliver : Work::kCheck;
}

bool Receiver::deliverCurrent() {
  const CallOutcome outcome = attempt(CallOutcome::kRejected, [this] { return pushCurrent(); });
  if (outcome.kind == CallOutcome::kDone) {
    backOff_ = settings_.firstBackOff;
    rejections_ = 0;
    completeCurrent();
    markUp();
    return true;
  }
  if (outcome.kind == CallOutcome::kRejected && ++rejections_ == kMaxRejections) {
    rejections_ = 0;
    discardCurrent(outcome.reason);
  }
  requeueCurrentGap();
  return continueAfter(outcome);
}

CallOutcome Receiver::pushCurrent() {
  const Delivery delivery = current();
  if (const auto* const gap = std::get_if<Gap>(&delivery)) {
    const auto event = gapReport(*gap, settings_.clock());
    return sink_->push(*event, stopping_);
  }
  return sink_->push(*std::get<Notification>(delivery).event, stopping_);
}

// REQUIRES: called by the receiver's thread between waitForWork and completeCurrent.
Delivery Receiver::current() {
  const MutexLock lock(mutex_);
  return *current_;
}

// Makes a call and translates an exception, such as std::bad_alloc, into an outcome: kFatal for a
// subscriber, because its client can subscribe again, and ofChannel for a channel.
template <typename Call>
CallOutcome Receiver::attempt(CallOutcome::Kind ofChannel, Call call) {
  const CallOutcome::Kind kind = settings_.isChannel ? ofChannel : CallOutcome::kFatal;
  try {
    return call();
  } catch (const std::exception& failure) {
    return {kind, failure.what()};
  } catch (const CORBA::Exception& failure) {
    return {kind, failure._name()};
  } catch (...) {
    return {kind, "unknown exception"};
  }
}

void Receiver::completeCurrent() {
  const MutexLock lock(mutex_);
  if (isNotification(current_)) {
    ++delivered_;
  }
  current_.reset();
  if (isDrainedLocked()) {
    overflowing_ = false;
    drained_.notify_all();
  }
}

// Replaces a rejected notification by a gap. A rejected gap report is discarded and only logged.
void Receiver::discardCurrent(const std::string& reason) {
  const Delivery rejected = current();
  if (!isNotification(rejected)) {
    logLine(kLogErrors, [&] { return " rejects a gap report, which is discarded: " + reason; });
    const MutexLock lock(mutex_);
    current_.reset();
    return;
  }
  const std::uint64_t id = std::get<Notification>(rejected).id;
  logLine(kLogErrors, [&] {
    return " rejects notification " + std::to_string(id) + ", which is discarded: " + reason;
  });
  const MutexLock lock(mutex_);
  current_ = Gap{id, id, 1};
  ++discarded_;
}

// An undelivered gap returns to the queue, where it grows with later evictions.
void Receiver::requeueCurrentGap() {
  const MutexLock lock(mutex_);
  if (!current_ || isNotification(current_)) {
    return;
  }
  if (!stopping_.load()) {
    queue_.returnGap(std::get<Gap>(*current_));
  }
  current_.reset();
}

bool Receiver::continueAfter(const CallOutcome& outcome) {
  connected_ = outcome.kind == CallOutcome::kDone;
  if (connected_ || stopping_.load()) {
    return connected_;
  }
  if (outcome.kind == CallOutcome::kFatal) {
    drop(outcome.reason.c_str());
    return false;
  }
  markDown(outcome.reason);
  return backOff();
}

bool Receiver::backOff() {
  MutexLock lock(mutex_);
  const auto pause = std::exchange(backOff_, std::min(2 * backOff_, settings_.longestBackOff));
  return !settings_.wait(workArrived_, lock.native(), pause, [this] { return stopping_.load(); });
}

void Receiver::drop(const char* reason) {
  std::uint64_t undelivered = 0;
  {
    const MutexLock lock(mutex_);
    undelivered = undeliveredLocked();
  }
  logLine(kLogErrors, [&] {
    return std::string(" is dropped: ") + reason + ", " + std::to_string(undelivered) +
           " notifications not sent";
  });
  exchangeLink(Link::kDown);
  stop();
  if (onDropped_) {
    onDropped_();
  }
}

void Receiver::markUp() {
  const Link before = exchangeLink(Link::kUp);
  if (settings_.isChannel && before != Link::kUp) {
    const bool isBack = before == Link::kDown;
    logLine(kLogEvents, [&] { return std::string(isBack ? " answers again" : " is connected"); });
  }
}

void Receiver::markDown(const std::string& reason) {
  if (exchangeLink(Link::kDown) != Link::kDown) {
    logLine(kLogErrors,
            [&] { return " does not accept notifications, which stay queued: " + reason; });
  }
}

Receiver::Link Receiver::exchangeLink(Link link) {
  const MutexLock lock(mutex_);
  if (link == Link::kDown) {
    drained_.notify_all();
  }
  return std::exchange(link_, link);
}

// Logs a line that begins with the receiver's name. Drops the line when memory is short.
template <typename Text>
void Receiver::logLine(int level, Text text) const noexcept {
  try {
    const char* const kind = settings_.isChannel ? "event channel " : "subscriber ";
    settings_.log(level, kind + settings_.name + text());
  } catch (...) {
    // Without the line, the thread continues.
  }
}

bool Receiver::isDrained() {
  const MutexLock lock(mutex_);
  return isDrainedLocked();
}

bool Receiver::isDrainedLocked() const {
  return !current_ && queue_.empty();
}

std::uint64_t Receiver::undeliveredLocked() const {
  return queue_.size() + (isNotification(current_) ? 1 : 0);
}

Receiver::Load Receiver::load() {
  const MutexLock lock(mutex_);
  return {!settings_.isChannel || link_ == Link::kUp, undeliveredLocked(), queue_.bytes(),
          delivered_, queue_.evicted() + discarded_};
}

TopoAgent::ReceiverStatus_T Receiver::status() {
  const Load present = load();
  TopoAgent::ReceiverStatus_T status;
  status.receiver = CORBA::string_dup(settings_.name.c_str());
  status.isChannel = settings_.isChannel;
  status.isConnected = present.isConnected;
  status.queued = static_cast<CORBA::ULong>(present.queued);
  status.sent = present.sent;
  status.lost = present.lost;
  return status;
}

bool Receiver::waitUntilDrained(std::chrono::steady_clock::time_point deadline) {
  using std::chrono::milliseconds;
  MutexLock lock(mutex_);
  const auto longest = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
  settings_.wait(drained_, lock.native(), longest, [this]() REQUIRES(mutex_) {
    return stopping_.load() || link_ == Link::kDown || isDrainedLocked();
  });
  return stopping_.load() || isDrainedLocked();
}

}  // namespace agent
