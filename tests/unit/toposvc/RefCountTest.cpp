#include "toposvc/RefCount.h"

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/fakes/FailingNothrowNew.h"
#include "tests/fakes/Fixture.h"
#include "topomanagementmgrimpl/TATopoManagementMgr_IImpl.h"
#include "toposvc/TOPONorthMgrFactory.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::Journal;
using NS_CORBA::TATopoManagementMgr_IImpl;
using Holder = NS_CORBA::RefCount<TATopoManagementMgr_IImpl>;

const char* const kMade = "TaDebug(3, \"[ RefCount]  ref_count!\") at toposvc:33 unknown";
const char* const kDestroyed =
    "TaDebug(3, \"[ ~RefCount]  Reference count associated object destroyed!\") at toposvc:39 "
    "unknown";

class TopoRefCount : public fakes::Fixture {};

TEST_F(TopoRefCount, TracesBothEndsOfAServantsLife) {
  auto* servant = new Holder;
  EXPECT_EQ(Journal::lines(), Lines{kMade});
  servant->_remove_ref();
  EXPECT_EQ(Journal::lines(), (Lines{kMade, kDestroyed}));
}

TEST_F(TopoRefCount, DoesNotChangeTheSizeOfTheServant) {
  static_assert(sizeof(Holder) == sizeof(TATopoManagementMgr_IImpl));
  static_assert(std::is_base_of_v<TATopoManagementMgr_IImpl, Holder>);
}

TEST_F(TopoRefCount, CountsAsTheServantBaseDoes) {
  auto* servant = new Holder;
  EXPECT_EQ(servant->_refcount_value(), 1U);
  servant->_add_ref();
  EXPECT_EQ(servant->_refcount_value(), 2U);
  servant->_remove_ref();
  EXPECT_EQ(Journal::lines(), Lines{kMade});
  servant->_remove_ref();
  EXPECT_EQ(Journal::lines().back(), kDestroyed);
}

TEST_F(TopoRefCount, IsDestroyedThoughTheLogFails) {
  for (const fakes::Step& step : {fakes::raiseRuntimeError("disk full"), fakes::raiseBadAlloc(),
                                  fakes::raiseProcessException(7), fakes::raiseTransient()}) {
    fakes::resetJournal();
    auto* servant = new Holder;
    fakes::onCall("TaDebug", 2, step);
    servant->_remove_ref();
    EXPECT_EQ(Journal::lines(), (Lines{kMade, kDestroyed}));
  }
}

TEST_F(TopoRefCount, PassesExceptionsOfTheLogInTheConstructor) {
  fakes::onCall("TaDebug", 1, fakes::raiseRuntimeError("disk full"));
  EXPECT_THROW(new Holder, std::runtime_error);
}

// --- The factory of the servants.

class TopoNorthMgrFactory : public fakes::Fixture {
 protected:
  TOPONorthMgrFactory factory_;
};

TEST_F(TopoNorthMgrFactory, MakesServantsOfTheManager) {
  POA_common::Common_I* const servant = factory_.create();
  ASSERT_NE(servant, nullptr);
  EXPECT_NE(dynamic_cast<Holder*>(servant), nullptr);
  EXPECT_EQ(servant->_refcount_value(), 1U);
  EXPECT_EQ(Journal::lines(), Lines{kMade});
  servant->_remove_ref();
}

TEST_F(TopoNorthMgrFactory, MakesANewServantEveryTime) {
  POA_common::Common_I* const one = factory_.create();
  POA_common::Common_I* const other = factory_.create();
  EXPECT_NE(one, other);
  one->_remove_ref();
  other->_remove_ref();
}

TEST_F(TopoNorthMgrFactory, GivesNullAndAnErrorNumberWhenMemoryIsShort) {
  errno = 0;
  const fakes::FailingNothrowNew failing(sizeof(Holder), sizeof(Holder));
  EXPECT_EQ(factory_.create(), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(Journal::lines(), Lines{});
}

TEST_F(TopoNorthMgrFactory, PassesExceptionsOfTheLog) {
  fakes::onCall("TaDebug", 1, fakes::raiseRuntimeError("disk full"));
  EXPECT_THROW(factory_.create(), std::runtime_error);
}

TEST_F(TopoNorthMgrFactory, HasNoData) {
  static_assert(sizeof(TOPONorthMgrFactory) == sizeof(NS_CORBA::MgrFactory));
  static_assert(std::is_base_of_v<NS_CORBA::MgrFactory, TOPONorthMgrFactory>);
}

}  // namespace
