// The numbers and marks of the network elements, in the order of the elements. Part of the model.

#ifndef AGENT_MODEL_ELEMENTINDEX_H
#define AGENT_MODEL_ELEMENTINDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "agent/network/Network.h"
#include "platform/domain/DomainRecords.h"

namespace agent {

// Every view reads the numbers twice. The entries are next to each other, so reading them takes a
// tenth of the time of a walk through the records.
//
// A removed entry remains, so that the places of the other entries do not change. When most entries
// are removed, the owner clears the index and adds the elements again: a removal takes constant
// time on average.
//
// Thread-safety: none; NetworkModel locks. Ownership: owns its entries. Errors: std::bad_alloc from
// makeRoom() and appendTo(), and from add() without room.
class ElementIndex {
 public:
  using Place = std::uint32_t;

  // Reserves memory for `more` entries. Grows by half at least, as the indexes of the tables.
  void makeRoom(std::size_t more);

  // Appends an entry. Returns its place.
  Place add(const NetworkElement& element);

  // Takes the mark of the element. REQUIRES: the entry exists.
  void update(Place place, const NetworkElement& element) noexcept;

  // REQUIRES: the entry exists.
  void remove(Place place) noexcept;

  // Whether there are more removed entries than others.
  bool isMostlyRemoved() const noexcept { return removed_ > entries_.size() / 2; }

  // Removes all entries and keeps the memory.
  void clear() noexcept;

  // Appends the indexes of all elements, or of the shown elements.
  void appendTo(std::vector<NS_DOMAIN::NEIndex>& indexes, bool onlyShown) const;

 private:
  enum class State : std::int32_t { kHidden, kShown, kRemoved };

  struct Entry {
    std::int32_t number;
    State state;
  };

  static State stateOf(const NetworkElement& element) {
    return element.shown ? State::kShown : State::kHidden;
  }

  std::vector<Entry> entries_;
  std::size_t removed_ = 0;
};

}  // namespace agent

#endif
