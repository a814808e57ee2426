// Reads the standard error of a host and stores its end.

#ifndef CONFORMANCE_ERRORTAIL_H
#define CONFORMANCE_ERRORTAIL_H

#include <mutex>
#include <string>
#include <thread>

#include "conformance/Descriptor.h"

namespace conformance {

// A pipe whose other end a host writes. A thread of this object reads the pipe, so the host never
// waits; memory is bounded, because the object stores the last 64 KiB only.
//
// Thread-safety: any thread; constructed and destroyed by one thread. Owns the pipe and the thread.
// Errors: the constructor throws std::system_error.
class ErrorTail {
 public:
  ErrorTail();
  ~ErrorTail();
  ErrorTail(const ErrorTail&) = delete;
  ErrorTail& operator=(const ErrorTail&) = delete;

  // The end of the pipe for the host. closeWriteEnd: after the fork.
  int writeEnd() const { return pipe_.write.get(); }
  void closeWriteEnd() { pipe_.write.reset(); }

  // Returns the last line with "undefined symbol"; without such a line, the last line that is not
  // empty; without any line, "".
  std::string reason();

 private:
  void run();
  bool readOnce();  // false at the end, and when nothing can be read now

  Pipe pipe_;
  const Descriptor stop_;  // an eventfd: readable when the thread has to end
  std::mutex mutex_;
  std::string tail_;  // guarded by mutex_
  std::thread thread_;
};

}  // namespace conformance

#endif
