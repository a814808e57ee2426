#include "agent/notifications/Receiver.h"

#include <algorithm>
#include <utility>

namespace agent {
namespace {

// A channel that answers but refuses the same notification so often would stand still for ever.
constexpr int kMostRefusals = 5;

bool isNotification(const std::optional<Delivery>& delivery) {
  return delivery && std::holds_alternative<Notification>(*delivery);
}

}  // namespace

Receiver::Receiver(std::unique_ptr<Sink> sink, Settings settings, OnGone onGone)
    : settings_(std::move(settings)),
      onGone_(std::move(onGone)),
      sink_(std::move(sink)),
      pause_(settings_.firstBackOff),
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
  bool begins = false;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (stopping_.load()) {
      return;
    }
    const std::uint64_t before = queue_.overflowed();
    queue_.push(notification);
    begins = queue_.overflowed() != before && !std::exchange(overflowing_, true);
    wake_.notify_one();
  }
  if (begins) {
    say(kLogErrors, [] {
      return std::string(" does not keep up: its queue is full, its oldest notifications are lost");
    });
  }
}

void Receiver::offerLost(const LostEvents& lost) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!stopping_.load()) {
    queue_.pushLost(lost);
    wake_.notify_one();
  }
}

void Receiver::miss(std::uint64_t id) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++notSent_;
  }
  offerLost({id, id, 1});
}

void Receiver::stop() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stopping_.store(true);
    queue_.clear();
  }
  wake_.notify_one();
  sent_.notify_all();
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
  while (safeStep()) {
  }
  if (connected_) {
    attempt(CallOutcome::kGone, [this] {
      sink_->disconnect();
      return CallOutcome{};
    });
  }
  ended_.store(true);
}

// An exception, which only a lack of memory explains, ends neither the thread of a channel nor the
// process.
bool Receiver::safeStep() noexcept {
  try {
    return step();
  } catch (const std::exception& failure) {
    return breakDown(failure.what());
  } catch (...) {
    return breakDown("unknown exception");
  }
}

bool Receiver::breakDown(const char* why) {
  if (!settings_.isChannel) {
    gone(why);
    return false;
  }
  connected_ = false;
  changeLink(Link::kDown);
  return backOff();
}

// False when the thread is to end.
bool Receiver::step() {
  if (!connected_) {
    return connect();
  }
  switch (waitForWork()) {
    case Work::kSend:
      return send();
    case Work::kCheck:
      return go(attempt(CallOutcome::kUnavailable, [this] { return sink_->check(stopping_); }));
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
  if (connected_ && nothingWaits()) {
    setUp();  // otherwise the first push tells
  }
  return go(outcome);
}

Receiver::Work Receiver::waitForWork() {
  std::unique_lock<std::mutex> lock(mutex_);
  settings_.wait(wake_, lock, settings_.idleCheck,
                 [this] { return stopping_.load() || hand_ || !queue_.empty(); });
  if (stopping_.load()) {
    return Work::kStop;
  }
  if (!hand_) {
    hand_ = queue_.take();
  }
  return hand_ ? Work::kSend : Work::kCheck;
}

bool Receiver::send() {
  return sent(attempt(CallOutcome::kRefused, [this] { return pushHand(); }));
}

// What is in hand changes on this thread alone.
CallOutcome Receiver::pushHand() {
  if (const auto* const lost = std::get_if<LostEvents>(&*hand_)) {
    const auto event = eventsLost(*lost, settings_.clock());
    return sink_->push(*event, stopping_);
  }
  return sink_->push(*std::get<Notification>(*hand_).event, stopping_);
}

// An exception of a channel's sink, as when memory is short, passes as one outcome or the other; a
// subscriber is gone then, and will subscribe again.
template <typename Call>
CallOutcome Receiver::attempt(CallOutcome::Kind ofChannel, Call call) {
  const CallOutcome::Kind kind = settings_.isChannel ? ofChannel : CallOutcome::kGone;
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

bool Receiver::sent(const CallOutcome& outcome) {
  if (outcome.kind == CallOutcome::kDone) {
    pause_ = settings_.firstBackOff;
    refusals_ = 0;
    emptyHand();
    setUp();
    return true;
  }
  if (outcome.kind == CallOutcome::kRefused && ++refusals_ == kMostRefusals) {
    refusals_ = 0;
    giveUpHand(outcome.why);
  }
  returnLost();
  return go(outcome);
}

void Receiver::emptyHand() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (isNotification(hand_)) {
    ++sentCount_;
  }
  hand_.reset();
  if (nothingWaitsLocked()) {
    overflowing_ = false;
    sent_.notify_all();
  }
}

// What is in hand is lost, so that what is behind it is not.
void Receiver::giveUpHand(const std::string& why) {
  if (!isNotification(hand_)) {
    say(kLogErrors, [&] { return " refuses word of lost notifications, it is left out: " + why; });
    const std::lock_guard<std::mutex> lock(mutex_);
    hand_.reset();
    return;
  }
  const std::uint64_t id = std::get<Notification>(*hand_).id;
  say(kLogErrors,
      [&] { return " refuses notification " + std::to_string(id) + ", it is left out: " + why; });
  const std::lock_guard<std::mutex> lock(mutex_);
  hand_ = LostEvents{id, id, 1};
  ++notSent_;
}

// Word of lost ones grows while it cannot be sent.
void Receiver::returnLost() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!hand_) {
    return;
  }
  if (const auto* const lost = std::get_if<LostEvents>(&*hand_)) {
    if (!stopping_.load()) {
      queue_.giveBack(*lost);
    }
    hand_.reset();
  }
}

// Goes on after a call; false when the thread is to end.
bool Receiver::go(const CallOutcome& outcome) {
  connected_ = outcome.kind == CallOutcome::kDone;
  if (connected_ || stopping_.load()) {
    return connected_;
  }
  if (outcome.kind == CallOutcome::kGone) {
    gone(outcome.why.c_str());
    return false;
  }
  setDown(outcome.why);
  return backOff();
}

bool Receiver::backOff() {
  std::unique_lock<std::mutex> lock(mutex_);
  const auto pause = std::exchange(pause_, std::min(2 * pause_, settings_.longestBackOff));
  return !settings_.wait(wake_, lock, pause, [this] { return stopping_.load(); });
}

void Receiver::gone(const char* why) {
  std::uint64_t unsent = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    unsent = waitingLocked();
  }
  say(kLogErrors, [&] {
    return std::string(" is dropped: ") + why + ", " + std::to_string(unsent) +
           " notifications not sent";
  });
  changeLink(Link::kDown);
  stop();
  if (onGone_) {
    onGone_();
  }
}

void Receiver::setUp() {
  const Link before = changeLink(Link::kUp);
  if (settings_.isChannel && before != Link::kUp) {
    const bool back = before == Link::kDown;
    say(back ? kLogErrors : kLogEvents,
        [&] { return std::string(back ? " answers again" : " is connected"); });
  }
}

void Receiver::setDown(const std::string& why) {
  if (changeLink(Link::kDown) != Link::kDown) {
    say(kLogErrors, [&] { return " does not take notifications, they wait: " + why; });
  }
}

Receiver::Link Receiver::changeLink(Link link) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (link == Link::kDown) {
    sent_.notify_all();
  }
  return std::exchange(link_, link);
}

std::string Receiver::who() const {
  return (settings_.isChannel ? "event channel " : "subscriber ") + settings_.name;
}

// Logs a line about this receiver, or nothing when memory is short.
template <typename Text>
void Receiver::say(int level, Text text) const noexcept {
  try {
    settings_.log(level, who() + text());
  } catch (...) {
    // The line matters less than the thread that logs it.
  }
}

bool Receiver::nothingWaits() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return nothingWaitsLocked();
}

bool Receiver::nothingWaitsLocked() const {
  return !hand_ && queue_.empty();
}

std::uint64_t Receiver::waitingLocked() const {
  return queue_.size() + (isNotification(hand_) ? 1 : 0);
}

TopoAgent::ReceiverStatus_T Receiver::status() {
  TopoAgent::ReceiverStatus_T status;
  status.receiver = CORBA::string_dup(settings_.name.c_str());
  status.isChannel = settings_.isChannel;
  const std::lock_guard<std::mutex> lock(mutex_);
  status.isConnected = !settings_.isChannel || link_ == Link::kUp;
  status.queued = static_cast<CORBA::ULong>(waitingLocked());
  status.sent = sentCount_;
  status.lost = queue_.overflowed() + notSent_;
  return status;
}

bool Receiver::waitUntilSent(std::chrono::steady_clock::time_point end) {
  using std::chrono::milliseconds;
  std::unique_lock<std::mutex> lock(mutex_);
  const auto longest = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
  settings_.wait(sent_, lock, longest, [this] {
    return stopping_.load() || link_ == Link::kDown || nothingWaitsLocked();
  });
  return stopping_.load() || nothingWaitsLocked();
}

}  // namespace agent
