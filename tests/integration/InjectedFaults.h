// Faults of the system that a test injects into a running faulty_agent, through a file that both
// processes map.

#ifndef TESTS_INTEGRATION_INJECTEDFAULTS_H
#define TESTS_INTEGRATION_INJECTEDFAULTS_H

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <string>

namespace integration {

// The environment variable with the path of the file.
constexpr const char* kInjectedFaultsVariable = "TOPO_INJECTED_FAULTS";

// The content of the file. All values are 0 without a fault.
struct InjectedFaults {
  // The error (errno) of every write, truncation and synchronization of a file.
  std::atomic<int> diskError;

  // Which call of operator new throws std::bad_alloc: 1 for the next call. Every call subtracts 1;
  // calls after the failure succeed. Only calls by the agent, its own libraries and the C++ library
  // are counted; other libraries never fail.
  std::atomic<long> failingAllocation;

  // Seconds that are added to the time of day. The other clocks of the process do not change.
  std::atomic<long> clockStep;
};
static_assert(std::atomic<long>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

// Maps an existing file of at least sizeof(InjectedFaults) bytes for the rest of the process.
// Returns null when this fails.
inline InjectedFaults* mapInjectedFaults(const char* path) {
  const int file = ::open(path, O_RDWR | O_CLOEXEC);
  void* const mapped =
      ::mmap(nullptr, sizeof(InjectedFaults), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ::close(file);
  return mapped == MAP_FAILED ? nullptr : static_cast<InjectedFaults*>(mapped);
}

}  // namespace integration

#endif
