// A request to cancel long work, such as an import while the agent stops.

#ifndef AGENT_BASE_CANCELLATION_H
#define AGENT_BASE_CANCELLATION_H

#include <atomic>
#include <stdexcept>

namespace agent {

// A plain value. Thrown by Cancellation::throwIfRequested, and passed on by the cancelled work.
class Cancelled : public std::runtime_error {
 public:
  Cancelled() : std::runtime_error("cancelled, because the agent stops") {}
};

// The owner of the work requests the cancellation. The work checks for the request at every record
// and undoes its changes.
//
// Thread-safety: any thread. Ownership: the work borrows the cancellation. Errors: throwIfRequested
// throws Cancelled.
class Cancellation {
 public:
  // Never requested.
  static const Cancellation& none() {
    static const Cancellation never;
    return never;
  }

  void request() noexcept { requested_ = true; }

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
