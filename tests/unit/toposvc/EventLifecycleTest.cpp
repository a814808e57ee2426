// Events and cached labels in init and fini.

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/Events.h"
#include "tests/fakes/OrbFixture.h"
#include "tests/fakes/Security.h"
#include "tests/fakes/StaticObjectLock.h"
#include "topoevent/NodeLabelCache.h"
#include "topoevent/TopoEventMgr.h"
#include "toposvc/TopoService.h"

namespace {

using Lines = std::vector<std::string>;
using Texts = std::vector<std::string>;
using Handlers = std::vector<TEEventHandler*>;

using fakes::element;
using fakes::Journal;
using fakes::subnetwork;

// The first calls of init in every mode.
const Lines kInit = {"UnregisterMgr(\"TopoManagement\")",
                     "RegisterMgr(\"TopoManagement\")",
                     "TaDebug(3, \"[ RefCount]  ref_count!\") at toposvc:33 unknown",
                     "RegisterServant(\"TopoManagement\", servant)",
                     "CheckIFBuf(\"SecurityIF\")",
                     "isEventAccessAllowed()",
                     "Subscribe(372, 21, 0)",
                     "Subscribe(373, 21, 0)",
                     "Subscribe(374, 21, 0)",
                     "GetTestSwitch()"};

const Lines kUnSubscribed = {"UnSubscribe(372)", "UnSubscribe(373)", "UnSubscribe(374)"};

Lines joined(Lines lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

std::vector<fakes::Step> anyFailure() {
  return {fakes::raiseProcessException(7), fakes::raiseInterfaceNotExist(),
          fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(), fakes::raiseTransient()};
}

class TopoServiceEvents : public fakes::OrbFixture {
 protected:
  TopoServiceEvents() : before_(topo::nodeLabelCache.identifiers().size()) { Journal::clear(); }

  ~TopoServiceEvents() override {
    fakes::resetJournal();
    fini();
  }

  int init() { return service_.init(0, nullptr); }
  int fini() { return service_.fini(); }

  static void deliver(int event, const std::vector<NS_DOMAIN::TopoNode_T>& nodes) {
    TEEvent carried;
    carried.nodes = nodes;
    fakes::deliver(event, carried);
  }

  static Lines subscriptions() { return Journal::linesOf({"Subscribe", "UnSubscribe"}); }

  // The cache entries that were added since the start of the test.
  Texts newIdentifiers() const { return added(topo::nodeLabelCache.identifiers()); }
  Texts newLabels() const { return added(topo::nodeLabelCache.labels()); }

  zu_corba_topo service_;

 private:
  Texts added(const Texts& texts) const {
    return {texts.begin() + static_cast<std::ptrdiff_t>(before_), texts.end()};
  }

  const std::size_t before_;
};

// --- Subscription.

using TopoServiceEventsDeathTest = TopoServiceEvents;

TEST_F(TopoServiceEvents, AreSubscribedToAfterTheRegistration) {
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::lines(), kInit);
}

TEST_F(TopoServiceEvents, BecomeNotifications) {
  init();
  deliver(373, {subnetwork("a")});
  ASSERT_EQ(fakes::notificationsSent().size(), 1U);
  EXPECT_EQ(fakes::notificationsSent()[0].kind, "deleted");
}

TEST_F(TopoServiceEvents, AreSubscribedToThroughTheInstanceOfTheManager) {
  init();
  const fakes::FailingStaticObjectLock failing;
  EXPECT_NE(TopoEventMgr::Instance(), nullptr);
}

TEST_F(TopoServiceEvents, AreSubscribedToWithoutAnInstanceOfTheManager) {
  const fakes::FailingStaticObjectLock failing;
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::lines(), kInit);
}

TEST_F(TopoServiceEvents, AreNotRequiredWithoutAccess) {
  fakes::allowEventAccess(false);
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(subscriptions(), Lines{});
  EXPECT_EQ(Journal::count("GetTestSwitch"), 1);
  EXPECT_NE(fakes::registeredFactory("TopoManagement"), nullptr);
}

TEST_F(TopoServiceEvents, AreNotRequiredWhenTheSubscriptionFails) {
  for (const char* call : {"TEEventMgr::Instance", "isEventAccessAllowed", "Subscribe"}) {
    for (const fakes::Step& step : anyFailure()) {
      fakes::resetAgent();
      fakes::resetJournal();
      fakes::onCall(call, 1, step);
      EXPECT_EQ(init(), 0) << call;
      EXPECT_EQ(Journal::lines().back(), "GetTestSwitch()") << call;
    }
  }
}

TEST_F(TopoServiceEvents, AreNotRequiredWithoutTheSecurityInterface) {
  fakes::resetBundles();
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(subscriptions(), Lines{});
}

TEST_F(TopoServiceEventsDeathTest, EndTheProcessInInitForAnExceptionOfTheBundleManager) {
  fakes::onCall("CheckIFBuf", 1, fakes::raiseRuntimeError("no buffers today"));
  EXPECT_DEATH(init(), "terminate called");
}

TEST_F(TopoServiceEvents, AreNotSubscribedToWhenTheRegistrationFails) {
  for (const char* call : {"RegisterMgr", "RegisterServant"}) {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseProcessException(7));
    EXPECT_THROW(init(), ProcessException);
    EXPECT_EQ(subscriptions(), Lines{}) << call;
    EXPECT_EQ(Journal::count("GetTestSwitch"), 0) << call;
  }
}

// --- Unsubscription.

TEST_F(TopoServiceEvents, AreUnsubscribedFromAfterTheManager) {
  init();
  Journal::clear();
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(Journal::lines(), joined({"ServiceObjectBase::fini()",
                                      "UnregisterMgr(\"TopoManagement\")", "~MgrFactory()"},
                                     kUnSubscribed));
}

TEST_F(TopoServiceEvents, AreNotDeliveredAfterFini) {
  init();
  fini();
  for (const int event : {372, 373, 374}) {
    EXPECT_EQ(fakes::subscribedTo(event), Handlers{}) << event;
  }
}

TEST_F(TopoServiceEvents, AreUnsubscribedFromAlsoWhenThereWasNoAccess) {
  fakes::allowEventAccess(false);
  init();
  fini();
  EXPECT_EQ(subscriptions(), kUnSubscribed);
}

TEST_F(TopoServiceEvents, AreUnsubscribedFromWhenTheManagerCannotBeUnregistered) {
  for (const char* call : {"UnregisterMgr", "CorbaBaseAgentConfig::Instance"}) {
    fakes::resetAgent();
    fakes::resetJournal();
    init();
    Journal::clear();
    fakes::onEveryCall(call, fakes::raiseRuntimeError("broken"));
    EXPECT_EQ(fini(), 0);
    EXPECT_EQ(subscriptions(), kUnSubscribed) << call;
  }
}

TEST_F(TopoServiceEvents, LoseTheirManagerInFini) {
  init();
  fini();
  const fakes::FailingStaticObjectLock failing;
  EXPECT_EQ(TopoEventMgr::Instance(), nullptr);
}

TEST_F(TopoServiceEvents, LoseTheirManagerWhenUnsubscribingFails) {
  for (const char* call : {"TEEventMgr::Instance", "UnSubscribe"}) {
    for (const fakes::Step& step : anyFailure()) {
      fakes::resetAgent();
      fakes::resetJournal();
      init();
      fakes::onEveryCall(call, step);
      EXPECT_EQ(fini(), 0) << call;
      const fakes::FailingStaticObjectLock failing;
      EXPECT_EQ(TopoEventMgr::Instance(), nullptr) << call;
    }
  }
}

TEST_F(TopoServiceEvents, KeepTheirManagerWhenTheLockFailsInFini) {
  init();
  const fakes::FailingStaticObjectLock failing;
  EXPECT_EQ(fini(), 0);
  EXPECT_NE(TopoEventMgr::Instance(), nullptr);
  EXPECT_EQ(fakes::subscribedTo(372), Handlers{});
}

TEST_F(TopoServiceEvents, AreUnsubscribedFromByEveryFiniAfterTheFirstInit) {
  init();
  fini();
  Journal::clear();
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(Journal::lines(), joined({"ServiceObjectBase::fini()"}, kUnSubscribed));
}

// --- Several inits.

TEST_F(TopoServiceEvents, GoToANewHandlerAfterASecondInit) {
  init();
  const Handlers first = fakes::subscribedTo(372);
  fini();
  Journal::clear();
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::lines(), kInit);
  ASSERT_EQ(fakes::subscribedTo(372).size(), 1U);
  EXPECT_NE(fakes::subscribedTo(372), first);
}

TEST_F(TopoServiceEvents, GoToBothHandlersAfterTwoInitsWithoutAFini) {
  init();
  Journal::clear();
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::lines(),
            joined({"UnregisterMgr(\"TopoManagement\")", "RegisterMgr(\"TopoManagement\")",
                    "TaDebug(3, \"[ RefCount]  ref_count!\") at toposvc:33 unknown",
                    "RegisterServant(\"TopoManagement\", servant)", "~MgrFactory()"},
                   {kInit.begin() + 4, kInit.end()}));
  deliver(373, {subnetwork("a")});
  EXPECT_EQ(fakes::notificationsSent().size(), 2U);
}

TEST_F(TopoServiceEvents, AreUnsubscribedFromForTheLastHandlerOnly) {
  init();
  const Handlers first = fakes::subscribedTo(372);
  init();
  fini();
  EXPECT_EQ(fakes::subscribedTo(372), first);
  deliver(373, {subnetwork("a")});
  EXPECT_EQ(fakes::notificationsSent().size(), 1U);
}

TEST_F(TopoServiceEvents, ReachAHandlerThatCouldNotBeUnsubscribed) {
  init();
  fakes::onEveryCall("UnSubscribe", fakes::raiseProcessException(7));
  fini();
  init();
  deliver(373, {subnetwork("a")});
  EXPECT_EQ(fakes::notificationsSent().size(), 2U);
}

// --- Cached labels in test mode.

class TopoServiceLabels : public TopoServiceEvents {
 protected:
  TopoServiceLabels() {
    fakes::agent().testSwitch = true;
    fakes::network().nodes = {subnetwork("b", "B"), element("OS=1,NE=5", "N"), subnetwork("a", "A"),
                              subnetwork("c", "")};
  }
};

TEST_F(TopoServiceLabels, AreReadOnceAfterTheSubscription) {
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::lines(),
            joined(kInit, {"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")",
                           "GetTopoData()", "GetAllTopoNodes()"}));
}

TEST_F(TopoServiceLabels, AreThoseOfSubnetworksInTheDomainsOrder) {
  init();
  EXPECT_EQ(newIdentifiers(), (Texts{"b", "a", "c"}));
  EXPECT_EQ(newLabels(), (Texts{"B", "A", ""}));
}

TEST_F(TopoServiceLabels, AreOfNoOtherDomainType) {
  for (const std::uint32_t type : {0U, 1U, 3U, 0xFFFFFFFFU}) {
    fakes::network().nodes[0].nodeType = type;
    fakes::network().nodes.resize(1);
    init();
    EXPECT_EQ(newIdentifiers(), Texts{}) << type;
  }
}

TEST_F(TopoServiceLabels, AreNoneInAnEmptyNetwork) {
  fakes::network().nodes.clear();
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(newIdentifiers(), Texts{});
}

TEST_F(TopoServiceLabels, AreNotReadOutsideTestMode) {
  fakes::agent().testSwitch = false;
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::lines(), kInit);
  EXPECT_EQ(newIdentifiers(), Texts{});
}

TEST_F(TopoServiceLabels, NeedNoDomainOutsideTestMode) {
  fakes::agent().testSwitch = false;
  fakes::resetBundles();
  EXPECT_EQ(init(), 0);
}

TEST_F(TopoServiceLabels, AreAppendedByEveryInit) {
  init();
  fini();
  fakes::network().nodes = {subnetwork("b", "B2"), subnetwork("d", "D")};
  init();
  EXPECT_EQ(newIdentifiers(), (Texts{"b", "a", "c", "b", "d"}));
  EXPECT_EQ(newLabels(), (Texts{"B", "A", "", "B2", "D"}));
}

TEST_F(TopoServiceLabels, StayAfterFini) {
  init();
  fini();
  EXPECT_EQ(newIdentifiers(), (Texts{"b", "a", "c"}));
  EXPECT_EQ(newLabels(), (Texts{"B", "A", ""}));
}

TEST_F(TopoServiceLabels, AreComparedWithThoseOfLaterEvents) {
  // Identifiers of this test only: an entry of an earlier init would count first.
  fakes::network().nodes = {subnetwork("compared", "old"), subnetwork("compared too", "same")};
  init();
  deliver(374, {subnetwork("compared", "new"), subnetwork("compared too", "same"),
                subnetwork("behind it", "any")});
  ASSERT_EQ(fakes::notificationsSent().size(), 1U);
  EXPECT_EQ(newLabels(), (Texts{"new", "same"}));
}

TEST_F(TopoServiceLabels, CannotBeReadWithoutTheDomain) {
  fakes::resetBundles();
  fakes::publish("SecurityIF", &fakes::security());
  try {
    init();
    ADD_FAILURE() << "nothing was raised";
  } catch (InterfaceNotExistException& failure) {
    EXPECT_EQ(failure.errorCode, 0x41180004);
  }
  EXPECT_EQ(Journal::lines(),
            joined(kInit, {"CheckIFBuf(\"DomainInterface\")", "GetServiceObjects()"}));
  EXPECT_NE(fakes::registeredFactory("TopoManagement"), nullptr);
  EXPECT_EQ(fakes::registeredServants().size(), 1U);
  EXPECT_EQ(fakes::subscribedTo(374).size(), 1U);
  EXPECT_EQ(newIdentifiers(), Texts{});
}

TEST_F(TopoServiceLabels, PassExceptionsOfTheDomain) {
  for (const char* call : {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetAllTopoNodes late"}) {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::agent().testSwitch = true;
    fakes::onCall(call, 1, fakes::raiseProcessException(7));
    EXPECT_THROW(init(), ProcessException) << call;
    fakes::onCall(call, 2, fakes::raiseRuntimeError("broken"));
    EXPECT_THROW(init(), std::runtime_error) << call;
    fakes::onCall(call, 3, fakes::raiseBadAlloc());
    EXPECT_THROW(init(), std::bad_alloc) << call;
    fakes::onCall(call, 4, fakes::raiseTransient());
    EXPECT_THROW(init(), CORBA::TRANSIENT) << call;
    EXPECT_EQ(newIdentifiers(), Texts{}) << call;
    EXPECT_NE(fakes::registeredFactory("TopoManagement"), nullptr) << call;
  }
}

TEST_F(TopoServiceLabels, PassExceptionsOfTheSwitch) {
  fakes::onCall("GetTestSwitch", 1, fakes::raiseRuntimeError("broken"));
  EXPECT_THROW(init(), std::runtime_error);
  EXPECT_EQ(Journal::lines(), kInit);
}

TEST_F(TopoServiceLabels, KeepTheRegistrationsForFiniWhenTheyCannotBeRead) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(7));
  EXPECT_THROW(init(), ProcessException);
  Journal::clear();
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(Journal::lines(), joined({"ServiceObjectBase::fini()",
                                      "UnregisterMgr(\"TopoManagement\")", "~MgrFactory()"},
                                     kUnSubscribed));
}

}  // namespace
