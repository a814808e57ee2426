#include "agent/access/AddressRange.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace agent {
namespace {

using testing::HasSubstr;

bool contains(const std::string& range, const std::string& address) {
  return AddressRange::parse(range).contains(*IpAddress::parse(address));
}

std::string problemWith(const std::string& range) {
  try {
    AddressRange::parse(range);
  } catch (const std::invalid_argument& problem) {
    return problem.what();
  }
  return "";
}

TEST(IpAddress, ParsesNumericAddressesOnly) {
  for (const char* const text : {"192.0.2.1", "::1", "2001:db8::1", "fe80::1%eth0"}) {
    EXPECT_TRUE(IpAddress::parse(text)) << text;
  }
  for (const char* const text : {"", "localhost", "192.0.2", "192.0.2.1:80", "[::1]", "::g"}) {
    EXPECT_FALSE(IpAddress::parse(text)) << text;
  }
}

TEST(IpAddress, EqualsItsMappedAddress) {
  EXPECT_EQ(*IpAddress::parse("192.0.2.1"), *IpAddress::parse("::ffff:192.0.2.1"));
  EXPECT_NE(*IpAddress::parse("192.0.2.1"), *IpAddress::parse("::192.0.2.1"));
}

TEST(IpAddress, KnowsTheLoopback) {
  for (const char* const text : {"127.0.0.1", "127.255.0.9", "::1", "::ffff:127.0.0.1"}) {
    EXPECT_TRUE(IpAddress::parse(text)->isLoopback()) << text;
  }
  for (const char* const text : {"128.0.0.1", "0.0.0.0", "::", "::2", "10.0.0.1", "::127.0.0.1"}) {
    EXPECT_FALSE(IpAddress::parse(text)->isLoopback()) << text;
  }
}

TEST(AddressRange, ContainsTheAddressesWithItsPrefix) {
  EXPECT_TRUE(contains("10.1.0.0/16", "10.1.0.0"));
  EXPECT_TRUE(contains("10.1.0.0/16", "10.1.255.255"));
  EXPECT_FALSE(contains("10.1.0.0/16", "10.2.0.0"));
  EXPECT_TRUE(contains("10.1.2.160/27", "10.1.2.191"));
  EXPECT_FALSE(contains("10.1.2.160/27", "10.1.2.192"));
  EXPECT_TRUE(contains("2001:db8::/33", "2001:db8:7fff::1"));
  EXPECT_FALSE(contains("2001:db8::/33", "2001:db8:8000::1"));
  EXPECT_TRUE(contains("10.1.0.0/16", "::ffff:10.1.2.3"));
}

TEST(AddressRange, OfOneFamilyExcludesTheOther) {
  EXPECT_TRUE(contains("0.0.0.0/0", "192.0.2.1"));
  EXPECT_FALSE(contains("0.0.0.0/0", "2001:db8::1"));
  EXPECT_FALSE(contains("::/64", "192.0.2.1"));
  EXPECT_FALSE(contains("::/0", "192.0.2.1"));
  EXPECT_TRUE(contains("::ffff:0:0/96", "192.0.2.1"));
}

TEST(AddressRange, WithoutALengthIsOneAddress) {
  EXPECT_TRUE(contains("192.0.2.1", "192.0.2.1"));
  EXPECT_FALSE(contains("192.0.2.1", "192.0.2.0"));
  EXPECT_TRUE(contains("2001:db8::1", "2001:db8::1"));
}

TEST(AddressRange, RejectsOtherTexts) {
  for (const char* const text : {"", "host", "10.1.0.0/", "10.1.0.0/x", "10.1.0.0/33",
                                 "10.1.0.0/-1", "10.1.0.0/1/2", "2001:db8::/129", "fe80::1%eth0"}) {
    EXPECT_NE("", problemWith(text)) << text;
  }
  EXPECT_EQ("'10.1.0.0/33' has no prefix length from 0 to 32", problemWith("10.1.0.0/33"));
  EXPECT_EQ("'host' is not a numeric address or ADDRESS/LENGTH", problemWith("host"));
}

TEST(AddressRange, RejectsAddressBitsAfterThePrefix) {
  EXPECT_EQ("'10.1.2.3/16' has address bits after its prefix", problemWith("10.1.2.3/16"));
  EXPECT_THAT(problemWith("2001:db8::1/64"), HasSubstr("after its prefix"));
}

}  // namespace
}  // namespace agent
