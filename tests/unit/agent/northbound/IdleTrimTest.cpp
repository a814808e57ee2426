#include "agent/northbound/IdleTrim.h"

#include <gtest/gtest.h>

namespace {

using agent::IdleTrim;
using std::chrono::milliseconds;

// Advances the clock before each call.
class IdleTrimOfAnAgent : public testing::Test {
 protected:
  bool isDueAfter(milliseconds passed) {
    now_ += passed;
    return trim_.isDue(activity_, now_);
  }

  // A view ends, and the next call notices its end.
  void endView() {
    ++activity_.ended;
    EXPECT_FALSE(isDueAfter(kAtOnce));
  }

  static constexpr milliseconds kAtOnce{0};
  static constexpr milliseconds kTick{1};
  static constexpr milliseconds kSoon = IdleTrim::kPauseWithoutClients;
  static constexpr milliseconds kLate = IdleTrim::kPauseOfClients;

  IdleTrim::Activity activity_;

 private:
  IdleTrim trim_;
  IdleTrim::Time now_;
};

TEST_F(IdleTrimOfAnAgent, IsDueOnceAfterTheStart) {
  EXPECT_FALSE(isDueAfter(kAtOnce));
  EXPECT_FALSE(isDueAfter(kSoon - kTick));
  EXPECT_TRUE(isDueAfter(kTick));
  EXPECT_FALSE(isDueAfter(kLate));
}

TEST_F(IdleTrimOfAnAgent, IsDueOnceAfterTheLastView) {
  endView();
  EXPECT_TRUE(isDueAfter(kSoon));
  EXPECT_FALSE(isDueAfter(kLate));
}

TEST_F(IdleTrimOfAnAgent, WaitsWhileViewsFollowEachOther) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(isDueAfter(kSoon - kTick));
    endView();
  }
  EXPECT_TRUE(isDueAfter(kSoon));
}

TEST_F(IdleTrimOfAnAgent, WaitsForThePauseAfterALongView) {
  activity_.inProgress = true;
  EXPECT_FALSE(isDueAfter(kLate));
  EXPECT_FALSE(isDueAfter(kLate));
  activity_.inProgress = false;
  endView();
  EXPECT_FALSE(isDueAfter(kSoon - kTick));
  EXPECT_TRUE(isDueAfter(kTick));
}

TEST_F(IdleTrimOfAnAgent, IsDueAgainAfterALaterView) {
  endView();
  EXPECT_TRUE(isDueAfter(kSoon));
  endView();
  EXPECT_TRUE(isDueAfter(kSoon));
}

TEST_F(IdleTrimOfAnAgent, WaitsLongerWhileClientsAreConnected) {
  activity_.hasClients = true;
  endView();
  EXPECT_FALSE(isDueAfter(kLate - kTick));
  EXPECT_TRUE(isDueAfter(kTick));
  EXPECT_FALSE(isDueAfter(kLate));
}

TEST_F(IdleTrimOfAnAgent, IsDueSoonAfterTheLastClientHasGone) {
  activity_.hasClients = true;
  endView();
  EXPECT_FALSE(isDueAfter(kSoon));
  activity_.hasClients = false;
  EXPECT_TRUE(isDueAfter(kTick));
}

TEST_F(IdleTrimOfAnAgent, IsNotDueAgainWhenClientsComeAndGoWithoutAView) {
  endView();
  EXPECT_TRUE(isDueAfter(kSoon));
  activity_.hasClients = true;
  EXPECT_FALSE(isDueAfter(kLate));
  activity_.hasClients = false;
  EXPECT_FALSE(isDueAfter(kLate));
}

}  // namespace
