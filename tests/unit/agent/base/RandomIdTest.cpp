// Unguessable object ids.

#include "agent/base/RandomId.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

std::string drawn() {
  PortableServer::ObjectId_var id = agent::randomObjectId();
  const CORBA::Octet* const octets = id->get_buffer();
  return {octets, octets + id->length()};
}

TEST(RandomObjectId, Has128Bits) {
  EXPECT_EQ(16U, drawn().size());
}

TEST(RandomObjectId, NeverRepeats) {
  std::set<std::string> ids;
  for (int i = 0; i < 1000; ++i) {
    EXPECT_TRUE(ids.insert(drawn()).second);
  }
}

// Every octet is random: a random octet has the same value in all of 64 ids with a
// probability of 2^-504.
TEST(RandomObjectId, DrawsEveryOctet) {
  std::set<char> values[16];
  for (int i = 0; i < 64; ++i) {
    const std::string id = drawn();
    for (std::size_t octet = 0; octet < id.size(); ++octet) {
      values[octet].insert(id[octet]);
    }
  }
  for (const std::set<char>& seen : values) {
    EXPECT_LT(1U, seen.size());
  }
}

}  // namespace
