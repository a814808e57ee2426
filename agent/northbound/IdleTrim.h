// Decides when freed memory is returned to the system.

#ifndef AGENT_NORTHBOUND_IDLETRIM_H
#define AGENT_NORTHBOUND_IDLETRIM_H

#include <chrono>
#include <cstdint>
#include <optional>

namespace agent {

// Freed memory is returned after a pause without a view: soon when no client is connected, because
// the next view is far away then; otherwise later, because a view takes up to a half longer on
// returned memory than on the memory of the last view.
//
// Thread-safety: one thread. Ownership: none. Errors: none.
class IdleTrim {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::milliseconds kPauseWithoutClients{250};
  static constexpr std::chrono::milliseconds kPauseOfClients{5000};

  struct Activity {
    bool inProgress = false;  // a view is being computed or sent
    std::uint64_t ended = 0;  // number of views and iterators that have ended
    bool hasClients = false;  // a connection is open
  };

  // Called at intervals. Returns true when freed memory should be returned: once in each pause, of
  // which the first begins with the first call.
  bool isDue(const Activity& activity, Time now) {
    if (!pauseBegin_ || activity.inProgress || activity.ended != ended_) {
      pauseBegin_ = now;
      ended_ = activity.ended;
      isReturned_ = false;
      return false;
    }
    const auto pause = activity.hasClients ? kPauseOfClients : kPauseWithoutClients;
    if (isReturned_ || now - *pauseBegin_ < pause) {
      return false;
    }
    isReturned_ = true;
    return true;
  }

 private:
  std::optional<Time> pauseBegin_;  // the last call at which a view was running or had ended
  std::uint64_t ended_ = 0;
  bool isReturned_ = false;  // in the current pause
};

}  // namespace agent

#endif
