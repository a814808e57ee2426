#include "limitlog.h"

#include <algorithm>
#include <new>
#include <utility>

namespace orb {
namespace {

constexpr std::size_t kMaxLoggedName = 64;  // of an operation, which clients choose freely

// The text after the number of refusals, for each Kind.
constexpr std::array kSummaries = {
    " connections were refused", " requests were refused for their size",
    " connections were closed because of incomplete requests", " TLS handshakes failed"};

}  // namespace

LimitLog::LimitLog(LogFunction log) : log_(std::move(log)) {}

template <typename MakeLine>
void LimitLog::add(Kind kind, Time now, MakeLine makeLine) {
  bool begins = false;
  {
    const MutexLock lock(mutex_);
    begins = episodes_[kind].add(now);
  }
  if (!begins || !log_) {
    return;
  }
  try {
    log_(makeLine());
  } catch (const std::bad_alloc&) {
    // Continues: the line at the end of the episode reports the number.
  }
}

void LimitLog::tooManyConnections(std::size_t limit, Time now) {
  add(kConnections, now, [limit] {
    return "connections are refused: " + std::to_string(limit) +
           " connections, the limit, are open";
  });
}

void LimitLog::outOfDescriptors(std::size_t open, Time now) {
  add(kConnections, now, [open] {
    return "connections are refused: no file descriptor is left, " + std::to_string(open) +
           " connections are open";
  });
}

void LimitLog::outOfMemory(Time now) {
  add(kConnections, now, [] { return std::string("connections are refused: no memory is left"); });
}

void LimitLog::requestTooLarge(const std::string& operation, std::size_t bytes,
                               const std::string& peer, Time now) {
  add(kRequests, now, [&] {
    return "a request of " + operation.substr(0, kMaxLoggedName) + ", " + std::to_string(bytes) +
           " bytes from " + peer + ", was refused for its size";
  });
}

void LimitLog::requestIncomplete(Time now) {
  add(kIncomplete, now,
      [] { return std::string("a connection was closed: its request was not complete in time"); });
}

void LimitLog::handshakeFailed(const std::string& peer, const std::string& reason, Time now) {
  add(kHandshakes, now, [&] { return "the TLS handshake of " + peer + " failed: " + reason; });
}

void LimitLog::endEpisodes(Time now) {
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    std::optional<std::size_t> count;
    {
      const MutexLock lock(mutex_);
      count = episodes_[kind].finish(now);
    }
    if (count && log_) {
      log_(std::to_string(*count) + kSummaries[kind]);
    }
  }
}

std::optional<LimitLog::Time> LimitLog::nextEnd() const {
  const MutexLock lock(mutex_);
  std::optional<Time> next;
  for (const Episode& episode : episodes_) {
    if (const std::optional<Time> end = episode.end()) {
      next = next ? std::min(*next, *end) : end;
    }
  }
  return next;
}

}  // namespace orb
