#include "hash/SaltedHash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <unordered_set>

#include "tests/support/CollidingKeys.h"

namespace {

// The most keys that one bucket of a table has.
template <typename Table>
std::size_t longestBucket(const Table& table) {
  std::size_t longest = 0;
  for (std::size_t bucket = 0; bucket < table.bucket_count(); ++bucket) {
    longest = std::max(longest, table.bucket_size(bucket));
  }
  return longest;
}

template <typename Table, typename Keys>
std::size_t longestBucketWith(const Keys& keys) {
  Table table;
  table.insert(keys.begin(), keys.end());
  EXPECT_EQ(keys.size(), table.size());
  return longestBucket(table);
}

constexpr std::size_t kLongestOfRandomKeys = 16;  // one in a thousand million runs has a longer one

// The key and the texts of the paper that SipHash was published in: 00, 01, 02 ...
std::string firstBytes(std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) {
    bytes += static_cast<char>(i);
  }
  return bytes;
}

TEST(SaltedHash, IsSipHash) {
  const salted::Salt salt = {0x0706050403020100, 0x0f0e0d0c0b0a0908};
  EXPECT_EQ(0x726fdb47dd0e0e31U, salted::sipHash(salt, ""));
  EXPECT_EQ(0x74f839c593dc67fdU, salted::sipHash(salt, firstBytes(1)));
  EXPECT_EQ(0xab0200f58b01d137U, salted::sipHash(salt, firstBytes(7)));
  EXPECT_EQ(0x93f5f5799a932462U, salted::sipHash(salt, firstBytes(8)));
  EXPECT_EQ(0xa129ca6149be45e5U, salted::sipHash(salt, firstBytes(15)));
}

TEST(SaltedHash, DependsOnTheSalt) {
  EXPECT_NE(salted::sipHash({1, 2}, "text"), salted::sipHash({1, 3}, "text"));
  EXPECT_NE(salted::sipHash({1, 2}, "text"), salted::sipHash({3, 2}, "text"));
}

TEST(SaltedHash, UsesARandomSalt) {
  EXPECT_NE(salted::sipHash({0, 0}, "text"), salted::Hash()("text"));
}

TEST(SaltedHash, StaysTheSameWithinAProcess) {
  EXPECT_EQ(salted::Hash()("text"), salted::Hash()(std::string("text")));
  EXPECT_EQ(salted::Hash()(std::int32_t{7}), salted::Hash()(std::uint64_t{7}));
}

TEST(SaltedHash, SpreadsNumbersThatCollideInAPlainTable) {
  const auto numbers = support::collidingNumbers();
  EXPECT_EQ(support::kCollidingNumbers,
            (longestBucketWith<std::unordered_set<std::int32_t>>(numbers)));
  EXPECT_GE(kLongestOfRandomKeys, (longestBucketWith<salted::Set<std::int32_t>>(numbers)));
}

TEST(SaltedHash, SpreadsTextsThatCollideInAPlainTable) {
  const auto texts = support::collidingTexts(500);
  EXPECT_EQ(500U, (longestBucketWith<std::unordered_set<std::string>>(texts)));
  EXPECT_GE(kLongestOfRandomKeys, (longestBucketWith<salted::Set<std::string>>(texts)));
}

}  // namespace
