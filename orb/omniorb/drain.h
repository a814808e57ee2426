// Ends requests that are blocked by their clients.

#ifndef ORB_OMNIORB_DRAIN_H
#define ORB_OMNIORB_DRAIN_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <set>
#include <thread>

#include "orb/orb.h"
#include "sync/Mutex.h"

OMNI_NAMESPACE_BEGIN(omni)
class GIOP_S;
OMNI_NAMESPACE_END(omni)

namespace orb {

// Sets Options::drainGrace for the ORB that starts next.
void setDrainGrace(std::chrono::milliseconds grace);

// Unblocks the thread that owns a Drain and waits for requests to end. The Drain has a thread of
// its own, which shuts down the connection of a matching request whose arguments or reply have been
// in transfer for longer than the grace period. The time counts from the first byte of the
// arguments or of the reply. Requests that run in a servant are not affected.
//
// Thread-safety: construct and destroy on one thread. The destructor ends the thread of the Drain.
// The constructor throws std::system_error if no thread is available.
class Drain {
 public:
  // Selects requests. Runs under the ORB's transport lock, so the function must not call the ORB or
  // wait for a thread that does.
  using Matches = std::function<bool(omni::GIOP_S&)>;

  enum class Others {
    kLeft,    // other connections stay open
    kClosed,  // other connections are shut down after the grace period
  };

  explicit Drain(Matches matches, Others others = Others::kLeft);
  ~Drain();
  Drain(const Drain&) = delete;
  Drain& operator=(const Drain&) = delete;

 private:
  void run();
  void shutDownStalled() EXCLUDES(mutex_);

  const Matches matches_;
  const Others others_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::set<const void*> shutDown_;  // logged connections; used by the thread only
  Mutex mutex_;
  std::condition_variable ended_;
  bool end_ GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace orb

#endif
