#include "agent/console/ImportAdmission.h"

#include <new>
#include <string>
#include <utility>

#include "agent/base/RequestLog.h"
#include "idl/ObjectKeys.h"

namespace agent {
namespace {

// Records a refused import, because the audit log has every change. The file name is not decoded
// yet.
void recordRefusal(const orb::Request& request) {
  if (request.operation == "importNetwork" && isRecorded()) {
    recordWith(RequestRecord::Outcome::kFailed, [&request] {
      return RequestRecord{request.peer,
                           object_key::kConsole,
                           request.operation,
                           "",
                           RequestRecord::Outcome::kFailed,
                           "memory is short"};
    });
  }
}

}  // namespace

class ImportAdmission::Reservation {
 public:
  Reservation(ImportAdmission& admission, std::size_t bytes)
      : admission_(admission), bytes_(admission.reserve(bytes) ? bytes : 0) {}
  ~Reservation() { admission_.release(bytes_); }
  Reservation(const Reservation&) = delete;
  Reservation& operator=(const Reservation&) = delete;

  bool isGranted() const { return bytes_ > 0; }

 private:
  ImportAdmission& admission_;
  const std::size_t bytes_;
};

ImportAdmission::ImportAdmission(Allows allows, RefusalLog::Clock clock)
    : allows_(std::move(allows)), log_(std::move(clock)) {}

// 0 for a request that needs no admission, and for a local call.
std::size_t ImportAdmission::bytesFor(const orb::Request& request) {
  if (request.operation == "importNetwork") {
    return kBytesOfByte * request.bytes;
  }
  return request.operation == "getObject" && request.bytes > 0 ? kBytesOfDetails : 0;
}

std::shared_ptr<void> ImportAdmission::admit(const orb::Request& request) {
  const std::size_t bytes = bytesFor(request);
  if (bytes == 0) {
    return nullptr;
  }
  try {
    if (auto reservation = tryReserve(bytes)) {
      return reservation;
    }
    recordRefusal(request);
    log_.refused(request.operation + " of " + std::to_string(request.bytes) +
                 " bytes is refused: memory is short");
  } catch (const std::bad_alloc&) {
    recordRefusal(request);
    log_.refused("a large request is refused: memory is short");
  }
  throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO);
}

std::shared_ptr<void> ImportAdmission::admitExport(std::uint64_t storedBytes) {
  auto reservation = tryReserve(kBytesOfByte * storedBytes);
  if (reservation == nullptr) {
    log_.refused("an export of a store of " + std::to_string(storedBytes) +
                 " bytes is refused: memory is short");
  }
  return reservation;
}

// Returns null when the process may not allocate the memory.
std::shared_ptr<void> ImportAdmission::tryReserve(std::size_t bytes) {
  auto reservation = std::make_shared<Reservation>(*this, bytes);
  return reservation->isGranted() ? reservation : nullptr;
}

std::size_t ImportAdmission::reserved() const {
  const MutexLock lock(mutex_);
  return reserved_;
}

bool ImportAdmission::reserve(std::size_t bytes) {
  const MutexLock lock(mutex_);
  if (!allows_(reserved_ + bytes)) {
    return false;
  }
  reserved_ += bytes;
  return true;
}

void ImportAdmission::release(std::size_t bytes) {
  const MutexLock lock(mutex_);
  reserved_ -= bytes;
}

}  // namespace agent
