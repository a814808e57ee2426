#include "client/base/RetryDelay.h"

#include <gtest/gtest.h>

namespace topoctl {
namespace {

using std::chrono::milliseconds;

TEST(RetryDelay, DoublesUpToItsMaximum) {
  RetryDelay delay(milliseconds(1), milliseconds(5));
  for (const int expected : {1, 2, 4, 5, 5}) {
    EXPECT_EQ(delay.next(), milliseconds(expected));
  }
}

TEST(RetryDelay, ResetRestoresTheFirstDelay) {
  RetryDelay delay(milliseconds(1), milliseconds(5));
  delay.next();
  delay.next();
  delay.reset();
  EXPECT_EQ(delay.next(), milliseconds(1));
}

}  // namespace
}  // namespace topoctl
