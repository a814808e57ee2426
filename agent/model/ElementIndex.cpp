#include "agent/model/ElementIndex.h"

#include <algorithm>

namespace agent {

void ElementIndex::makeRoom(std::size_t more) {
  const std::size_t needed = entries_.size() + more;
  if (needed > entries_.capacity()) {
    entries_.reserve(std::max(needed, entries_.size() + entries_.size() / 2));
  }
}

ElementIndex::Place ElementIndex::add(const NetworkElement& element) {
  entries_.push_back({element.number, stateOf(element)});
  return static_cast<Place>(entries_.size() - 1);
}

void ElementIndex::update(Place place, const NetworkElement& element) noexcept {
  entries_[place].state = stateOf(element);
}

void ElementIndex::remove(Place place) noexcept {
  entries_[place].state = State::kRemoved;
  ++removed_;
}

void ElementIndex::clear() noexcept {
  entries_.clear();
  removed_ = 0;
}

void ElementIndex::appendTo(std::vector<NS_DOMAIN::NEIndex>& indexes, bool onlyShown) const {
  indexes.reserve(indexes.size() + entries_.size() - removed_);
  for (const Entry& entry : entries_) {
    if (entry.state == State::kShown || (entry.state == State::kHidden && !onlyShown)) {
      indexes.push_back({0, entry.number});
    }
  }
}

}  // namespace agent
