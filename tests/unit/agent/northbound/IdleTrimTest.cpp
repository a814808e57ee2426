#include "agent/northbound/IdleTrim.h"

#include <gtest/gtest.h>

namespace {

using agent::IdleTrim;

TEST(IdleTrim, IsDueOnceAfterTheStart) {
  IdleTrim trim;
  EXPECT_TRUE(trim.isDue(false, 0));
  EXPECT_FALSE(trim.isDue(false, 0));
}

TEST(IdleTrim, IsDueOnceAfterAnIntervalWithoutAView) {
  IdleTrim trim;
  EXPECT_FALSE(trim.isDue(false, 1));
  EXPECT_TRUE(trim.isDue(false, 1));
  EXPECT_FALSE(trim.isDue(false, 1));
}

TEST(IdleTrim, WaitsWhileViewsFollowEachOther) {
  IdleTrim trim;
  EXPECT_FALSE(trim.isDue(false, 1));
  EXPECT_FALSE(trim.isDue(false, 2));
  EXPECT_FALSE(trim.isDue(false, 5));
  EXPECT_TRUE(trim.isDue(false, 5));
}

TEST(IdleTrim, WaitsForAnIntervalAfterTheEndOfALongView) {
  IdleTrim trim;
  EXPECT_FALSE(trim.isDue(true, 0));
  EXPECT_FALSE(trim.isDue(true, 0));
  EXPECT_FALSE(trim.isDue(false, 1));
  EXPECT_TRUE(trim.isDue(false, 1));
}

TEST(IdleTrim, IsDueAgainAfterALaterView) {
  IdleTrim trim;
  EXPECT_TRUE(trim.isDue(false, 0));
  EXPECT_FALSE(trim.isDue(false, 1));
  EXPECT_TRUE(trim.isDue(false, 1));
}

}  // namespace
