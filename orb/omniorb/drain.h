// The end of requests that wait for a client who does not read or does not send.

#ifndef ORB_OMNIORB_DRAIN_H
#define ORB_OMNIORB_DRAIN_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <thread>

#include "orb/orb.h"

OMNI_NAMESPACE_BEGIN(omni)
class GIOP_S;
OMNI_NAMESPACE_END(omni)

namespace orb {

// Sets how long a request may wait for its client while something waits for the request. For the
// ORB that starts next.
void setDrainGrace(std::chrono::milliseconds grace);

// Unblocks requests on behalf of a thread that waits for them to end. While a Drain exists, its
// thread shuts down every connection on which a matching request has been receiving its arguments
// or sending its reply for longer than the grace period, counted from the first byte of arguments
// or reply. Requests that run in a servant are left alone.
class Drain {
 public:
  // Called with the ORB's transport lock held: makes no calls to the ORB, and does not wait for
  // anything that does.
  using Matches = std::function<bool(omni::GIOP_S&)>;

  enum class Others {
    kLeft,    // only connections with a matching request are shut down
    kClosed,  // after the grace period all of them are
  };

  explicit Drain(Matches matches, Others others = Others::kLeft);
  ~Drain();
  Drain(const Drain&) = delete;
  Drain& operator=(const Drain&) = delete;

 private:
  void run();
  void shutDownStalled();

  const Matches matches_;
  const Others others_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::set<const void*> shutDown_;  // connections that were logged; of the thread
  std::mutex mutex_;
  std::condition_variable ended_;
  bool end_ = false;  // guarded by mutex_
  std::thread thread_;
};

}  // namespace orb

#endif
