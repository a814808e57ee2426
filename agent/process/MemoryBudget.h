// The memory limits of the process.

#ifndef AGENT_PROCESS_MEMORYBUDGET_H
#define AGENT_PROCESS_MEMORYBUDGET_H

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <limits>

#include "sync/Mutex.h"

namespace agent {

// A plain value, in bytes. kNoLimit: there is no limit.
struct MemoryUse {
  static constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

  std::size_t residentLimit = kNoLimit;
  std::size_t resident = 0;
  std::size_t addressLimit = kNoLimit;  // of the address space
  std::size_t addresses = 0;
};

// Compares the memory that a computation needs with the limits of the process. Reserves an eighth
// of each limit for allocations without a check.
//
// Thread-safety: any thread.
// Ownership: owns its functions, which any thread may call.
// Errors: exceptions of the functions pass.
class MemoryBudget {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;
  using Probe = std::function<MemoryUse()>;
  using Release = std::function<void()>;

  // probe: returns the present use. release: returns freed memory to the system; called at most
  // once a second, because a release examines the whole heap.
  MemoryBudget(Probe probe, Release release, Clock clock);

  // Whether the process may allocate so many more bytes now. Reserves nothing.
  bool allows(std::size_t bytes);

 private:
  void releaseFreed();

  const Probe probe_;
  const Release release_;
  const Clock clock_;

  Mutex mutex_;
  std::chrono::steady_clock::time_point nextRelease_ GUARDED_BY(mutex_);
};

// Returns a probe of this process. The resident limit is the least of `configured` (0: none), the
// limits of the control groups of the process, and the memory of the machine. The limit of the
// address space is RLIMIT_AS. processMemory reads the limits; each call of the probe reads the use.
// `root` is the directory of the files of the control groups: proc/self/cgroup and sys/fs/cgroup.
MemoryBudget::Probe processMemory(std::size_t configured, const std::filesystem::path& root = "/");

// Reduces the address space that allocation arenas and thread stacks reserve without use. Does
// nothing when the address space has no limit. REQUIRES: the process has one thread.
void confineAddressSpace();

}  // namespace agent

#endif
