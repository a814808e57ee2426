#include <gtest/gtest.h>

#include <string>

#include "orb/orb.h"

namespace {

class EncodedBytes : public testing::Test {
 protected:
  static std::size_t encodedBytes(const std::string& text) {
    CORBA::Any value;
    value <<= text.c_str();
    return orb::encodedBytes(value);
  }

  const std::unique_ptr<orb::Orb> orb_ = orb::startClient({});
};

// The length of a string takes four bytes, the terminating zero takes one byte.
TEST_F(EncodedBytes, CountTypeAndText) {
  EXPECT_LE(9U, encodedBytes(""));
  EXPECT_GE(32U, encodedBytes(""));
  EXPECT_EQ(encodedBytes("") + (std::size_t{1} << 20),
            encodedBytes(std::string(std::size_t{1} << 20, 'x')));
}

TEST_F(EncodedBytes, CountANestedValue) {
  CORBA::Any inner;
  inner <<= "text";
  CORBA::Any outer;
  outer <<= inner;
  EXPECT_LT(orb::encodedBytes(inner), orb::encodedBytes(outer));
}

TEST_F(EncodedBytes, CountOnlyTheTypeOfAnEmptyValue) {
  EXPECT_EQ(4U, orb::encodedBytes(CORBA::Any()));
}

}  // namespace
