// Hash tables for keys from clients, network files and stores.
//
// The standard library hashes a number to itself and a text with a fixed seed, so a client can
// choose keys that all collide, and each lookup then takes time linear in the number of keys. Hash
// uses SipHash-2-4 with a random salt, so a client cannot choose colliding keys. The order of
// iteration differs in every process.
//
// Thread-safety: Hash may be used on any thread; the tables are as safe as the standard tables.
// Errors: see Hash.

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

// Returns the SipHash-2-4 of a text.
std::uint64_t sipHash(const Salt& salt, std::string_view text);

// The hash function of the tables below. The first call in a process reads the salt from the
// system, and throws std::system_error when getrandom fails. The operators are not noexcept, so the
// standard library stores the hash of each key instead of computing the hash again.
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
