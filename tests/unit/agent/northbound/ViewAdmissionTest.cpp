// Admission of views: number, bytes, order of waiting, and close.

#include "agent/northbound/ViewAdmission.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "orb/orb.h"

namespace {

using agent::ViewAdmission;
using agent::ViewLimits;
using agent::ViewReply;
using std::chrono::milliseconds;

// A timeout that no test reaches.
constexpr milliseconds kPatience{60000};

class Admission : public testing::Test {
 protected:
  static constexpr std::size_t kMegabyte = 1000000;

  // Starts a view on a new thread. Returns when the view is waiting or admitted.
  std::future<ViewAdmission::Pass> waitingView(ViewAdmission& admission, std::size_t bytes) {
    const std::size_t before = admission.waiting();
    auto pass =
        std::async(std::launch::async, [&admission, bytes] { return admission.admit(bytes); });
    while (admission.waiting() == before &&
           pass.wait_for(milliseconds(0)) == std::future_status::timeout) {
      std::this_thread::yield();
    }
    return pass;
  }

  // Whether a view is admitted by a notification, before the end of its patience.
  static bool isAdmittedInTime(std::future<ViewAdmission::Pass>& view) {
    return view.wait_for(kPatience / 3) == std::future_status::ready;
  }

  bool allows(std::size_t bytes) {
    asked_ = bytes;
    return bytes <= free_;
  }

  ViewAdmission admission(const ViewLimits& limits) {
    return {limits, [this](std::size_t bytes) { return allows(bytes); },
            std::chrono::steady_clock::now};
  }

  std::size_t free_ = 100 * kMegabyte;  // bytes that the process may allocate
  std::size_t asked_ = 0;               // bytes of the last question
};

TEST_F(Admission, LimitsTheNumberOfComputedViews) {
  ViewAdmission views = admission({2, 100 * kMegabyte, milliseconds(0)});
  ViewAdmission::Pass first = views.admit(1);
  const ViewAdmission::Pass second = views.admit(1);
  EXPECT_THROW(views.admit(1), CORBA::NO_RESOURCES);
  first.computed(1);
  const ViewAdmission::Pass third = views.admit(1);
}

TEST_F(Admission, ReleasesThePlaceOfAFailedView) {
  ViewAdmission views = admission({1, 10 * kMegabyte, milliseconds(0)});
  static_cast<void>(views.admit(10 * kMegabyte));
  const ViewAdmission::Pass next = views.admit(10 * kMegabyte);
  EXPECT_EQ(10 * kMegabyte, asked_);
}

TEST_F(Admission, AdmitsWaitingViewsInTheOrderOfTheirArrival) {
  ViewAdmission views = admission({1, 100 * kMegabyte, kPatience});
  std::optional<ViewAdmission::Pass> running = views.admit(1);
  std::future<ViewAdmission::Pass> first = waitingView(views, 1);
  std::future<ViewAdmission::Pass> second = waitingView(views, 1);
  running.reset();
  EXPECT_TRUE(isAdmittedInTime(first));
  const ViewAdmission::Pass next = first.get();
  EXPECT_EQ(1U, views.waiting());
  EXPECT_EQ(std::future_status::timeout, second.wait_for(milliseconds(0)));
  views.close();
  EXPECT_THROW(second.get(), CORBA::TRANSIENT);
}

TEST_F(Admission, AdmitsTheNextViewAfterATimeout) {
  ViewAdmission views = admission({1, 100 * kMegabyte, milliseconds(0)});
  std::optional<ViewAdmission::Pass> running = views.admit(1);
  EXPECT_THROW(views.admit(1), CORBA::NO_RESOURCES);
  EXPECT_EQ(0U, views.waiting());
  running.reset();
  const ViewAdmission::Pass next = views.admit(1);
}

// An unread reply counts in bytes, but not among the computed views.
TEST_F(Admission, CountsTheBytesOfAViewUntilItsReplyWasSent) {
  ViewAdmission views = admission({2, 10 * kMegabyte, milliseconds(0)});
  std::optional<ViewAdmission::Pass> unread = views.admit(9 * kMegabyte);
  unread->computed(6 * kMegabyte);
  EXPECT_THROW(views.admit(5 * kMegabyte), CORBA::NO_RESOURCES);
  const ViewAdmission::Pass small = views.admit(4 * kMegabyte);
  unread.reset();
  const ViewAdmission::Pass other = views.admit(5 * kMegabyte);
}

TEST_F(Admission, CountsViewsInProgressAndEndedViews) {
  ViewAdmission views = admission({2, 10 * kMegabyte, milliseconds(0)});
  std::optional<ViewAdmission::Pass> view = views.admit(1);
  view->computed(1);
  EXPECT_EQ(1U, views.load().inProgress);
  EXPECT_EQ(0U, views.load().ended);
  view.reset();
  EXPECT_EQ(0U, views.load().inProgress);
  EXPECT_EQ(1U, views.load().ended);
}

TEST_F(Admission, AdmitsAnOversizedViewWhenNoOtherIsInProgress) {
  ViewAdmission views = admission({2, 10 * kMegabyte, milliseconds(0)});
  std::optional<ViewAdmission::Pass> large = views.admit(20 * kMegabyte);
  EXPECT_THROW(views.admit(1), CORBA::NO_RESOURCES);
  large.reset();
  const ViewAdmission::Pass small = views.admit(1);
  EXPECT_THROW(views.admit(20 * kMegabyte), CORBA::NO_RESOURCES);
}

// --- Memory of the process.

TEST_F(Admission, RefusesAViewAtOnceWhenMemoryIsShortAndNoViewIsInProgress) {
  ViewAdmission views = admission({2, 1000 * kMegabyte, kPatience});
  EXPECT_THROW(views.admit(101 * kMegabyte), CORBA::NO_RESOURCES);
  const ViewAdmission::Pass smaller = views.admit(100 * kMegabyte);
}

TEST_F(Admission, ReservesMemoryForComputedViews) {
  ViewAdmission views = admission({3, 1000 * kMegabyte, milliseconds(0)});
  ViewAdmission::Pass first = views.admit(60 * kMegabyte);
  EXPECT_THROW(views.admit(60 * kMegabyte), CORBA::NO_RESOURCES);
  EXPECT_EQ(120 * kMegabyte, asked_);
  // The use of the process includes the memory of a computed view.
  first.computed(60 * kMegabyte);
  const ViewAdmission::Pass second = views.admit(60 * kMegabyte);
  EXPECT_EQ(60 * kMegabyte, asked_);
}

TEST_F(Admission, AdmitsAWaitingViewWhenAnotherReleasesMemory) {
  ViewAdmission views = admission({2, 1000 * kMegabyte, kPatience});
  std::optional<ViewAdmission::Pass> running = views.admit(60 * kMegabyte);
  std::future<ViewAdmission::Pass> waiting = waitingView(views, 60 * kMegabyte);
  running.reset();
  EXPECT_TRUE(isAdmittedInTime(waiting));
}

TEST_F(Admission, AdmitsAWaitingViewWhenAnotherIsComputed) {
  ViewAdmission views = admission({1, 100 * kMegabyte, kPatience});
  ViewAdmission::Pass running = views.admit(1);
  std::future<ViewAdmission::Pass> waiting = waitingView(views, 1);
  running.computed(1);
  EXPECT_TRUE(isAdmittedInTime(waiting));
}

TEST_F(Admission, AdmitsEveryWaitingViewThatFits) {
  ViewAdmission views = admission({2, 10 * kMegabyte, kPatience});
  std::optional<ViewAdmission::Pass> running = views.admit(10 * kMegabyte);
  std::future<ViewAdmission::Pass> first = waitingView(views, 1);
  std::future<ViewAdmission::Pass> second = waitingView(views, 1);
  running.reset();
  EXPECT_TRUE(isAdmittedInTime(first));
  EXPECT_TRUE(isAdmittedInTime(second));
}

// --- Close.

TEST_F(Admission, RefusesViewsWhileItIsClosed) {
  ViewAdmission views = admission({2, 10 * kMegabyte, kPatience});
  views.close();
  EXPECT_THROW(views.admit(1), CORBA::TRANSIENT);
  views.open();
  const ViewAdmission::Pass pass = views.admit(1);
}

TEST_F(Admission, CloseEndsEveryWait) {
  ViewAdmission views = admission({1, 10 * kMegabyte, kPatience});
  const ViewAdmission::Pass running = views.admit(1);
  std::vector<std::future<ViewAdmission::Pass>> waiting;
  waiting.reserve(3);
  for (int i = 0; i < 3; ++i) {
    waiting.push_back(waitingView(views, 1));
  }
  views.close();
  for (std::future<ViewAdmission::Pass>& view : waiting) {
    EXPECT_THROW(view.get(), CORBA::TRANSIENT);
  }
}

// --- Replies.

TEST_F(Admission, KeepsThePassOfAViewUntilItsReplyWasSent) {
  ViewAdmission views = admission({1, 10 * kMegabyte, milliseconds(0)});
  std::shared_ptr<ViewReply> reply = ViewReply::begin();
  ViewReply::keep(views.admit(1));
  EXPECT_THROW(views.admit(1), CORBA::NO_RESOURCES);
  reply.reset();
  const ViewAdmission::Pass next = views.admit(1);
}

TEST_F(Admission, DropsThePassOfAViewWithoutAReply) {
  ViewAdmission views = admission({1, 10 * kMegabyte, milliseconds(0)});
  ViewReply::begin().reset();
  ViewReply::keep(views.admit(1));
  const ViewAdmission::Pass next = views.admit(1);
}

}  // namespace
