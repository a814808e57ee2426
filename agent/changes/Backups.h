// Backups of the store, and exports of the network. A client fetches both part by part.

#ifndef AGENT_CHANGES_BACKUPS_H
#define AGENT_CHANGES_BACKUPS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>

#include "agent/base/OperationResult.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/store/StoreCopy.h"
#include "sync/Mutex.h"

namespace agent {

// The limits of exports. A plain value.
struct ExportLimits {
  // The largest export in bytes.
  std::size_t bytes = std::numeric_limits<std::size_t>::max();

  // Reserves the memory for the export of a store of so many bytes, until the result is
  // destroyed. Returns null when memory is short. Without a function, memory is not limited.
  std::function<std::shared_ptr<void>(std::uint64_t storedBytes)> reserve;
};

// At most one backup or export exists at a time. A backup ends after its last part, after a
// failure, and by end(). A backup is idle after kIdle without a call of next(); begin() ends an
// idle backup.
//
// Thread-safety: any thread. Ownership: borrows the writer, which outlives this object. Errors:
// kTooMuch while another backup exists and for an export beyond its limits, kEntityNotFound for a
// backup that has ended, kInternalError for the disk.
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

  explicit Backups(NetworkWriter& writer, Clock clock = std::chrono::steady_clock::now,
                   ExportLimits limits = {});
  ~Backups();
  Backups(const Backups&) = delete;
  Backups& operator=(const Backups&) = delete;

  Outcome begin(std::uint64_t& id);

  // Begins an export, which continues and ends as a backup does. The text of the export occupies
  // memory until the end. write: returns the text of a network.
  using Write = std::function<std::string(const Network&)>;
  Outcome beginExport(std::uint64_t& id, const Write& write);

  // Continues the copy of the store, and reads the next part when the copy is complete. Until then
  // the parts are empty. A change of the network waits for at most a megabyte of copying.
  Outcome next(std::uint64_t id, Part& part);

  // Does nothing when the backup has ended.
  void end(std::uint64_t id);

 private:
  template <typename MakeCopy>
  Outcome start(std::uint64_t& id, const MakeCopy& makeCopy);
  Outcome makeExport(std::unique_ptr<StoreCopy>& copy, const Write& write);
  Part nextPart() REQUIRES(mutex_);
  void drop() REQUIRES(mutex_);

  NetworkWriter& writer_;
  const Clock clock_;
  const ExportLimits limits_;

  Mutex mutex_;
  std::unique_ptr<StoreCopy> copy_ GUARDED_BY(mutex_);  // null without a backup
  std::uint64_t id_ GUARDED_BY(mutex_) = 0;
  std::chrono::steady_clock::time_point lastUse_ GUARDED_BY(mutex_);
};

}  // namespace agent

#endif
