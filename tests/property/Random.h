// Random test cases with a seed that repeats them.

#ifndef TESTS_PROPERTY_RANDOM_H
#define TESTS_PROPERTY_RANDOM_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <vector>

// Prints its seed. The environment variable TOPO_TEST_SEED sets the seed.
class Random {
 public:
  Random() : seed_(chosenSeed()), engine_(seed_) {
    std::cout << "TOPO_TEST_SEED=" << seed_ << std::endl;
    ::testing::Test::RecordProperty("seed", std::to_string(seed_));
  }

  unsigned seed() const { return seed_; }

  // A number from first to last, inclusive.
  int number(int first, int last) {
    return std::uniform_int_distribution<int>(first, last)(engine_);
  }

  std::string text(const std::string& alphabet, int longest) {
    std::string result;
    for (int left = number(0, longest); left > 0; --left) {
      result +=
          alphabet[static_cast<std::size_t>(number(0, static_cast<int>(alphabet.size()) - 1))];
    }
    return result;
  }

 private:
  static unsigned chosenSeed() {
    const char* given = std::getenv("TOPO_TEST_SEED");
    return given != nullptr ? static_cast<unsigned>(std::stoul(given)) : std::random_device()();
  }

  const unsigned seed_;
  std::mt19937 engine_;
};

#endif
