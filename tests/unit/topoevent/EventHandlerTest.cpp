#include <stdexcept>
#include <string>
#include <vector>

#include "tests/fakes/Security.h"
#include "tests/fakes/StaticObjectLock.h"
#include "tests/unit/topoevent/EventUnderTest.h"

namespace {

using fakes::Journal;
using fakes::subnetwork;

const std::vector<int> kEvents = {kCreated, kDeleted, kChanged};

const char* const kAccess[] = {"CheckIFBuf(\"SecurityIF\")", "setAccessIdentity(\"NT\")",
                               "CheckIFBuf(\"SecurityIF\")", "setAccessLevel(1)"};

std::string failed(int event) {
  return "TaDebugWithPara(1, \"Handle Event Fail(eventid = " + std::to_string(event) +
         ")!\") at topoeventhandler:68 unknown";
}

std::string unknownFailure(int event) {
  return "TaDebugWithPara(1, \"Unknown exception! (eventid = " + std::to_string(event) +
         ")!\") at topoeventhandler:70 unknown";
}

// Exceptions other than ProcessException.
std::vector<fakes::Step> anyOtherFailure() {
  return {fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(), fakes::raiseTransient(),
          []() -> CORBA::ULong { throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO); },
          []() -> CORBA::ULong { throw 5; }};
}

std::vector<fakes::Step> anyProcessException() {
  return {fakes::raiseProcessException(7), fakes::raiseInterfaceNotExist()};
}

class TopoEventHandler : public EventUnderTest {
 protected:
  static const Lines& access() {
    static const Lines lines(std::begin(kAccess), std::end(kAccess));
    return lines;
  }

  // The notification call for an event with one node.
  static const char* senderOf(int event) {
    switch (event) {
      case kCreated:
        return "OnObjectCreated";
      case kDeleted:
        return "OnObjectDeleted";
      default:
        return "OnObjectAVC";
    }
  }
};

using TopoEventHandlerDeathTest = TopoEventHandler;

// --- Access and dispatch.

TEST_F(TopoEventHandler, SetsTheAccessWithTwoLookupsFirst) {
  EXPECT_EQ(handle(kDeleted, {subnetwork("a")}), 0);
  Lines expected = access();
  expected.insert(expected.end(),
                  {"CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"a\")",
                   "OnObjectDeleted([EMS=EMS-1, TopoSubnetwork=a], true)"});
  EXPECT_EQ(Journal::lines(), expected);
}

TEST_F(TopoEventHandler, SetsTheAccessForAnEventWithoutNodesAndSendsNothing) {
  for (const int event : kEvents) {
    Journal::clear();
    EXPECT_EQ(handle(event, {}), 0);
    EXPECT_EQ(Journal::lines(), access()) << event;
  }
}

TEST_F(TopoEventHandler, SetsTheAccessForAnUnknownEventAndIgnoresTheEvent) {
  for (const int event : {375, 371, 0, -1}) {
    Journal::clear();
    EXPECT_EQ(handle(event, {subnetwork("a", "A")}), 0);
    EXPECT_EQ(Journal::lines(), access()) << event;
  }
}

TEST_F(TopoEventHandler, SendsForEachEventANotificationOfItsKind) {
  for (const int event : kEvents) {
    Journal::clear();
    EXPECT_EQ(handle(event, {subnetwork("a", "A")}), 0);
    EXPECT_EQ(Journal::linesOf({"OnObjectCreated", "OnObjectDeleted", "OnObjectAVC"}).size(), 1U);
    EXPECT_EQ(Journal::count(senderOf(event)), 1) << event;
  }
}

TEST_F(TopoEventHandler, IgnoresTheSecondArgument) {
  TEEvent event;
  event.nodes = {subnetwork("a")};
  EXPECT_EQ(handler_.HandleEvent(kDeleted, 99, event), 0);
  EXPECT_EQ(Journal::count("OnObjectDeleted"), 1);
}

TEST_F(TopoEventHandler, HandlesEventsWithoutAnInstanceOfTheManager) {
  TopoEventMgr::CleanUp();
  const fakes::FailingStaticObjectLock failing;
  for (const int event : kEvents) {
    EXPECT_EQ(handle(event, {subnetwork("a", "A")}), 0);
    EXPECT_EQ(Journal::count(senderOf(event)), 1) << event;
  }
  EXPECT_EQ(TopoEventMgr::Instance(), nullptr);
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(TopoEventHandler, MakesTheInstanceOfTheManager) {
  TopoEventMgr::CleanUp();
  handle(375, {});
  const fakes::FailingStaticObjectLock failing;
  EXPECT_NE(TopoEventMgr::Instance(), nullptr);
}

TEST_F(TopoEventHandler, HasNoData) {
  static_assert(sizeof(NS_CORBA::CorbaTopoEventHandler) == sizeof(TEEventHandler));
}

// --- Failures.

TEST_F(TopoEventHandler, LogsAMissingSecurityInterface) {
  fakes::resetBundles();
  for (const int event : {kCreated, kDeleted, kChanged, 375}) {
    Journal::clear();
    EXPECT_EQ(handle(event, {subnetwork("a", "A")}), 0);
    EXPECT_EQ(Journal::lines(),
              (Lines{"CheckIFBuf(\"SecurityIF\")", "GetServiceObjects()", failed(event)}));
  }
}

TEST_F(TopoEventHandler, LogsASecurityInterfaceThatDisappearsBetweenTheTwoCalls) {
  fakes::onCall("setAccessIdentity", 1, []() -> CORBA::ULong {
    fakes::resetBundles();
    return 0;
  });
  EXPECT_EQ(handle(kDeleted, {subnetwork("a")}), 0);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"SecurityIF\")", "setAccessIdentity(\"NT\")",
                   "CheckIFBuf(\"SecurityIF\")", "GetServiceObjects()", failed(kDeleted)}));
}

TEST_F(TopoEventHandler, LogsThatAccessIsRefused) {
  for (const char* call : {"setAccessIdentity", "setAccessLevel"}) {
    for (const fakes::Step& step : anyProcessException()) {
      fakes::resetJournal();
      fakes::onCall(call, 1, step);
      EXPECT_EQ(handle(kDeleted, {subnetwork("a")}), 0);
      EXPECT_EQ(Journal::lines().back(), failed(kDeleted)) << call;
      EXPECT_EQ(Journal::count("OnObjectDeleted"), 0) << call;
    }
    for (const fakes::Step& step : anyOtherFailure()) {
      fakes::resetJournal();
      fakes::onCall(call, 1, step);
      EXPECT_EQ(handle(kDeleted, {subnetwork("a")}), 0);
      EXPECT_EQ(Journal::lines().back(), unknownFailure(kDeleted)) << call;
      EXPECT_EQ(Journal::count("OnObjectDeleted"), 0) << call;
    }
  }
}

TEST_F(TopoEventHandler, AsksForNoLevelWhenTheIdentityIsRefused) {
  fakes::onCall("setAccessIdentity", 1, fakes::raiseProcessException(7));
  handle(kDeleted, {subnetwork("a")});
  EXPECT_EQ(Journal::count("setAccessLevel"), 0);
}

TEST_F(TopoEventHandler, LogsAMissingUtility) {
  fakes::resetBundles();
  fakes::publish("SecurityIF", &fakes::security());
  for (const int event : kEvents) {
    fakes::resetJournal();
    EXPECT_EQ(handle(event, {subnetwork("a", "A" + std::to_string(event))}), 0);
    EXPECT_EQ(logged(), Lines{failed(event)});
    EXPECT_EQ(Journal::count(senderOf(event)), 0);
  }
}

TEST_F(TopoEventHandler, LogsAProcessExceptionOfTheSender) {
  for (const int event : kEvents) {
    for (const fakes::Step& step : anyProcessException()) {
      fakes::resetJournal();
      fakes::onCall(senderOf(event), 1, step);
      EXPECT_EQ(handle(event, {subnetwork("a", "A")}), 0);
      EXPECT_EQ(logged(), Lines{failed(event)});
    }
  }
}

TEST_F(TopoEventHandler, LogsAnyOtherExceptionOfTheSender) {
  for (const int event : kEvents) {
    for (const fakes::Step& step : anyOtherFailure()) {
      fakes::resetJournal();
      fakes::onCall(senderOf(event), 1, step);
      EXPECT_EQ(handle(event, {subnetwork("a", "A")}), 0);
      EXPECT_EQ(logged(), Lines{unknownFailure(event)});
    }
  }
}

TEST_F(TopoEventHandler, LogsAFailureOfAConversionOrOfTheSwitch) {
  for (const char* call : {"ConvertTopoNodeIdToName", "GetTestSwitch"}) {
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseProcessException(7));
    EXPECT_EQ(handle(kChanged, {subnetwork("a", "A")}), 0);
    EXPECT_EQ(logged(), Lines{failed(kChanged)}) << call;
    fakes::onCall(call, 2, fakes::raiseRuntimeError("broken"));
    EXPECT_EQ(handle(kChanged, {subnetwork("a", "A")}), 0);
    EXPECT_EQ(logged().back(), unknownFailure(kChanged)) << call;
  }
}

TEST_F(TopoEventHandler, EndsTheEventAtAFailureAndKeepsSentNotifications) {
  for (const int event : kEvents) {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::onCall(senderOf(event), 2, fakes::raiseTransient());
    EXPECT_EQ(handle(event, {subnetwork("a", "A"), subnetwork("b", "B"), subnetwork("c", "C")}), 0);
    EXPECT_EQ(Journal::count(senderOf(event)), 2) << event;
    ASSERT_EQ(fakes::notificationsSent().size(), 1U) << event;
    EXPECT_EQ(fakes::printed(fakes::notificationsSent()[0].objectName),
              "[EMS=EMS-1, TopoSubnetwork=a]");
  }
}

TEST_F(TopoEventHandler, LogsTheIdentifierOfAnyEvent) {
  fakes::onEveryCall("setAccessLevel", fakes::raiseProcessException(7));
  handle(-3, {});
  EXPECT_EQ(logged(), Lines{failed(-3)});
}

TEST_F(TopoEventHandler, DropsExceptionsOfTheLog) {
  for (const fakes::Step& event : {fakes::raiseProcessException(7), fakes::raiseTransient()}) {
    for (const char* logCall : {"TaDebugWithPara", "GetTss"}) {
      std::vector<fakes::Step> steps = anyOtherFailure();
      steps.push_back(fakes::raiseProcessException(8));
      for (const fakes::Step& step : steps) {
        fakes::resetJournal();
        fakes::onEveryCall("OnObjectDeleted", event);
        fakes::onEveryCall(logCall, step);
        int result = -1;
        EXPECT_NO_THROW(result = handle(kDeleted, {subnetwork("a")}));
        EXPECT_EQ(result, 0);
      }
    }
  }
}

TEST_F(TopoEventHandlerDeathTest, EndsTheProcessForAnExceptionOfTheBundleManager) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (const fakes::Step& failure :
       {fakes::raiseProcessException(7), fakes::raiseRuntimeError("no buffers today")}) {
    fakes::onCall("CheckIFBuf", 1, failure);
    EXPECT_DEATH(handle(kCreated, {subnetwork("a", "A")}), "terminate called");
  }
}

TEST_F(TopoEventHandler, HandlesTheNextEventAfterAFailure) {
  fakes::onCall("OnObjectDeleted", 1, fakes::raiseTransient());
  handle(kDeleted, {subnetwork("a")});
  handle(kDeleted, {subnetwork("b")});
  EXPECT_EQ(fakes::notificationsSent().size(), 1U);
}

}  // namespace
