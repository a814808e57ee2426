// How much memory the process may take.

#ifndef AGENT_PROCESS_MEMORYBUDGET_H
#define AGENT_PROCESS_MEMORYBUDGET_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>

#include "sync/Mutex.h"

namespace agent {

// Bytes. A limit of kNoLimit never refuses.
struct MemoryUse {
  static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

  std::size_t residentLimit = kNoLimit;
  std::size_t resident = 0;
  std::size_t addressLimit = kNoLimit;  // of the address space
  std::size_t addresses = 0;
};

// Compares what a computation needs with the limits of the process. An eighth of a limit stays free
// for everything that does not ask.
//
// Thread-safety: any thread.
class MemoryBudget {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  using Probe = std::function<MemoryUse()>;
  using Release = std::function<void()>;

  // The probe tells the use of this moment, release gives freed memory back to the system. Release
  // is called once a second at most, because it looks at all of the heap.
  MemoryBudget(Probe probe, Release release, Clock clock);

  // Whether the process may allocate so many bytes more at this moment. Reserves nothing.
  bool allows(std::size_t bytes);

 private:
  void releaseFreed();

  const Probe probe_;
  const Release release_;
  const Clock clock_;

  Mutex mutex_;
  std::chrono::steady_clock::time_point nextRelease_ GUARDED_BY(mutex_);
};

// The use of this process. The resident limit is the least of: `configured` (0: none), the limits
// of the control groups of the process, the memory of the machine. The limit of the address space
// is RLIMIT_AS. The limits are read when this is called, the use by every call of the probe.
MemoryBudget::Probe processMemory(std::size_t configured);

// Prepares the allocator and the threads of this process for a limited address space, which
// allocation arenas and thread stacks would otherwise use up without being used themselves. Does
// nothing when the address space has no limit. REQUIRES: the process has one thread.
void confineAddressSpace();

}  // namespace agent

#endif
