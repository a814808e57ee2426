// Concurrent events on several threads.

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/Events.h"
#include "tests/unit/topoevent/EventUnderTest.h"

namespace {

using fakes::element;
using fakes::Journal;
using fakes::Notification;
using fakes::subnetwork;

constexpr int kThreads = 4;
constexpr int kRounds = 100;

class TopoEventThreads : public EventUnderTest {
 protected:
  // Runs work(thread number) on several threads.
  template <typename Work>
  static void onThreads(const Work& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&work, i] { work(i); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  }

  // The number of notifications of each kind.
  static std::map<std::string, int> kinds() {
    std::map<std::string, int> result;
    for (const Notification& sent : fakes::notificationsSent()) {
      ++result[sent.kind];
    }
    return result;
  }
};

TEST_F(TopoEventThreads, HandleAllKindsOfEventsAtOnce) {
  onThreads([this](int thread) {
    const std::string number = std::to_string(thread);
    const std::string id = "n" + number;
    for (int round = 0; round < kRounds; ++round) {
      handle(kCreated, {subnetwork(id, "A"), element("OS=1,NE=" + number, "B")});
      handle(kChanged, {subnetwork(id, "C")});
      handle(kDeleted, {subnetwork(id)});
    }
  });
  const std::map<std::string, int> expected = {{"created", 2 * kThreads * kRounds},
                                               {"changed", kThreads * kRounds},
                                               {"deleted", kThreads * kRounds}};
  EXPECT_EQ(kinds(), expected);
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(TopoEventThreads, ReportEveryNewLabelOnceInTestMode) {
  fakes::agent().testSwitch = true;
  for (int thread = 0; thread < kThreads; ++thread) {
    topo::nodeLabelCache.append(own(std::to_string(thread)), "");
  }
  onThreads([this](int thread) {
    const std::string number = std::to_string(thread);
    for (int round = 0; round < kRounds; ++round) {
      const auto node = subnetwork(own(number), number + "/" + std::to_string(round));
      handle(kChanged, {node});
      handle(kChanged, {node});  // the cache has this label
    }
  });
  EXPECT_EQ(fakes::notificationsSent().size(), static_cast<std::size_t>(kThreads * kRounds));
}

TEST_F(TopoEventThreads, ReportOneChangeThatAllDeliverOnce) {
  fakes::agent().testSwitch = true;
  topo::nodeLabelCache.append(own("a"), "");
  for (int round = 0; round < kRounds; ++round) {
    const auto node = subnetwork(own("a"), std::to_string(round));
    onThreads([&](int) { handle(kChanged, {node}); });
    ASSERT_EQ(fakes::notificationsSent().size(), static_cast<std::size_t>(round + 1));
  }
}

TEST_F(TopoEventThreads, ReportOneLabelOfManyNodesOnce) {
  fakes::agent().testSwitch = true;
  for (int round = 0; round < kRounds; ++round) {
    const std::string label = std::to_string(round);
    onThreads(
        [&](int thread) { handle(kChanged, {subnetwork(own(std::to_string(thread)), label)}); });
    ASSERT_EQ(fakes::notificationsSent().size(), static_cast<std::size_t>(round + 1));
  }
}

TEST_F(TopoEventThreads, HoldNoLockWhileANotificationIsSent) {
  fakes::agent().testSwitch = true;
  topo::nodeLabelCache.append(own("a"), "");
  bool delivered = false;
  // Handles an event on another thread while the first event is in the notification call.
  fakes::onCall("OnObjectAVC", 1, [&]() -> CORBA::ULong {
    std::thread other([&] { delivered = handle(kChanged, {subnetwork(own("a"), "B")}) == 0; });
    other.join();
    return 0;
  });
  handle(kChanged, {subnetwork(own("a"), "A")});
  EXPECT_TRUE(delivered);
  EXPECT_EQ(fakes::notificationsSent().size(), 2U);
}

TEST_F(TopoEventThreads, HandleEventsWhileTheManagerIsCleanedUp) {
  onThreads([this](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      if (thread == 0) {
        TopoEventMgr::CleanUp();
      } else {
        handle(kDeleted, {subnetwork("a")});
      }
    }
  });
  EXPECT_EQ(fakes::notificationsSent().size(), static_cast<std::size_t>((kThreads - 1) * kRounds));
}

}  // namespace
