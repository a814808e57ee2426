#include "topoevent/TopoEventMgr.h"

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "ace/Guard_T.h"
#include "ace/Recursive_Thread_Mutex.h"
#include "ace/Static_Object_Lock.h"
#include "tests/fakes/Events.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/Security.h"
#include "tests/fakes/StaticObjectLock.h"
#include "topoevent/CorbaTopoEventHandler.h"

namespace {

using Lines = std::vector<std::string>;
using Handlers = std::vector<TEEventHandler*>;

using fakes::Journal;

const Lines kUnSubscribed = {"UnSubscribe(372)", "UnSubscribe(373)", "UnSubscribe(374)"};

// The exceptions that the platform may throw.
std::vector<fakes::Step> anyFailure() {
  return {fakes::raiseProcessException(7), fakes::raiseInterfaceNotExist(),
          fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(), fakes::raiseTransient()};
}

class TopoEventMgrTest : public fakes::PlatformFixture {
 protected:
  ~TopoEventMgrTest() override { TopoEventMgr::CleanUp(); }

  int subscribe() { return TopoEventMgr::OnSubscibeEvent(&handler_); }
  int unSubscribe() { return TopoEventMgr::OnUnSubscibeEvent(&handler_); }

  NS_CORBA::CorbaTopoEventHandler handler_;
};

// --- The instance.

using TopoEventMgrInstance = TopoEventMgrTest;

TEST_F(TopoEventMgrInstance, IsMadeOnFirstUseAndIsAlwaysTheSame) {
  TopoEventMgr* const instance = TopoEventMgr::Instance();
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(TopoEventMgr::Instance(), instance);
}

TEST_F(TopoEventMgrInstance, IsMadeAgainAfterACleanUp) {
  TopoEventMgr::Instance();
  TopoEventMgr::CleanUp();
  {
    const fakes::FailingStaticObjectLock failing;
    EXPECT_EQ(TopoEventMgr::Instance(), nullptr);
  }
  EXPECT_NE(TopoEventMgr::Instance(), nullptr);
}

TEST_F(TopoEventMgrInstance, IsNullWhenItCannotBeMadeUnderTheLock) {
  {
    const fakes::FailingStaticObjectLock failing;
    EXPECT_EQ(TopoEventMgr::Instance(), nullptr);
    EXPECT_EQ(TopoEventMgr::Instance(), nullptr);
  }
  EXPECT_NE(TopoEventMgr::Instance(), nullptr);
}

TEST_F(TopoEventMgrInstance, NeedsNoLockAfterItsCreation) {
  TopoEventMgr* const instance = TopoEventMgr::Instance();
  const fakes::FailingStaticObjectLock failing;
  EXPECT_EQ(TopoEventMgr::Instance(), instance);
}

TEST_F(TopoEventMgrInstance, StaysWhenItCannotBeCleanedUpUnderTheLock) {
  TopoEventMgr* const instance = TopoEventMgr::Instance();
  const fakes::FailingStaticObjectLock failing;
  TopoEventMgr::CleanUp();
  EXPECT_EQ(TopoEventMgr::Instance(), instance);
}

TEST_F(TopoEventMgrInstance, AllowsACleanUpWithoutAnInstance) {
  TopoEventMgr::CleanUp();
  TopoEventMgr::CleanUp();
  EXPECT_NE(TopoEventMgr::Instance(), nullptr);
}

TEST_F(TopoEventMgrInstance, IsOneForAllThreads) {
  for (int round = 0; round < 100; ++round) {
    TopoEventMgr::CleanUp();
    TopoEventMgr* seen[4] = {};
    std::vector<std::thread> threads;
    for (TopoEventMgr*& each : seen) {
      threads.emplace_back([&each] { each = TopoEventMgr::Instance(); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    for (const TopoEventMgr* each : seen) {
      ASSERT_NE(each, nullptr);
      ASSERT_EQ(each, seen[0]);
    }
  }
}

TEST_F(TopoEventMgrInstance, IsSharedWithAThreadThatWaitedForItsCreation) {
  TopoEventMgr* theirs = nullptr;
  TopoEventMgr* ours = nullptr;
  std::atomic<bool> ended{false};
  std::thread other;
  {
    const ACE_Guard<ACE_Recursive_Thread_Mutex> guard(*ACE_Static_Object_Lock::instance());
    other = std::thread([&] {
      theirs = TopoEventMgr::Instance();
      ended = true;
    });
    while (!ended && !fakes::staticObjectLockIsWaitedFor()) {
      std::this_thread::yield();
    }
    EXPECT_FALSE(ended);
    ours = TopoEventMgr::Instance();
  }
  other.join();
  EXPECT_NE(ours, nullptr);
  EXPECT_EQ(theirs, ours);
}

TEST_F(TopoEventMgrInstance, HasNoData) {
  static_assert(std::is_empty_v<TopoEventMgr>);
}

// --- Subscription.

using TopoEventSubscription = TopoEventMgrTest;

TEST_F(TopoEventSubscription, AsksForAccessAndThenSubscribesToThreeEvents) {
  EXPECT_EQ(subscribe(), 0);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"SecurityIF\")", "isEventAccessAllowed()", "Subscribe(372, 21, 0)",
                   "Subscribe(373, 21, 0)", "Subscribe(374, 21, 0)"}));
}

TEST_F(TopoEventSubscription, SubscribesTheHandlerItself) {
  subscribe();
  for (const int event : {372, 373, 374}) {
    EXPECT_EQ(fakes::subscribedTo(event), Handlers{&handler_}) << event;
  }
}

TEST_F(TopoEventSubscription, IsSkippedWithoutAccess) {
  fakes::allowEventAccess(false);
  EXPECT_EQ(subscribe(), 0);
  EXPECT_EQ(Journal::lines(), (Lines{"CheckIFBuf(\"SecurityIF\")", "isEventAccessAllowed()"}));
}

TEST_F(TopoEventSubscription, RefusesANullHandler) {
  int asked = 0;
  fakes::onEveryCall("TEEventMgr::Instance", [&asked]() -> CORBA::ULong { return ++asked, 0; });
  EXPECT_EQ(TopoEventMgr::OnSubscibeEvent(nullptr), 0);
  EXPECT_EQ(Journal::lines(),
            Lines{"TaDebug(1, \"[TopoEventMgr::OnSubscibeEvent] para pHandler is NULL.\") at "
                  "topoeventmgr:143 unknown"});
  EXPECT_EQ(asked, 0);
}

TEST_F(TopoEventSubscription, FindsTheEventManagerBeforeItAsksForAccess) {
  for (const fakes::Step& step : anyFailure()) {
    fakes::resetJournal();
    fakes::onCall("TEEventMgr::Instance", 1, step);
    EXPECT_EQ(subscribe(), 0);
    EXPECT_EQ(Journal::lines(), Lines{});
  }
}

TEST_F(TopoEventSubscription, IsSkippedWithoutTheSecurityInterface) {
  fakes::resetBundles();
  EXPECT_EQ(subscribe(), 0);
  EXPECT_EQ(Journal::lines(), (Lines{"CheckIFBuf(\"SecurityIF\")", "GetServiceObjects()"}));
}

TEST_F(TopoEventSubscription, IsSkippedWhenTheAccessCheckFails) {
  for (const fakes::Step& step : anyFailure()) {
    fakes::resetJournal();
    fakes::onCall("isEventAccessAllowed", 1, step);
    EXPECT_EQ(subscribe(), 0);
    EXPECT_EQ(Journal::lines(), (Lines{"CheckIFBuf(\"SecurityIF\")", "isEventAccessAllowed()"}));
  }
}

TEST_F(TopoEventSubscription, KeepsTheSubscriptionsBeforeAFailure) {
  for (const fakes::Step& step : anyFailure()) {
    fakes::resetEvents();
    fakes::resetJournal();
    fakes::onCall("Subscribe", 2, step);
    EXPECT_EQ(subscribe(), 0);
    EXPECT_EQ(Journal::lines(), (Lines{"CheckIFBuf(\"SecurityIF\")", "isEventAccessAllowed()",
                                       "Subscribe(372, 21, 0)", "Subscribe(373, 21, 0)"}));
    EXPECT_EQ(fakes::subscribedTo(372), Handlers{&handler_});
    EXPECT_EQ(fakes::subscribedTo(373), Handlers{});
    EXPECT_EQ(fakes::subscribedTo(374), Handlers{});
  }
}

TEST_F(TopoEventSubscription, NeedsNoInstance) {
  const fakes::FailingStaticObjectLock failing;
  ASSERT_EQ(TopoEventMgr::Instance(), nullptr);
  EXPECT_EQ(subscribe(), 0);
  EXPECT_EQ(fakes::subscribedTo(374), Handlers{&handler_});
}

// --- Unsubscription.

using TopoEventUnSubscription = TopoEventMgrTest;

TEST_F(TopoEventUnSubscription, RemovesAllThreeWithoutAskingForAccess) {
  subscribe();
  Journal::clear();
  EXPECT_EQ(unSubscribe(), 0);
  EXPECT_EQ(Journal::lines(), kUnSubscribed);
  for (const int event : {372, 373, 374}) {
    EXPECT_EQ(fakes::subscribedTo(event), Handlers{}) << event;
  }
}

TEST_F(TopoEventUnSubscription, RemovesAllThreeAfterARefusedSubscription) {
  fakes::allowEventAccess(false);
  subscribe();
  Journal::clear();
  EXPECT_EQ(unSubscribe(), 0);
  EXPECT_EQ(Journal::lines(), kUnSubscribed);
}

TEST_F(TopoEventUnSubscription, LeavesOtherHandlersSubscribed) {
  NS_CORBA::CorbaTopoEventHandler other;
  subscribe();
  TopoEventMgr::OnSubscibeEvent(&other);
  unSubscribe();
  EXPECT_EQ(fakes::subscribedTo(372), Handlers{&other});
}

TEST_F(TopoEventUnSubscription, RefusesANullHandler) {
  int asked = 0;
  fakes::onEveryCall("TEEventMgr::Instance", [&asked]() -> CORBA::ULong { return ++asked, 0; });
  EXPECT_EQ(TopoEventMgr::OnUnSubscibeEvent(nullptr), 0);
  EXPECT_EQ(Journal::lines(),
            Lines{"TaDebug(1, \"[TopoEventMgr::OnUnSubscibeEvent] para pHandler is NULL.\") at "
                  "topoeventmgr:165 unknown"});
  EXPECT_EQ(asked, 0);
}

TEST_F(TopoEventUnSubscription, DropsExceptionsOfTheEventManager) {
  for (const fakes::Step& step : anyFailure()) {
    fakes::resetJournal();
    fakes::onCall("UnSubscribe", 2, step);
    EXPECT_EQ(unSubscribe(), 0);
    EXPECT_EQ(Journal::lines(), (Lines{"UnSubscribe(372)", "UnSubscribe(373)"}));
  }
}

TEST_F(TopoEventUnSubscription, DropsExceptionsOfTheInstanceFunction) {
  for (const fakes::Step& step : anyFailure()) {
    fakes::resetJournal();
    fakes::onCall("TEEventMgr::Instance", 1, step);
    EXPECT_EQ(unSubscribe(), 0);
    EXPECT_EQ(Journal::lines(), Lines{});
  }
}

TEST_F(TopoEventUnSubscription, DoesNothingWhereThereIsNoEventManager) {
  fakes::takeEventMgrAway();
  EXPECT_EQ(unSubscribe(), 0);
  EXPECT_EQ(Journal::lines(), Lines{});
}

TEST_F(TopoEventSubscription, DoesNothingWhereThereIsNoEventManager) {
  fakes::takeEventMgrAway();
  EXPECT_EQ(subscribe(), 0);
  EXPECT_EQ(Journal::lines(), Lines{});
}

}  // namespace
