// Backups of the store. A client fetches a backup part by part.

#ifndef AGENT_CHANGES_BACKUPS_H
#define AGENT_CHANGES_BACKUPS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "agent/base/OperationResult.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/store/StoreCopy.h"
#include "sync/Mutex.h"

namespace agent {

// At most one backup exists at a time. A backup ends after its last part, after a failure, and by
// end(). A backup is idle after kIdle without a call of next(); begin() ends an idle backup.
//
// Thread-safety: any thread. Ownership: borrows the writer, which outlives this object. Errors:
// kTooMuch while another backup exists, kEntityNotFound for a backup that has ended, kInternalError
// for the disk.
class Backups {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  static constexpr std::chrono::seconds kIdle{60};
  static constexpr std::size_t kPartBytes = std::size_t{1} << 20;

  struct Part {
    std::uint64_t size = 0;  // of the whole backup; 0 until the copy is complete
    std::string content;     // at most kPartBytes; may be empty
    bool isLast = false;
  };

  explicit Backups(NetworkWriter& writer, Clock clock = std::chrono::steady_clock::now);
  ~Backups();
  Backups(const Backups&) = delete;
  Backups& operator=(const Backups&) = delete;

  Outcome begin(std::uint64_t& id);

  // Continues the copy of the store, and reads the next part when the copy is complete. Until then
  // the parts are empty. A change of the network waits for at most a megabyte of copying.
  Outcome next(std::uint64_t id, Part& part);

  // Does nothing when the backup has ended.
  void end(std::uint64_t id);

 private:
  Part nextPart() REQUIRES(mutex_);
  void drop() REQUIRES(mutex_);

  NetworkWriter& writer_;
  const Clock clock_;

  Mutex mutex_;
  std::unique_ptr<StoreCopy> copy_ GUARDED_BY(mutex_);  // null without a backup
  std::uint64_t id_ GUARDED_BY(mutex_) = 0;
  std::chrono::steady_clock::time_point lastUse_ GUARDED_BY(mutex_);
};

}  // namespace agent

#endif
