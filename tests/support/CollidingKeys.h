// Keys that all fall into one bucket of the standard library's hash tables, and what work on keys
// costs.

#ifndef TESTS_SUPPORT_COLLIDINGKEYS_H
#define TESTS_SUPPORT_COLLIDINGKEYS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/ProcessorTime.h"

namespace support {

// As many keys as a table of the standard library has buckets then, be it grown or made for them.
constexpr std::size_t kCollidingNumbers = 5087;

// Multiples of the number of buckets.
inline std::vector<std::int32_t> collidingNumbers() {
  std::vector<std::int32_t> numbers;
  for (std::size_t i = 1; i <= kCollidingNumbers; ++i) {
    numbers.push_back(static_cast<std::int32_t>(i * kCollidingNumbers));
  }
  return numbers;
}

// UTF-8 texts without control characters, all of one length. After one of the two blocks the
// standard library's hash differs from that after the other in its highest bit alone, whatever its
// seed is, and the same block once more takes the difference away again.
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

// As many texts of the same length that do not collide.
inline std::vector<std::string> ordinaryTexts(std::size_t count) {
  std::vector<std::string> texts = collidingTexts(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    texts[i] = number + std::string(texts[i].size() - number.size(), '.');
  }
  return texts;
}

// The processor time of this thread that some work takes, in seconds.
template <typename Work>
double costOf(Work work) {
  const auto start = processorTime();
  work();
  return std::chrono::duration<double>(processorTime() - start).count();
}

// Whether work on hostile keys costs about as much as the same on ordinary ones. Keys that collide
// in a table cost hundreds of times as much.
inline bool isComparable(double hostile, double ordinary) {
  return hostile < 10 * ordinary + 0.02;
}

}  // namespace support

#endif
