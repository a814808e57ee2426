// Who waits for a mutex.

#ifndef TESTS_FAKES_WAITEDFOR_H
#define TESTS_FAKES_WAITEDFOR_H

#include <pthread.h>

namespace fakes {

// Whether a thread is blocked at a mutex that another thread holds; the C library marks it so.
inline bool isWaitedFor(const pthread_mutex_t& mutex) {
  constexpr int kLockedWithWaiters = 2;
  return __atomic_load_n(&mutex.__data.__lock, __ATOMIC_SEQ_CST) == kLockedWithWaiters;
}

}  // namespace fakes

#endif
