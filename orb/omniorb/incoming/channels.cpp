#include "channels.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

namespace orb {
namespace {

// Ids of the descriptors that are not connections.
constexpr Watcher::Id kListening = 0;
constexpr Watcher::Id kWakeUp = 1;

int checked(int descriptor) {
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot watch connections");
  }
  return descriptor;
}

}  // namespace

Channels::Channels(std::shared_ptr<ServerState> state, int listeningSocket)
    : state_(std::move(state)),
      listeningSocket_(listeningSocket),
      epoll_(checked(::epoll_create1(EPOLL_CLOEXEC))),
      wakeUp_(checked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))),
      lastId_(kWakeUp) {
  control(EPOLL_CTL_ADD, listeningSocket_, EPOLLIN, kListening);
  control(EPOLL_CTL_ADD, wakeUp_, EPOLLIN, kWakeUp);
}

Channels::~Channels() {
  ::close(wakeUp_);
  ::close(epoll_);
}

void Channels::watch(Id id, int socket) {
  control(EPOLL_CTL_MOD, socket, EPOLLIN | EPOLLRDHUP | EPOLLONESHOT, id);
}

void Channels::attend(Id id) {
  {
    const MutexLock lock(mutex_);
    try {
      toAttend_.push_back(id);
    } catch (const std::bad_alloc&) {
      attendAll_ = true;
    }
  }
  wake();
}

void Channels::wake() const {
  const std::uint64_t once = 1;
  // write() fails only for a counter at its maximum, and then the descriptor is readable anyway.
  static_cast<void>(!::write(wakeUp_, &once, sizeof once));
}

std::pair<Watcher::Id, std::shared_ptr<Channel>> Channels::add(std::unique_ptr<Stream> stream,
                                                               Channel::Time now) {
  const int socket = stream->socket();
  const MutexLock lock(mutex_);
  const Id id = ++lastId_;
  Entry& entry = entries_[id];
  entry.accepted = now;
  try {
    entry.channel = std::make_shared<Channel>(id, std::move(stream), *this, state_->limits.requests,
                                              state_->budget);
  } catch (...) {
    entries_.erase(id);
    throw;
  }
  control(EPOLL_CTL_ADD, socket, EPOLLONESHOT, id);
  ++state_->connections;
  return {id, entry.channel};
}

void Channels::connect(Id id, omni::giopConnection* connection) {
  const MutexLock lock(mutex_);
  entries_[id].connection = connection;
}

void Channels::remove(Id id) {
  const MutexLock lock(mutex_);
  state_->connections -= entries_.erase(id);
}

Channels::Entry Channels::find(Id id) const {
  const MutexLock lock(mutex_);
  const auto found = entries_.find(id);
  return found == entries_.end() ? Entry() : found->second;
}

std::vector<std::pair<Watcher::Id, Channels::Entry>> Channels::all() const {
  const MutexLock lock(mutex_);
  return {entries_.begin(), entries_.end()};
}

void Channels::listen(bool on) {
  control(EPOLL_CTL_MOD, listeningSocket_, on ? unsigned{EPOLLIN} : 0U, kListening);
}

Channels::Events Channels::wait(int milliseconds) {
  Events events;
  std::array<epoll_event, std::tuple_size<decltype(events.readable)>::value> reported{};
  const int count =
      ::epoll_wait(epoll_, reported.data(), static_cast<int>(reported.size()), milliseconds);
  for (int i = 0; i < count; ++i) {
    const Id id = reported[static_cast<std::size_t>(i)].data.u64;
    if (id == kListening) {
      events.incoming = true;
    } else if (id == kWakeUp) {
      std::uint64_t wakes = 0;
      static_cast<void>(!::read(wakeUp_, &wakes, sizeof wakes));
    } else {
      events.readable[events.readableCount++] = id;
    }
  }
  const MutexLock lock(mutex_);
  if (attendAll_) {
    addAll();
  }
  events.toAttend.swap(toAttend_);
  return events;
}

// Adds every channel to toAttend_. When memory is short, the next call of wait() tries again.
void Channels::addAll() {
  try {
    for (const auto& [id, entry] : entries_) {
      toAttend_.push_back(id);
    }
    attendAll_ = false;
  } catch (const std::bad_alloc&) {
    wake();
  }
}

void Channels::control(int operation, int socket, unsigned events, Id id) const {
  epoll_event event{};
  event.events = events;
  event.data.u64 = id;
  // Fails for an unwatched socket and, on ADD, for lack of memory; the channel is then not watched.
  static_cast<void>(::epoll_ctl(epoll_, operation, socket, &event));
}

}  // namespace orb
