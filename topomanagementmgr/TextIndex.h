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
// Thread-safety: none. Ownership: borrows the texts. REQUIRES: at most 3 * 2^30 texts.
// Errors: add() may throw std::bad_alloc and then adds nothing; both functions throw
// std::system_error (see salted::Hash).
class TextIndex {
 public:
  static constexpr std::uint32_t kNone = 0xffffffff;

  // The number of a text; adds a new text.
  std::uint32_t add(std::string_view text) {
    if (4 * (texts_.size() + 1) > 3 * slots_.size()) {
      grow();
    }
    const std::uint32_t hash = hashOf(text);
    std::uint32_t& slot = slots_[placeOf(text, hash)];
    if (slot == kFree) {
      texts_.push_back({text, hash});
      slot = slotOf(hash, texts_.size() - 1);
    }
    return numberIn(slot);
  }

  // kNone for a text that was not added.
  std::uint32_t find(std::string_view text) const {
    if (slots_.empty()) {
      return kNone;
    }
    const std::uint32_t slot = slots_[placeOf(text, hashOf(text))];
    return slot == kFree ? kNone : numberIn(slot);
  }

 private:
  struct Text {
    std::string_view text;
    std::uint32_t hash;
  };

  static constexpr std::uint32_t kFree = 0;
  static constexpr std::uint32_t kFirstSize = 64;

  static std::uint32_t hashOf(std::string_view text) {
    return static_cast<std::uint32_t>(salted::Hash()(text));
  }

  // The low bits choose a slot; a slot contains the other bits of the hash.
  std::uint32_t mask() const { return static_cast<std::uint32_t>(slots_.size() - 1); }

  std::uint32_t slotOf(std::uint32_t hash, std::size_t number) const {
    return (hash & ~mask()) | static_cast<std::uint32_t>(number + 1);
  }

  std::uint32_t numberIn(std::uint32_t slot) const { return (slot & mask()) - 1; }

  bool contains(std::uint32_t slot, std::string_view text, std::uint32_t hash) const {
    return ((slot ^ hash) & ~mask()) == 0 && texts_[numberIn(slot)].text == text;
  }

  // The slot of a text, or the free slot for the text.
  std::size_t placeOf(std::string_view text, std::uint32_t hash) const {
    std::uint32_t place = hash & mask();
    while (slots_[place] != kFree && !contains(slots_[place], text, hash)) {
      place = (place + 1) & mask();
    }
    return place;
  }

  void grow() {
    std::vector<std::uint32_t> larger(slots_.empty() ? kFirstSize : 2 * slots_.size());
    slots_.swap(larger);
    for (std::size_t number = 0; number < texts_.size(); ++number) {
      std::uint32_t place = texts_[number].hash & mask();
      while (slots_[place] != kFree) {
        place = (place + 1) & mask();
      }
      slots_[place] = slotOf(texts_[number].hash, number);
    }
  }

  std::vector<Text> texts_;           // by number
  std::vector<std::uint32_t> slots_;  // at least a third more than texts; a power of two
};

}  // namespace topo

#endif
