#include "agent/changes/Backups.h"

#include <exception>
#include <random>
#include <utility>

namespace agent {
namespace {

// The most steps in one call of next(). A step copies about a megabyte.
constexpr int kStepsOfCall = 64;

// A random id, so that ids of an earlier run of the agent are unknown.
std::uint64_t newId() {
  std::random_device random;
  return (std::uint64_t{random()} << 32) | random();
}

std::string theBackup() {
  return "the backup";
}

}  // namespace

Backups::Backups(NetworkWriter& writer, Clock clock) : writer_(writer), clock_(std::move(clock)) {}

Backups::~Backups() {
  drop();
}

Outcome Backups::begin(std::uint64_t& id) {
  const MutexLock lock(mutex_);
  if (copy_ && clock_() - lastUse_ < kIdle) {
    return {kTooMuch, "another backup is being fetched"};
  }
  try {
    drop();
    copy_ = writer_.beginCopy();
    id = id_ = newId();
    lastUse_ = clock_();
    return {};
  } catch (const std::exception& failure) {
    return internalError(theBackup, failure.what());
  }
}

Outcome Backups::next(std::uint64_t id, Part& part) {
  const MutexLock lock(mutex_);
  if (!copy_ || id != id_) {
    return {kEntityNotFound, "the backup has ended"};
  }
  try {
    part = nextPart();
    lastUse_ = clock_();
    if (part.isLast) {
      drop();
    }
    return {};
  } catch (const std::exception& failure) {
    drop();
    return internalError(theBackup, failure.what());
  }
}

Backups::Part Backups::nextPart() {
  for (int i = 0; i < kStepsOfCall; ++i) {
    if (writer_.continueCopy(*copy_)) {
      std::string content = copy_->read(kPartBytes);
      return {copy_->size(), std::move(content), copy_->bytesLeft() == 0};
    }
  }
  return {};
}

void Backups::end(std::uint64_t id) {
  const MutexLock lock(mutex_);
  if (id == id_) {
    drop();
  }
}

void Backups::drop() {
  if (copy_) {
    writer_.endCopy(std::move(copy_));
  }
}

}  // namespace agent
