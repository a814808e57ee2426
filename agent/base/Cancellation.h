// A request to give up work that may take long, such as an import while the agent stops.

#ifndef AGENT_BASE_CANCELLATION_H
#define AGENT_BASE_CANCELLATION_H

#include <atomic>
#include <stdexcept>

namespace agent {

class Cancelled : public std::runtime_error {
 public:
  Cancelled() : std::runtime_error("cancelled, because the agent stops") {}
};

// The owner of the work requests the cancellation; the work looks for it at every record, so that
// it ends within moments and undoes what it has begun.
//
// Thread-safety: any thread.
class Cancellation {
 public:
  // For work that nobody cancels.
  static const Cancellation& none() {
    static const Cancellation never;
    return never;
  }

  void request() noexcept { requested_ = true; }

  // Throws Cancelled.
  void throwIfRequested() const {
    if (requested_) {
      throw Cancelled();
    }
  }

 private:
  std::atomic<bool> requested_{false};
};

}  // namespace agent

#endif
