#include <cerrno>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/FailingNothrowNew.h"
#include "tests/fakes/Fixture.h"
#include "topomanagementmgrimpl/TATopoManagementMgr_IImpl.h"
#include "toposvc/RefCount.h"
#include "toposvc/TopoService.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::Journal;

constexpr const char* kManager = "TopoManagement";

const char* const kMade = "TaDebug(3, \"[ RefCount]  ref_count!\") at toposvc:33 unknown";

const char* const kDestroyed =
    "TaDebug(3, \"[ ~RefCount]  Reference count associated object destroyed!\") at toposvc:39 "
    "unknown";

// The calls of init, in order.
const Lines kInit = {"UnregisterMgr(\"TopoManagement\")", "RegisterMgr(\"TopoManagement\")", kMade,
                     "RegisterServant(\"TopoManagement\", servant)"};

class TopoServiceObject : public fakes::Fixture {
 protected:
  TopoServiceObject() : service_(std::make_unique<zu_corba_topo>()) { Journal::clear(); }

  // Calls fini, because the registration of the module would affect the next test.
  ~TopoServiceObject() override {
    fakes::resetJournal();
    service_->fini();
  }

  int init() { return asAceSeesIt().init(0, nullptr); }
  int fini() { return asAceSeesIt().fini(); }

  // Through the ACE base class.
  ACE_Shared_Object& asAceSeesIt() { return *service_; }

  static Lines registrations() {
    return Journal::linesOf({"UnregisterMgr", "RegisterMgr", "RegisterServant"});
  }

  // The calls of fini except the event calls, which depend on the event handler of an earlier test.
  static Lines finishing() {
    return Journal::linesOf({"ServiceObjectBase::fini", "UnregisterMgr", "~MgrFactory"});
  }

  std::unique_ptr<zu_corba_topo> service_;
};

// --- The object.

TEST_F(TopoServiceObject, HasTheNameOfTheService) {
  EXPECT_EQ(service_->GetName(), "zu_corba_topo");
}

TEST_F(TopoServiceObject, IsListedByTheConstructorOfItsBase) {
  EXPECT_EQ(NS_BUNDLEMGR1::BundleMgr::Instance()->GetServiceObject("zu_corba_topo"),
            service_.get());
}

TEST_F(TopoServiceObject, DoesNotRegisterItself) {
  service_->UnRegistSvc();
  Journal::clear();
  service_->RegistSvc();
  EXPECT_EQ(Journal::lines(), Lines{});
  EXPECT_TRUE(NS_BUNDLEMGR1::BundleMgr::Instance()->GetServiceObjects().empty());
}

TEST_F(TopoServiceObject, HasNoInterfaceAtFirst) {
  EXPECT_EQ(service_->GetInterface(), nullptr);
}

TEST_F(TopoServiceObject, MakesAPlaceholderAndKeepsIt) {
  NS_BUNDLEMGR1::ServiceInterface* const made = service_->CreateInterface();
  ASSERT_NE(made, nullptr);
  EXPECT_NE(dynamic_cast<NS_BUNDLEMGR1::NULLServiceInterface*>(made), nullptr);
  EXPECT_EQ(service_->GetInterface(), made);
}

TEST_F(TopoServiceObject, DoesNotReleaseAnEarlierPlaceholder) {
  const std::unique_ptr<NS_BUNDLEMGR1::ServiceInterface> first(service_->CreateInterface());
  NS_BUNDLEMGR1::ServiceInterface* const second = service_->CreateInterface();
  EXPECT_NE(second, first.get());
  EXPECT_EQ(service_->GetInterface(), second);
  EXPECT_EQ(Journal::count("~NULLServiceInterface"), 0);
}

TEST_F(TopoServiceObject, ReleasesItsPlaceholderWhenItIsRemoved) {
  service_->CreateInterface();
  service_->RemoveInterface();
  EXPECT_EQ(service_->GetInterface(), nullptr);
  EXPECT_EQ(Journal::count("~NULLServiceInterface"), 1);
}

TEST_F(TopoServiceObject, AddsNoDataToItsBase) {
  static_assert(sizeof(zu_corba_topo) == sizeof(NS_BUNDLEMGR1::ServiceObjectBase));
}

// --- init.

TEST_F(TopoServiceObject, RegistersManagerAndServantInThisOrder) {
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::linesOf({"UnregisterMgr", "RegisterMgr", "TaDebug", "RegisterServant"}),
            kInit);
}

TEST_F(TopoServiceObject, IgnoresItsArguments) {
  EXPECT_EQ(service_->init(3, nullptr), 0);
}

TEST_F(TopoServiceObject, RegistersAFactoryThatMakesServants) {
  init();
  NS_CORBA::MgrFactory* const factory = fakes::registeredFactory(kManager);
  ASSERT_NE(factory, nullptr);
  POA_common::Common_I* const servant = factory->create();
  EXPECT_NE(dynamic_cast<NS_CORBA::TATopoManagementMgr_IImpl*>(servant), nullptr);
  EXPECT_NE(servant, fakes::registeredServants().at(0));
  servant->_remove_ref();
}

TEST_F(TopoServiceObject, RegistersAServantWithOneReference) {
  init();
  ASSERT_EQ(fakes::registeredServants().size(), 1U);
  POA_common::Common_I* const servant = fakes::registeredServants().at(0);
  EXPECT_EQ(servant->_refcount_value(), 1U);
  EXPECT_NE(dynamic_cast<NS_CORBA::RefCount<NS_CORBA::TATopoManagementMgr_IImpl>*>(servant),
            nullptr);
}

TEST_F(TopoServiceObject, MakesTheServantBeforeItAsksForTheAgent) {
  int made = 0;
  fakes::onCall("CorbaAgentConfig::Instance", 1, [&]() -> CORBA::ULong {
    made = Journal::count("TaDebug");
    return 0;
  });
  init();
  EXPECT_EQ(made, 1);
}

TEST_F(TopoServiceObject, ReleasesTheServantWhenTheAgentCannotBeReached) {
  fakes::onCall("CorbaAgentConfig::Instance", 1, fakes::raiseRuntimeError("broken"));
  EXPECT_THROW(init(), std::runtime_error);
  EXPECT_EQ(Journal::linesOf({"TaDebug"}), (Lines{kMade, kDestroyed}));
  EXPECT_EQ(Journal::count("RegisterServant"), 0);
}

TEST_F(TopoServiceObject, NeverQueriesTheDomainOutsideTestMode) {
  fakes::publishPlatform();
  init();
  EXPECT_EQ(Journal::linesOf({"CheckIFBuf", "GetServiceObjects", "GetFacet"}),
            Lines{"CheckIFBuf(\"SecurityIF\")"});
}

TEST_F(TopoServiceObject, ReplacesAManagerLeftBehindByAnEarlierLoad) {
  init();
  auto* const stale = fakes::registeredFactory(kManager);
  Journal::clear();
  EXPECT_EQ(init(), 0);
  EXPECT_NE(fakes::registeredFactory(kManager), nullptr);
  EXPECT_NE(fakes::registeredFactory(kManager), stale);
  EXPECT_EQ(registrations(),
            (Lines{"UnregisterMgr(\"TopoManagement\")", "RegisterMgr(\"TopoManagement\")",
                   "RegisterServant(\"TopoManagement\", servant)"}));
}

TEST_F(TopoServiceObject, IgnoresAMissingStaleManager) {
  // UnregisterMgr fails for an unknown manager.
  EXPECT_THROW(NS_CORBA::CorbaBaseAgentConfig::Instance()->UnregisterMgr(kManager),
               ProcessException);
  EXPECT_EQ(init(), 0);
}

TEST_F(TopoServiceObject, IgnoresExceptionsOfUnregistering) {
  for (const fakes::Step& step : {fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(),
                                  fakes::raiseProcessException(7), fakes::raiseTransient()}) {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::onCall("UnregisterMgr", 1, step);
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara"}), Lines{kMade});
  }
}

TEST_F(TopoServiceObject, IgnoresAMissingAgentWhenItRemovesAStaleManager) {
  for (const fakes::Step& step : {fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(),
                                  fakes::raiseProcessException(7), fakes::raiseTransient()}) {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::onCall("CorbaBaseAgentConfig::Instance", 1, step);
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(registrations(), (Lines{"RegisterMgr(\"TopoManagement\")",
                                      "RegisterServant(\"TopoManagement\", servant)"}));
  }
}

TEST_F(TopoServiceObject, PassesTheRefusalOfTheManager) {
  fakes::onCall("RegisterMgr", 1, fakes::raiseProcessException(7));
  EXPECT_THROW(init(), ProcessException);
  EXPECT_EQ(Journal::lines(), (Lines{"UnregisterMgr(\"TopoManagement\")",
                                     "RegisterMgr(\"TopoManagement\")", "~MgrFactory()"}));
  EXPECT_TRUE(fakes::registeredServants().empty());
}

TEST_F(TopoServiceObject, PassesOnAnyExceptionOfTheRegistration) {
  fakes::onCall("RegisterMgr", 1, fakes::raiseRuntimeError("broken"));
  EXPECT_THROW(init(), std::runtime_error);
}

TEST_F(TopoServiceObject, PassesTheRefusalOfTheServantAndUndoesNothing) {
  fakes::onCall("RegisterServant", 1, fakes::raiseProcessException(7));
  EXPECT_THROW(init(), ProcessException);
  EXPECT_EQ(registrations(),
            (Lines{"UnregisterMgr(\"TopoManagement\")", "RegisterMgr(\"TopoManagement\")",
                   "RegisterServant(\"TopoManagement\", servant)"}));
}

TEST_F(TopoServiceObject, ReleasesItsRecordWhenTheManagerOrTheServantIsRefused) {
  for (const char* call : {"RegisterMgr", "RegisterServant"}) {
    for (const fakes::Step& step : {fakes::raiseProcessException(7),
                                    fakes::raiseRuntimeError("broken"), fakes::raiseTransient()}) {
      fakes::resetAgent();
      fakes::resetJournal();
      fakes::onCall(call, 1, step);
      EXPECT_ANY_THROW(init()) << call;
      EXPECT_EQ(Journal::lines().back(), "~MgrFactory()") << call;
      EXPECT_EQ(Journal::count("~MgrFactory"), 1) << call;
    }
  }
}

TEST_F(TopoServiceObject, IsNotRegisteredAfterAFailedInit) {
  for (const char* call : {"RegisterMgr", "RegisterServant"}) {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseProcessException(7));
    EXPECT_THROW(init(), ProcessException);
    Journal::clear();
    EXPECT_EQ(fini(), 0);
    EXPECT_EQ(finishing(), Lines{"ServiceObjectBase::fini()"}) << call;
  }
}

TEST_F(TopoServiceObject, MayBeInitialisedAfterAFailedInit) {
  fakes::onCall("RegisterServant", 1, fakes::raiseProcessException(7));
  EXPECT_THROW(init(), ProcessException);
  EXPECT_EQ(init(), 0);
  EXPECT_NE(fakes::registeredFactory(kManager), nullptr);
}

TEST_F(TopoServiceObject, RegistersANullServantWhenMemoryIsShort) {
  constexpr std::size_t kServantSize =
      sizeof(NS_CORBA::RefCount<NS_CORBA::TATopoManagementMgr_IImpl>);
  int error = 0;
  fakes::onCall("RegisterServant", 1, [&]() -> CORBA::ULong {
    error = errno;
    return 0;
  });
  errno = 0;
  {
    const fakes::FailingNothrowNew failing(kServantSize, kServantSize);
    EXPECT_THROW(init(), ProcessException);  // the agent refuses a null servant
    EXPECT_EQ(fakes::FailingNothrowNew::failures(), 1);
  }
  EXPECT_EQ(error, ENOMEM);
  EXPECT_EQ(Journal::lines(),
            (Lines{"UnregisterMgr(\"TopoManagement\")", "RegisterMgr(\"TopoManagement\")",
                   "RegisterServant(\"TopoManagement\", null)", "~MgrFactory()"}));
}

// --- fini.

TEST_F(TopoServiceObject, CallsFiniOfItsBaseBeforeItUnregistersTheManager) {
  init();
  Journal::clear();
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(Journal::linesOf({"ServiceObjectBase::fini", "UnregisterMgr"}),
            (Lines{"ServiceObjectBase::fini()", "UnregisterMgr(\"TopoManagement\")"}));
  EXPECT_EQ(fakes::registeredFactory(kManager), nullptr);
}

TEST_F(TopoServiceObject, FinishesWithoutAnInit) {
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(registrations(), Lines{});
  EXPECT_EQ(Journal::count("ServiceObjectBase::fini"), 1);
}

TEST_F(TopoServiceObject, LeavesTheServantToTheAgent) {
  init();
  fini();
  ASSERT_EQ(fakes::registeredServants().size(), 1U);
  EXPECT_EQ(fakes::registeredServants().at(0)->_refcount_value(), 1U);
}

TEST_F(TopoServiceObject, IgnoresExceptionsOfUnregisteringInFini) {
  for (const fakes::Step& step : {fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(),
                                  fakes::raiseProcessException(7), fakes::raiseTransient()}) {
    fakes::resetAgent();
    fakes::resetJournal();
    init();
    Journal::clear();
    fakes::onCall("UnregisterMgr", 2, step);
    EXPECT_EQ(fini(), 0);
    EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara"}), Lines{});
  }
}

TEST_F(TopoServiceObject, ReleasesItsRecordAfterTheManagerIsUnregistered) {
  init();
  Journal::clear();
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(finishing(), (Lines{"ServiceObjectBase::fini()", "UnregisterMgr(\"TopoManagement\")",
                                "~MgrFactory()"}));
}

TEST_F(TopoServiceObject, ReleasesItsRecordWhenTheManagerCannotBeUnregistered) {
  init();
  Journal::clear();
  fakes::onCall("UnregisterMgr", 2, fakes::raiseRuntimeError("broken"));
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(finishing().back(), "~MgrFactory()");
}

TEST_F(TopoServiceObject, IgnoresAMissingAgentInFini) {
  for (const fakes::Step& step : {fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(),
                                  fakes::raiseProcessException(7), fakes::raiseTransient()}) {
    fakes::resetAgent();
    fakes::resetJournal();
    init();
    Journal::clear();
    fakes::onCall("CorbaBaseAgentConfig::Instance", 3, step);  // the first two calls are in init
    EXPECT_EQ(fini(), 0);
    EXPECT_EQ(finishing(), (Lines{"ServiceObjectBase::fini()", "~MgrFactory()"}));
  }
}

TEST_F(TopoServiceObject, ReturnsZeroFromFiniForAnyResultOfItsBase) {
  init();
  fakes::onEveryCall("ServiceObjectBase::fini", fakes::giveCode(7));
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(fini(), 0);
}

TEST_F(TopoServiceObject, PassesAnExceptionOfTheFiniOfItsBaseAndUndoesNothing) {
  init();
  Journal::clear();
  fakes::onCall("ServiceObjectBase::fini", 1, fakes::raiseRuntimeError("broken"));
  EXPECT_THROW(fini(), std::runtime_error);
  EXPECT_EQ(Journal::lines(), Lines{"ServiceObjectBase::fini()"});
}

TEST_F(TopoServiceObject, PassesExceptionsOfTheLogWhenItMakesTheServantAndUndoesNothing) {
  fakes::onCall("TaDebug", 1, fakes::raiseRuntimeError("disk full"));
  EXPECT_THROW(init(), std::runtime_error);
  EXPECT_EQ(registrations(),
            (Lines{"UnregisterMgr(\"TopoManagement\")", "RegisterMgr(\"TopoManagement\")"}));
}

TEST_F(TopoServiceObject, UnregistersTheManagerOnlyOnce) {
  init();
  fini();
  Journal::clear();
  EXPECT_EQ(fini(), 0);
  EXPECT_EQ(registrations(), Lines{});
}

TEST_F(TopoServiceObject, MayBeInitialisedAgain) {
  init();
  fini();
  Journal::clear();
  EXPECT_EQ(init(), 0);
  EXPECT_EQ(Journal::linesOf({"UnregisterMgr", "RegisterMgr", "TaDebug", "RegisterServant"}),
            kInit);
  EXPECT_NE(fakes::registeredFactory(kManager), nullptr);
}

TEST_F(TopoServiceObject, KeepsItsPlaceholderOverInitAndFini) {
  NS_BUNDLEMGR1::ServiceInterface* const made = service_->CreateInterface();
  init();
  fini();
  EXPECT_EQ(service_->GetInterface(), made);
}

}  // namespace
