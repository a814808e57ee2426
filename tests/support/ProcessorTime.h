// Processor time: the cost of a computation, independent of the load of the machine.

#ifndef TESTS_SUPPORT_PROCESSORTIME_H
#define TESTS_SUPPORT_PROCESSORTIME_H

#include <chrono>
#include <ctime>

namespace support {

// The processor time of the calling thread since its start.
inline std::chrono::nanoseconds processorTime() {
  std::timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace support

#endif
