#include "channel.h"

#include <cerrno>
#include <new>
#include <utility>

namespace orb {

int Channel::read(char* to, std::size_t count,
                  std::optional<std::chrono::system_clock::time_point> deadline) {
  MutexLock lock(mutex_);
  reader_ = std::this_thread::get_id();
  for (;;) {
    if (shutDown_) {
      return -1;
    }
    const std::size_t taken = current_ ? current_->bytes.take(to, count) : 0;
    if (taken > 0) {
      return static_cast<int>(taken);
    }
    if (assembler_.isComplete()) {
      current_ = assembler_.release();
      refused_ = current_->refused.has_value();
      continue;
    }
    current_.reset();
    if (ended_) {
      return -1;
    }
    if (!deadline) {
      changed_.wait(lock.native());
    } else if (changed_.wait_until(lock.native(), *deadline) == std::cv_status::timeout) {
      return 0;
    }
  }
}

bool Channel::isRefused() const {
  const MutexLock lock(mutex_);
  return refused_;
}

void Channel::setSelectable() {
  const MutexLock lock(mutex_);
  reader_ = std::thread::id();
  if (selectable_) {
    return;
  }
  selectable_ = true;
  if (isReady() || hasReceived()) {
    watcher_.attend(id_);
  } else {
    watcher_.watch(id_, socket());
  }
}

bool Channel::isReading() const {
  const MutexLock lock(mutex_);
  return reader_ == std::this_thread::get_id();
}

void Channel::leave() {
  const MutexLock lock(mutex_);
  if (reader_ == std::this_thread::get_id()) {
    reader_ = std::thread::id();
    selectable_ = true;
    shutDownLocked();
  }
}

void Channel::clearSelectable() {
  MutexLock lock(mutex_);
  selectable_ = false;
  changed_.wait(lock.native(), [this]() REQUIRES(mutex_) { return !notifying_; });
}

bool Channel::isSelectable() const {
  const MutexLock lock(mutex_);
  return selectable_;
}

void Channel::shutDown() {
  const MutexLock lock(mutex_);
  shutDownLocked();
}

void Channel::shutDownLocked() {
  shutDown_ = true;
  stream_->shutDown();
  changed_.notify_all();
  if (selectable_) {
    watcher_.attend(id_);
  }
}

Channel::State Channel::attend(char* scratch, std::size_t scratchBytes, Time now) {
  const MutexLock lock(mutex_);
  if (!selectable_) {
    return State::kWaiting;
  }
  bool starved = false;
  if (!isReady()) {
    try {
      receive(scratch, scratchBytes, now, starved);
    } catch (const std::bad_alloc&) {
      ended_ = true;  // received bytes of a request are lost
    }
  }
  if (isReady()) {
    selectable_ = false;
    notifying_ = true;
    changed_.notify_all();
    return State::kReady;
  }
  if (starved) {
    return State::kStarved;
  }
  if (hasReceived()) {
    watcher_.attend(id_);
  } else {
    watcher_.watch(id_, socket());
  }
  return State::kWaiting;
}

void Channel::finishNotification() {
  endNotification(true);
}

void Channel::cancelNotification() {
  endNotification(false);
}

void Channel::endNotification(bool isTaken) {
  const MutexLock lock(mutex_);
  notifying_ = false;
  selectable_ = selectable_ || !isTaken;
  changed_.notify_all();
}

std::optional<Channel::RefusedRequest> Channel::refusedRequest() const {
  const MutexLock lock(mutex_);
  const Assembler::Request* const request = assembler_.complete();
  if (request == nullptr || !request->refused) {
    return std::nullopt;
  }
  return RefusedRequest{request->refused->operation, request->declaredBytes};
}

std::optional<Channel::Time> Channel::incompleteSince() const {
  const MutexLock lock(mutex_);
  return selectable_ ? assembler_.incompleteSince() : std::nullopt;
}

// Assembles the rest of the previous call first.
void Channel::receive(char* scratch, std::size_t scratchBytes, Time now, bool& starved) {
  const std::string rest = std::exchange(rest_, {});
  Assembler::Progress taken = assemble(rest.data(), rest.size(), now);
  if (!isReady() && !taken.starved) {
    const ssize_t count = stream_->receive(scratch, scratchBytes);
    if (count > 0) {
      taken = assemble(scratch, static_cast<std::size_t>(count), now);
    } else {
      ended_ = count == 0 || (errno != EAGAIN && errno != EINTR);
    }
  }
  starved = taken.starved;
}

Assembler::Progress Channel::assemble(const char* bytes, std::size_t count, Time now) {
  const Assembler::Progress taken = assembler_.take(bytes, count, now);
  rest_.assign(bytes + taken.bytes, count - taken.bytes);
  ended_ = ended_ || !taken.valid;
  return taken;
}

}  // namespace orb
