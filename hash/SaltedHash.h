// Hash tables whose keys come from outside: from clients, from network files, from a store.
//
// The tables of the standard library hash a number to itself and a text with a fixed seed, so a
// client can choose keys that all fall into one bucket, and every lookup then walks all of them.
// These hash with SipHash-2-4 under a random salt of the process, so nobody outside can choose
// colliding keys. The order of iteration differs from run to run.
//
// Thread-safety: hashing from any thread; the tables are as those of the standard library.

#ifndef HASH_SALTEDHASH_H
#define HASH_SALTEDHASH_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>

namespace salted {

using Salt = std::array<std::uint64_t, 2>;

// SipHash-2-4 of a text.
std::uint64_t sipHash(const Salt& salt, std::string_view text);

// For the tables below. The first call takes the salt from the system, and throws
// std::system_error when the system gives none. The operators are not noexcept on purpose: so
// the standard library keeps each key's hash in the table instead of computing it again.
struct Hash {
  std::size_t operator()(std::string_view text) const;
  std::size_t operator()(std::uint64_t number) const;

  template <typename Number, typename = std::enable_if_t<std::is_integral_v<Number>>>
  std::size_t operator()(Number number) const {
    return (*this)(static_cast<std::uint64_t>(number));
  }
};

template <typename Key, typename Value, typename HashOf = Hash, typename Equal = std::equal_to<Key>>
using Map = std::unordered_map<Key, Value, HashOf, Equal>;

template <typename Key, typename HashOf = Hash>
using Set = std::unordered_set<Key, HashOf>;

}  // namespace salted

#endif
