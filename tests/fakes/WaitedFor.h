// Detects threads that wait for a mutex.

#ifndef TESTS_FAKES_WAITEDFOR_H
#define TESTS_FAKES_WAITEDFOR_H

#include <pthread.h>

namespace fakes {

// Whether a thread waits for a mutex. Reads the C library's state of the mutex.
inline bool isWaitedFor(const pthread_mutex_t& mutex) {
  constexpr int kLockedWithWaiters = 2;
  return __atomic_load_n(&mutex.__data.__lock, __ATOMIC_SEQ_CST) == kLockedWithWaiters;
}

}  // namespace fakes

#endif
