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

// A text that clients fetch as a copy of the store.
class TextCopy final : public StoreCopy {
 public:
  explicit TextCopy(std::string text) : text_(std::move(text)) {}

  bool step() override { return true; }
  std::uint64_t size() const override { return text_.size(); }
  std::uint64_t bytesLeft() const override { return text_.size() - position_; }
  std::string read(std::size_t maxBytes) override {
    std::string part = text_.substr(position_, maxBytes);
    position_ += part.size();
    return part;
  }

 private:
  const std::string text_;
  std::size_t position_ = 0;
};

}  // namespace

Backups::Backups(NetworkWriter& writer, Clock clock, ExportLimits limits)
    : writer_(writer), clock_(std::move(clock)), limits_(std::move(limits)) {}

Backups::~Backups() {
  drop();
}

// Begins a backup or an export. makeCopy: assigns the new copy to its argument, or returns a
// failure.
template <typename MakeCopy>
Outcome Backups::start(std::uint64_t& id, const MakeCopy& makeCopy) {
  const MutexLock lock(mutex_);
  if (copy_ && clock_() - lastUse_ < kIdle) {
    return {kTooMuch, "another backup is being fetched"};
  }
  try {
    drop();
    Outcome outcome = makeCopy(copy_);
    if (outcome.ok()) {
      id = id_ = newId();
      lastUse_ = clock_();
    }
    return outcome;
  } catch (const std::exception& failure) {
    return internalError(theBackup, failure.what());
  }
}

Outcome Backups::begin(std::uint64_t& id) {
  return start(id, [this](std::unique_ptr<StoreCopy>& copy) {
    copy = writer_.beginCopy();
    return Outcome();
  });
}

Outcome Backups::beginExport(std::uint64_t& id, const Write& write) {
  return start(id, [&](std::unique_ptr<StoreCopy>& copy) { return makeExport(copy, write); });
}

Outcome Backups::makeExport(std::unique_ptr<StoreCopy>& copy, const Write& write) {
  const std::shared_ptr<void> reservation =
      limits_.reserve ? limits_.reserve(writer_.storedBytes()) : nullptr;
  if (limits_.reserve && reservation == nullptr) {
    return {kTooMuch, "memory is short for an export (--memory)"};
  }
  std::string text = write(writer_.storedNetwork());
  if (text.size() > limits_.bytes) {
    return {kTooMuch, "the export has " + std::to_string(text.size()) +
                          " bytes, but a restore accepts " + std::to_string(limits_.bytes) +
                          " (--max-message)"};
  }
  copy = std::make_unique<TextCopy>(std::move(text));
  return {};
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
