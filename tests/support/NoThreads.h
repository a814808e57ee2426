// Lets the start of every thread fail.

#ifndef TESTS_SUPPORT_NOTHREADS_H
#define TESTS_SUPPORT_NOTHREADS_H

#include <pthread.h>

#include <cstddef>

namespace support {

// During the life of the object, no thread of the process can be started: std::thread throws
// std::system_error. Thread-safety: one object at a time. Owns the saved attributes.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t beyondMemory = before_;
    pthread_attr_setstacksize(&beyondMemory, std::size_t{1} << 47);
    pthread_setattr_default_np(&beyondMemory);
  }
  ~NoThreads() { pthread_setattr_default_np(&before_); }

  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t before_{};
};

}  // namespace support

#endif
