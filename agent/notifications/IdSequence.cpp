#include "agent/notifications/IdSequence.h"

#include <algorithm>

namespace agent {
namespace {

// The id below all ids of a change.
std::uint64_t baseOf(std::uint64_t change) {
  return std::min(change, IdSequence::kLastChange) << IdSequence::kPositionBits;
}

std::uint64_t positionOf(std::uint64_t id) {
  return id & IdSequence::kLastPosition;
}

}  // namespace

IdSequence::IdSequence(std::uint64_t lastChange, const Limits& limits)
    : limits_(limits), last_(baseOf(lastChange)), countableFrom_(last_) {
  history_.reserve(limits_.history);
}

bool IdSequence::isAtLastPosition() const {
  return positionOf(last_) == limits_.lastPosition;
}

std::optional<std::uint64_t> IdSequence::next(std::uint64_t change) noexcept {
  const std::uint64_t base = baseOf(change);
  if (base > last_) {
    remember(base + 1);
    return last_;
  }
  if (positionOf(last_) + 1 < limits_.lastPosition) {
    remember(last_ + 1);
    return last_;
  }
  last_ += limits_.lastPosition - positionOf(last_);
  forget();
  return std::nullopt;
}

std::uint64_t IdSequence::nextForGap() noexcept {
  if (!isAtLastPosition()) {
    ++last_;
  }
  forget();
  return last_;
}

void IdSequence::remember(std::uint64_t id) noexcept {
  if (history_.empty() || id != last_ + 1) {
    if (history_.size() == limits_.history) {
      const auto half = static_cast<std::ptrdiff_t>(limits_.history / 2);
      history_.erase(history_.begin(), history_.begin() + half);
      countableFrom_ = history_.front().first - 1;
    }
    history_.push_back({id, made_});
  }
  ++made_;
  last_ = id;
}

// Makes ids before last_, the id of a gap, uncountable. The gap of a last position may grow later,
// so that its own id is uncountable, too.
void IdSequence::forget() noexcept {
  history_.clear();
  countableFrom_ = isAtLastPosition() ? last_ + 1 : last_;
}

std::optional<Gap> IdSequence::gapSince(std::uint64_t id) const {
  if (id == last_ && id >= countableFrom_) {
    return std::nullopt;
  }
  return Gap{std::min(id + 1, last_), last_, countSince(id)};
}

// The number of notifications with an id above this id; 0 when unknown.
std::uint64_t IdSequence::countSince(std::uint64_t id) const {
  if (id < countableFrom_) {
    return 0;
  }
  const auto next =
      std::upper_bound(history_.begin(), history_.end(), id,
                       [](std::uint64_t value, const Run& run) { return value < run.first; });
  const std::uint64_t atMost = next == history_.end() ? made_ : next->before;
  if (next == history_.begin()) {
    return made_ - atMost;
  }
  const Run& run = *(next - 1);
  return made_ - std::min(atMost, run.before + (id - run.first + 1));
}

}  // namespace agent
