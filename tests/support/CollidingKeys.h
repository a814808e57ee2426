// Keys that all collide in the standard library's hash tables, and the cost of work on keys.

#ifndef TESTS_SUPPORT_COLLIDINGKEYS_H
#define TESTS_SUPPORT_COLLIDINGKEYS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/ProcessorTime.h"

namespace support {

// The number of buckets of a standard table with this many keys, whether grown or reserved.
constexpr std::size_t kCollidingNumbers = 5087;

// Multiples of the number of buckets.
inline std::vector<std::int32_t> collidingNumbers() {
  std::vector<std::int32_t> numbers;
  for (std::size_t i = 1; i <= kCollidingNumbers; ++i) {
    numbers.push_back(static_cast<std::int32_t>(i * kCollidingNumbers));
  }
  return numbers;
}

// UTF-8 texts of equal length, without control characters. For every seed, the two blocks change
// the state of the standard library's hash equally except for the highest bit. A second block of
// the same kind changes the highest bit back.
inline std::vector<std::string> collidingTexts(std::size_t count) {
  const std::string one = "Xd5eov\xd7\xb8";
  const std::string other = "XdxK\xd4\x90/*";
  std::vector<std::string> texts = {""};
  while (texts.size() < count) {
    const std::size_t known = texts.size();
    for (std::size_t i = 0; i < known; ++i) {
      texts.push_back(texts[i] + other + other);
      texts[i] += one + one;
    }
  }
  texts.resize(count);
  return texts;
}

// As many texts of the same length, without collisions.
inline std::vector<std::string> ordinaryTexts(std::size_t count) {
  std::vector<std::string> texts = collidingTexts(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    texts[i] = number + std::string(texts[i].size() - number.size(), '.');
  }
  return texts;
}

// The processor time of this thread for some work, in seconds.
template <typename Work>
double costOf(Work work) {
  const auto start = processorTime();
  work();
  return std::chrono::duration<double>(processorTime() - start).count();
}

// Whether work on hostile keys costs about as much as work on ordinary keys. Colliding keys cost
// hundreds of times as much.
inline bool isComparable(double hostile, double ordinary) {
  return hostile < 10 * ordinary + 0.02;
}

}  // namespace support

#endif
