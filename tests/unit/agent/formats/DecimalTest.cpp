#include "agent/formats/Decimal.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using agent::thousandthsOf;

TEST(Decimal, RoundsHalvesAwayFromZero) {
  EXPECT_EQ(1, thousandthsOf("0.0005"));
  EXPECT_EQ(-1, thousandthsOf("-0.0005"));
  EXPECT_EQ(0, thousandthsOf("0.0004999999999999999999999999999999999999999"));
  EXPECT_EQ(2, thousandthsOf("0.0015"));
  EXPECT_EQ(-180000, thousandthsOf("-179.9999"));
}

// The nearest binary number to each of these numbers is below the half.
TEST(Decimal, RoundsHalvesWithoutAnExactBinaryForm) {
  EXPECT_EQ(32384, thousandthsOf("32.3835"));
  EXPECT_EQ(-32384, thousandthsOf("-32.3835"));
  EXPECT_EQ(1, thousandthsOf("0.0005000000000000000000000000000000000000000"));
  EXPECT_EQ(1006, thousandthsOf("1.0055"));
}

TEST(Decimal, AcceptsDigitsOnOneSideOfThePoint) {
  EXPECT_EQ(500, thousandthsOf(".5"));
  EXPECT_EQ(5000, thousandthsOf("5."));
  EXPECT_EQ(7000, thousandthsOf("007"));
}

TEST(Decimal, AcceptsExponents) {
  EXPECT_EQ(32384, thousandthsOf("3.23835e1"));
  EXPECT_EQ(32384, thousandthsOf("323835E-4"));
  EXPECT_EQ(1200000, thousandthsOf("12e+2"));
  EXPECT_EQ(0, thousandthsOf("5e-5"));
  EXPECT_EQ(1, thousandthsOf("5e-4"));
}

TEST(Decimal, RoundsTinyNumbersToZero) {
  EXPECT_EQ(0, thousandthsOf("1e-999"));
  EXPECT_EQ(0, thousandthsOf("-9e-99999999999999999999999999"));
  EXPECT_EQ(0, thousandthsOf("0." + std::string(100000, '0') + "9"));
}

TEST(Decimal, AcceptsZeroWithAnyExponent) {
  EXPECT_EQ(0, thousandthsOf("-0"));
  EXPECT_EQ(0, thousandthsOf("0.000e99999999999999999999999999"));
}

TEST(Decimal, AcceptsManyDigitsWithACompensatingExponent) {
  EXPECT_EQ(1235, thousandthsOf("0." + std::string(1000, '0') + "12345e1001"));
  EXPECT_EQ(1235, thousandthsOf("12345" + std::string(1000, '0') + "e-1004"));
}

TEST(Decimal, RejectsThousandthsBeyond32Bits) {
  EXPECT_EQ(2147483647, thousandthsOf("2147483.6474"));
  EXPECT_EQ(std::nullopt, thousandthsOf("2147483.6475"));
  EXPECT_EQ(-2147483647 - 1, thousandthsOf("-2147483.6484"));
  EXPECT_EQ(std::nullopt, thousandthsOf("-2147483.6485"));
  EXPECT_EQ(std::nullopt, thousandthsOf("99999999999999999999"));
  EXPECT_EQ(std::nullopt, thousandthsOf("1e999"));
  EXPECT_EQ(std::nullopt, thousandthsOf("1e99999999999999999999999999"));
}

TEST(Decimal, RejectsEverythingButDecimalNumbers) {
  for (const char* text : {"", "-", ".", "-.", "+1", "1e", "1e+", "1e5.0", "e5", "1.2.3", "--1",
                           " 1", "1 ", "0x10", "1,5", "nan", "inf", "-infinity", "4.8N"}) {
    EXPECT_EQ(std::nullopt, thousandthsOf(text)) << text;
  }
}

}  // namespace
