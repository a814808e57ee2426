// Admission of imports by the memory that reading their files takes.

#ifndef AGENT_CONSOLE_IMPORTADMISSION_H
#define AGENT_CONSOLE_IMPORTADMISSION_H

#include <cstddef>
#include <functional>
#include <memory>

#include "agent/base/RefusalLog.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

// An import reserves memory from before its arguments are decoded until its reply was sent.
//
// Thread-safety: any thread.
class ImportAdmission {
 public:
  // Whether the process may allocate so many bytes more. Called from any thread.
  using Allows = std::function<bool(std::size_t bytes)>;

  // What one byte of a file takes at most while it is read: nodes of XML and values of JSON that
  // are written with two or three characters take the most.
  static constexpr std::size_t kBytesOfByte = 40;

  ImportAdmission(Allows allows, RefusalLog::Clock clock);
  ImportAdmission(const ImportAdmission&) = delete;
  ImportAdmission& operator=(const ImportAdmission&) = delete;

  // For a request to the console. Null for other operations; otherwise an object that gives the
  // reserved memory back when it is destroyed, before this. Never waits. Throws NO_RESOURCES, and
  // logs, when the process may not allocate what the imports in progress and this one need.
  std::shared_ptr<void> admit(const orb::Request& request);

  // Bytes that the imports in progress need, whether or not they have allocated them yet.
  std::size_t reserved() const;

 private:
  class Reservation;

  bool reserve(std::size_t bytes);
  void release(std::size_t bytes);

  const Allows allows_;
  RefusalLog log_;
  mutable Mutex mutex_;
  std::size_t reserved_ GUARDED_BY(mutex_) = 0;
};

}  // namespace agent

#endif
