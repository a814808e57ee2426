// The time between attempts to reach an agent again.

#ifndef CLIENT_BASE_RETRYDELAY_H
#define CLIENT_BASE_RETRYDELAY_H

#include <algorithm>
#include <chrono>

namespace topoctl {

// Doubles with every attempt until it reaches a maximum.
//
// Thread-safety: none. A plain value. Never throws.
class RetryDelay {
 public:
  RetryDelay(std::chrono::milliseconds first, std::chrono::milliseconds maximum)
      : first_(first), maximum_(maximum), next_(first) {}

  // The delay before the next attempt.
  std::chrono::milliseconds next() {
    const std::chrono::milliseconds delay = next_;
    next_ = std::min(next_ * 2, maximum_);
    return delay;
  }

  // Restarts with the first delay.
  void reset() { next_ = first_; }

 private:
  const std::chrono::milliseconds first_;
  const std::chrono::milliseconds maximum_;
  std::chrono::milliseconds next_;
};

}  // namespace topoctl

#endif
