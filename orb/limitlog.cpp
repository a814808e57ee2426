#include "limitlog.h"

#include <algorithm>
#include <new>
#include <utility>

namespace orb {
namespace {

constexpr std::size_t kMaxLoggedName = 64;  // of an operation, which clients choose freely

}  // namespace

LimitLog::LimitLog(LogFunction log) : log_(std::move(log)) {}

template <typename MakeLine>
void LimitLog::add(Kind& kind, Time now, MakeLine makeLine) {
  bool begins = false;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    begins = kind.episode.add(now);
  }
  if (!begins || !log_) {
    return;
  }
  try {
    log_(makeLine());
  } catch (const std::bad_alloc&) {
    // The line about the end of the episode follows.
  }
}

void LimitLog::tooManyConnections(std::size_t limit, Time now) {
  add(connections_, now, [limit] {
    return "connections are refused: " + std::to_string(limit) +
           " connections, the limit, are open";
  });
}

void LimitLog::outOfDescriptors(std::size_t open, Time now) {
  add(connections_, now, [open] {
    return "connections are refused: no file descriptor is left, " + std::to_string(open) +
           " connections are open";
  });
}

void LimitLog::outOfMemory(Time now) {
  add(connections_, now, [] { return std::string("connections are refused: no memory is left"); });
}

void LimitLog::requestTooLarge(const std::string& operation, std::size_t bytes,
                               const std::string& peer, Time now) {
  add(requests_, now, [&] {
    return "a request of " + operation.substr(0, kMaxLoggedName) + ", " + std::to_string(bytes) +
           " bytes from " + peer + ", was refused for its size";
  });
}

void LimitLog::requestIncomplete(Time now) {
  add(incomplete_, now,
      [] { return std::string("a connection was closed: its request was not complete in time"); });
}

void LimitLog::endEpisodes(Time now) {
  for (Kind* const kind : {&connections_, &requests_, &incomplete_}) {
    std::optional<std::size_t> count;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      count = kind->episode.finish(now);
    }
    if (count && log_) {
      log_(std::to_string(*count) + kind->summary);
    }
  }
}

std::optional<LimitLog::Time> LimitLog::nextEnd() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::optional<Time> next;
  for (const Kind* const kind : {&connections_, &requests_, &incomplete_}) {
    if (const std::optional<Time> end = kind->episode.end()) {
      next = next ? std::min(*next, *end) : end;
    }
  }
  return next;
}

}  // namespace orb
