// Admission of the console's large requests by the memory that they need: imports, whose files are
// parsed, exports, and getObject, whose reply may contain 16 MiB of additional information.

#ifndef AGENT_CONSOLE_IMPORTADMISSION_H
#define AGENT_CONSOLE_IMPORTADMISSION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "agent/base/RefusalLog.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

// Reserves memory for each large request, before its arguments are decoded and until its reply was
// sent.
//
// Thread-safety: any thread.
// Ownership: owns its counter; outlives the reservations.
// Errors: admit throws CORBA::NO_RESOURCES, and logs refusals at a limited rate.
class ImportAdmission {
 public:
  // Whether the process may allocate so many more bytes. Called from any thread.
  using Allows = std::function<bool(std::size_t bytes)>;

  // The most memory that the parser needs for one byte of a file, or that an export needs for one
  // byte of the store. XML nodes and JSON values of two or three characters need the most.
  static constexpr std::size_t kBytesOfByte = 40;

  // The memory for one reply of getObject: the details, the reply and its encoding.
  static constexpr std::size_t kBytesOfDetails = std::size_t{64} << 20;

  ImportAdmission(Allows allows, RefusalLog::Clock clock);
  ImportAdmission(const ImportAdmission&) = delete;
  ImportAdmission& operator=(const ImportAdmission&) = delete;

  // The guard of the console's requests. Returns null for other operations than importNetwork and
  // getObject, and otherwise a reservation, which the destructor of the returned object releases.
  // Never waits. Throws NO_RESOURCES when the process may not allocate the memory of this request
  // and of the admitted requests in progress.
  std::shared_ptr<void> admit(const orb::Request& request);

  // A reservation for the export of a store of so many bytes. Null when the process may not
  // allocate the memory.
  std::shared_ptr<void> admitExport(std::uint64_t storedBytes);

  // The sum of all reservations in bytes.
  std::size_t reserved() const;

 private:
  class Reservation;

  static std::size_t bytesFor(const orb::Request& request);
  std::shared_ptr<void> tryReserve(std::size_t bytes);
  bool reserve(std::size_t bytes);
  void release(std::size_t bytes);

  const Allows allows_;
  RefusalLog log_;
  mutable Mutex mutex_;
  std::size_t reserved_ GUARDED_BY(mutex_) = 0;
};

}  // namespace agent

#endif
