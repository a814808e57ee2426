// Processor time: what a computation costs, however busy the machine is.

#ifndef TESTS_SUPPORT_PROCESSORTIME_H
#define TESTS_SUPPORT_PROCESSORTIME_H

#include <chrono>
#include <ctime>

namespace support {

// What the calling thread has used since it began.
inline std::chrono::nanoseconds processorTime() {
  std::timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace support

#endif
