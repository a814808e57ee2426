// Memory, threads, descriptors and processor time of this process. Thread-safety: any thread.
// Errors: std::bad_alloc; a value that the system does not report is 0.

#ifndef AGENT_PROCESS_PROCESSUSE_H
#define AGENT_PROCESS_PROCESSUSE_H

#include <cstddef>

namespace agent {

struct ProcessUse {
  std::size_t residentBytes = 0;
  std::size_t addressBytes = 0;
  std::size_t threads = 0;
  std::size_t descriptors = 0;
  std::size_t descriptorLimit = 0;
  double cpuSeconds = 0;
};

ProcessUse processUse();

}  // namespace agent

#endif
