// Numbers distinct texts.

#ifndef TOPOMANAGEMENTMGR_TEXTINDEX_H
#define TOPOMANAGEMENTMGR_TEXTINDEX_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "hash/SaltedHash.h"

namespace topo {

// Gives each text a number, which rises from 0 in the order of the first additions.
//
// A hash table with open addressing: a lookup in a large table usually reads one slot and one text,
// where a table of the standard library follows a list of nodes through memory. The hash is salted,
// so clients cannot choose colliding texts.
//
// Thread-safety: none. Ownership: borrows the texts. REQUIRES: fewer than 2^32 - 1 texts.
// Errors: add() may throw std::bad_alloc and then adds nothing; both functions throw
// std::system_error (see salted::Hash).
class TextIndex {
 public:
  static constexpr std::uint32_t kNone = 0xffffffff;

  // The number of a text; adds a new text.
  std::uint32_t add(std::string_view text) {
    if (2 * (texts_.size() + 1) > slots_.size()) {
      grow();
    }
    const std::uint32_t hash = hashOf(text);
    Slot& slot = slots_[placeOf(text, hash)];
    if (slot.number == kNone) {
      texts_.push_back(text);
      slot = {hash, static_cast<std::uint32_t>(texts_.size() - 1)};
    }
    return slot.number;
  }

  // kNone for a text that was not added.
  std::uint32_t find(std::string_view text) const {
    return slots_.empty() ? kNone : slots_[placeOf(text, hashOf(text))].number;
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = kNone;  // kNone: the slot is free
  };

  static std::uint32_t hashOf(std::string_view text) {
    return static_cast<std::uint32_t>(salted::Hash()(text));
  }

  // The slot of a text, or the free slot for the text.
  std::size_t placeOf(std::string_view text, std::uint32_t hash) const {
    const std::size_t mask = slots_.size() - 1;  // the size is a power of two
    std::size_t place = hash & mask;
    while (slots_[place].number != kNone &&
           !(slots_[place].hash == hash && texts_[slots_[place].number] == text)) {
      place = (place + 1) & mask;
    }
    return place;
  }

  void grow() {
    constexpr std::size_t kFirstSize = 64;
    std::vector<Slot> larger(slots_.empty() ? kFirstSize : 2 * slots_.size());
    const std::size_t mask = larger.size() - 1;
    for (const Slot& slot : slots_) {
      if (slot.number != kNone) {
        std::size_t place = slot.hash & mask;
        while (larger[place].number != kNone) {
          place = (place + 1) & mask;
        }
        larger[place] = slot;
      }
    }
    slots_.swap(larger);
  }

  std::vector<std::string_view> texts_;  // by number
  std::vector<Slot> slots_;              // at least twice as many as texts
};

}  // namespace topo

#endif
