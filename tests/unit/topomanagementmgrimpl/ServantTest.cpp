#include <functional>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/agent/TECommonFunc.h"
#include "tests/fakes/Failure.h"
#include "tests/fakes/OrbFixture.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"
#include "topo/TmfRecords.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::failureOf;
using fakes::Journal;
using fakes::network;
using fakes::printed;
using fakes::subnetwork;
using globaldefs::NVSList_T;
using globaldefs::ProcessingFailureException;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_var;

using Operation = std::function<void()>;

// --- Common attributes.

class TopoServantAttributes : public fakes::PlatformFixture {
 protected:
  TopoServantAttributes() {
    name_ = fakes::nameOf("TopoSubnetwork", "a");
    topo::setLength(info_, 1);
    topo::setPair(info_, 0, "k", "v");
  }

  // Every setter, with the function of the agent that it calls.
  std::vector<std::pair<std::string, Operation>> setters() {
    return {{"onSetUserLabel", [this] { servant_->setUserLabel(name_, "label", true); }},
            {"onSetOwner", [this] { servant_->setOwner(name_, "owner"); }},
            {"onSetNativeEMSName", [this] { servant_->setNativeEMSName(name_, "native"); }},
            {"onSetAdditionalInfo", [this] { servant_->setAdditionalInfo(name_, info_); }},
            {"resetObject", [this] { servant_->resetObject(name_); }}};
  }

  Servant_var servant_ = new ServantUnderTest;
  NVSList_T name_;
  NVSList_T info_;
};

using TopoServantAttributesDeathTest = TopoServantAttributes;

TEST_F(TopoServantAttributes, SetAUserLabel) {
  servant_->setUserLabel(name_, "label", true);
  servant_->setUserLabel(name_, "", false);
  EXPECT_EQ(
      Journal::lines(),
      (Lines{"onSetUserLabel([EMS=EMS-1, TopoSubnetwork=a], \"label\", true)", "ThrowException(0)",
             "onSetUserLabel([EMS=EMS-1, TopoSubnetwork=a], \"\", false)", "ThrowException(0)"}));
}

TEST_F(TopoServantAttributes, SetAnOwner) {
  servant_->setOwner(name_, "owner");
  EXPECT_EQ(Journal::lines(),
            (Lines{"onSetOwner([EMS=EMS-1, TopoSubnetwork=a], \"owner\")", "ThrowException(0)"}));
}

TEST_F(TopoServantAttributes, SetANativeName) {
  servant_->setNativeEMSName(name_, "native");
  EXPECT_EQ(Journal::lines(),
            (Lines{"onSetNativeEMSName([EMS=EMS-1, TopoSubnetwork=a], \"native\")",
                   "ThrowException(0)"}));
}

TEST_F(TopoServantAttributes, SetAdditionalInfoWithAnErrorTextThatStartsEmpty) {
  servant_->setAdditionalInfo(name_, info_);
  EXPECT_EQ(Journal::lines(),
            (Lines{"onSetAdditionalInfo([EMS=EMS-1, TopoSubnetwork=a], [k=v], \"\")",
                   "ThrowException(0, \"\")"}));
  EXPECT_EQ(printed(info_), "[k=v]");
}

TEST_F(TopoServantAttributes, ReturnTheAdditionalInfoThatTheAgentUpdated) {
  fakes::agent().returnStoredAdditionalInfo = true;
  fakes::agent().storedAdditionalInfo = fakes::nameOf("stored", "x");
  servant_->setAdditionalInfo(name_, info_);
  EXPECT_EQ(printed(info_), "[EMS=EMS-1, stored=x]");
}

TEST_F(TopoServantAttributes, ResetAnObject) {
  servant_->resetObject(name_);
  EXPECT_EQ(Journal::lines(),
            (Lines{"resetObject([EMS=EMS-1, TopoSubnetwork=a])", "ThrowException(0)"}));
}

TEST_F(TopoServantAttributes, PassAnEmptyName) {
  servant_->setOwner({}, "owner");
  EXPECT_EQ(Journal::linesOf({"onSetOwner"}), Lines{"onSetOwner([], \"owner\")"});
}

TEST_F(TopoServantAttributes, RaiseTheAgentsExceptionOfAFailureCode) {
  for (const auto& setter : setters()) {
    fakes::onCall(setter.first, 1, fakes::giveCode(4000000000));
    const bool withText = setter.first == "onSetAdditionalInfo";
    const fakes::Failure withoutReason = {globaldefs::EXCPT_UNABLE_TO_COMPLY, ""};
    EXPECT_EQ(failureOf(setter.second), withText ? withoutReason : fakes::thrownFor(4000000000));
  }
}

TEST_F(TopoServantAttributes, PassTheErrorTextOfTheAdditionalInfo) {
  fakes::onCall("onSetAdditionalInfo", 1, fakes::giveCode(7));
  fakes::agent().attributeErrorText = "no such key";
  EXPECT_EQ(failureOf([&] { servant_->setAdditionalInfo(name_, info_); }),
            (fakes::Failure{globaldefs::EXCPT_UNABLE_TO_COMPLY, "no such key"}));
  EXPECT_EQ(Journal::linesOf({"ThrowException"}), Lines{"ThrowException(7, \"no such key\")"});
}

TEST_F(TopoServantAttributes, PassTheErrorTextOnSuccessToo) {
  fakes::agent().attributeErrorText = "a remark";
  servant_->setAdditionalInfo(name_, info_);
  EXPECT_EQ(Journal::linesOf({"ThrowException"}), Lines{"ThrowException(0, \"a remark\")"});
}

TEST_F(TopoServantAttributes, LogNothing) {
  for (const auto& setter : setters()) {
    fakes::onCall(setter.first, 1, fakes::giveCode(7));
    failureOf(setter.second);
  }
  EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException"}), Lines{});
}

TEST_F(TopoServantAttributes, LookUpNoServiceInterface) {
  for (const auto& setter : setters()) {
    setter.second();
  }
  EXPECT_EQ(Journal::count("CheckIFBuf"), 0);
}

TEST_F(TopoServantAttributes, PassSystemExceptions) {
  for (const auto& setter : setters()) {
    fakes::onCall(setter.first, 1, fakes::raiseTransient());
    EXPECT_THROW(setter.second(), CORBA::TRANSIENT) << setter.first;
  }
}

TEST_F(TopoServantAttributesDeathTest, EndTheProcessForAnyOtherException) {
  for (const auto& setter : setters()) {
    fakes::onCall(setter.first, 1, fakes::raiseRuntimeError("the agent is broken"));
    EXPECT_DEATH(setter.second(), "the agent is broken") << setter.first;
  }
}

TEST_F(TopoServantAttributesDeathTest, EndTheProcessForTheFrameworksException) {
  for (const auto& setter : setters()) {
    fakes::onCall(setter.first, 1, fakes::raiseProcessException(7));
    EXPECT_DEATH(setter.second(), "ProcessException") << setter.first;
  }
}

// --- Capabilities.

class TopoServantCapabilities : public TopoServantAttributes {
 protected:
  const std::string expectedCall_ =
      "onGetCapabilities([TopoManagementManager::TopoMgr_I::setUserLabel, "
      "TopoManagementManager::TopoMgr_I::setOwner, "
      "TopoManagementManager::TopoMgr_I::setNativeEMSName], "
      "[TopoManagementManager::TopoMgr_I::getTopoSubnetworkViewInfo, "
      "TopoManagementManager::TopoMgr_I::getProtectSubnetworkViewInfo, "
      "TopoManagementManager::TopoMgr_I::getViewInfoByTopoSubnetwork, "
      "TopoManagementManager::TopoMgr_I::getCapabilities])";
};

using TopoServantCapabilitiesDeathTest = TopoServantCapabilities;

TEST_F(TopoServantCapabilities, AreSevenOperationsInTwoGroups) {
  common::CapabilityList_T_var capabilities;
  servant_->getCapabilities(capabilities.out());
  EXPECT_EQ(Journal::lines(), Lines{expectedCall_});
}

TEST_F(TopoServantCapabilities, AreTheListThatTheAgentBuilds) {
  common::CapabilityList_T_var capabilities;
  servant_->getCapabilities(capabilities.out());
  ASSERT_EQ(capabilities->length(), 7U);
  EXPECT_STREQ(capabilities[6].name.in(), "TopoManagementManager::TopoMgr_I::getCapabilities");
  EXPECT_STREQ(capabilities[6].value.in(), "supported");
}

TEST_F(TopoServantCapabilities, AreTheSameInEveryStateOfTheAgent) {
  fakes::agent().testSwitch = true;
  fakes::resetAll();  // removes the published interfaces
  common::CapabilityList_T_var capabilities;
  servant_->getCapabilities(capabilities.out());
  EXPECT_EQ(Journal::lines(), Lines{expectedCall_});
}

TEST_F(TopoServantCapabilities, HaveNoFailureCode) {
  using Operations = const std::vector<std::string>&;
  static_assert(std::is_same_v<decltype(&NS_CORBA::TECommonFunc::onGetCapabilities),
                               void (*)(common::CapabilityList_T_out, Operations, Operations)>);
}

TEST_F(TopoServantCapabilitiesDeathTest, EndTheProcessForAForeignException) {
  fakes::onCall("onGetCapabilities", 1, fakes::raiseRuntimeError("no capabilities today"));
  common::CapabilityList_T_var capabilities;
  EXPECT_DEATH(servant_->getCapabilities(capabilities.out()), "no capabilities today");
}

// --- The topo subnetwork view.

class TopoServantView : public fakes::OrbFixture {
 protected:
  TopoServantView() {
    network().nodes = {subnetwork("a", "A"), subnetwork("b", "B"), subnetwork("c", "C")};
  }

  void view(CORBA::ULong howMany) {
    servant_->getTopoSubnetworkViewInfo(howMany, nodes_.out(), iterator_.out());
  }

  Servant_var servant_ = new ServantUnderTest;
  NodeList_T_var nodes_;
  NodeIterator_I_var iterator_;
};

using TopoServantViewDeathTest = TopoServantView;

TEST_F(TopoServantView, ReturnsTheWholeViewWhenItFits) {
  view(3);
  EXPECT_EQ(nodes_->length(), 3U);
  EXPECT_TRUE(CORBA::is_nil(iterator_));
}

TEST_F(TopoServantView, ReturnsTheRestThroughAnIterator) {
  view(2);
  ASSERT_EQ(nodes_->length(), 2U);
  EXPECT_STREQ(nodes_[0].nativeEMSName.in(), "A");
  EXPECT_STREQ(nodes_[1].nativeEMSName.in(), "B");
  ASSERT_FALSE(CORBA::is_nil(iterator_));
  EXPECT_EQ(iterator_->getLength(), 1U);
  NodeList_T_var rest;
  EXPECT_FALSE(iterator_->next_n(5, rest.out()));
  ASSERT_EQ(rest->length(), 1U);
  EXPECT_STREQ(rest[0].nativeEMSName.in(), "C");
}

TEST_F(TopoServantView, AcceptsEveryBatchSize) {
  view(0);
  EXPECT_EQ(nodes_->length(), 0U);
  ASSERT_FALSE(CORBA::is_nil(iterator_));
  EXPECT_EQ(iterator_->getLength(), 3U);
  view(0xFFFFFFFF);
  EXPECT_EQ(nodes_->length(), 3U);
}

TEST_F(TopoServantView, IsAnEmptyListForAnEmptyDomain) {
  network().nodes.clear();
  view(0);
  EXPECT_EQ(nodes_->length(), 0U);
  EXPECT_TRUE(CORBA::is_nil(iterator_));
}

TEST_F(TopoServantView, TurnsAFailureCodeIntoTheUserException) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(77));
  EXPECT_EQ(failureOf([&] { view(1); }), fakes::constructedFrom(77));
  EXPECT_EQ(Journal::linesOf({"ConstructException", "ThrowException"}),
            Lines{"ConstructException(77)"});
}

TEST_F(TopoServantView, ReturnsNeitherListNorIteratorWhenItFailsPartly) {
  network().indexes = fakes::indexes({5});
  fakes::onCall("GetNEList late", 1, fakes::raiseProcessException(77));
  NodeList_T* nodes = nullptr;
  EXPECT_EQ(failureOf([&] { servant_->getTopoSubnetworkViewInfo(1, nodes, iterator_.out()); }),
            fakes::constructedFrom(77));
  EXPECT_EQ(nodes, nullptr);
  EXPECT_TRUE(CORBA::is_nil(iterator_));
  EXPECT_EQ(Journal::linesOf({"getIteratorPoa", "add_Iterator"}), Lines{});
}

TEST_F(TopoServantView, TurnsAMissingDomainIntoTheUserException) {
  fakes::openBuffer("DomainInterface").Remove(&fakes::domainInterface());
  EXPECT_EQ(failureOf([&] { view(1); }), fakes::constructedFrom(1092091908));
}

TEST_F(TopoServantView, PassesSystemExceptions) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseTransient());
  EXPECT_THROW(view(1), CORBA::TRANSIENT);
}

TEST_F(TopoServantView, PassesBadParamOfASubnetworkWithoutAName) {
  fakes::corbaUtilAnswers().emptyTopoNodeNames = true;
  fakes::agent().testSwitch = true;
  EXPECT_THROW(view(1), CORBA::BAD_PARAM);
}

TEST_F(TopoServantView, PassesTheFailureOfTheIterator) {
  fakes::onCall("add_Iterator", 1, fakes::giveCode(88));
  EXPECT_EQ(failureOf([&] { view(1); }), fakes::thrownFor(88));
  EXPECT_TRUE(CORBA::is_nil(iterator_));
}

TEST_F(TopoServantView, LogsNothingOfItsOwn) {
  view(3);
  EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException"}), Lines{});
}

TEST_F(TopoServantViewDeathTest, EndsTheProcessWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_DEATH(view(1), "InterfaceNotExistException");
}

TEST_F(TopoServantViewDeathTest, EndsTheProcessForAForeignException) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseRuntimeError("the domain is broken"));
  EXPECT_DEATH(view(1), "the domain is broken");
}

TEST_F(TopoServantViewDeathTest, EndsTheProcessWhenMemoryIsShort) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseBadAlloc());
  EXPECT_DEATH(view(1), "bad_alloc");
}

TEST_F(TopoServantViewDeathTest, EndsTheProcessWhenThereIsNoMemoryForTheUserException) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(77));
  fakes::onCall("ConstructException", 1, fakes::raiseBadAlloc());
  EXPECT_DEATH(view(1), "bad_alloc");
}

// --- The servant itself.

TEST(TopoServant, StartsWithOneReference) {
  Servant_var servant = new ServantUnderTest;
  EXPECT_EQ(servant->_refcount_value(), 1U);
}

TEST(TopoServant, ServesTheInterfaceOfTheManager) {
  Servant_var servant = new ServantUnderTest;
  EXPECT_TRUE(servant->_is_a("IDL:TopoManagementManager/TopoMgr_I:1.0"));
  EXPECT_TRUE(servant->_is_a("IDL:common/Common_I:1.0"));
  EXPECT_FALSE(servant->_is_a("IDL:TopoManagementManager/TopoMgr_I:1.1"));
  EXPECT_FALSE(servant->_is_a("IDL:TopoManagementManager/NodeIterator_I:1.0"));
}

// A servant of the interface without data.
class BareServant : public virtual POA_TopoManagementManager::TopoMgr_I {};

TEST(TopoServant, HasNoData) {
  static_assert(sizeof(NS_CORBA::TATopoManagementMgr_IImpl) == sizeof(BareServant));
}

// Compiles only while resetObject is not virtual.
class ServantWithAResetOfItsOwn : public NS_CORBA::TATopoManagementMgr_IImpl {
 public:
  int resetObject(const NVSList_T&) { return 5; }
};

TEST_F(TopoServantAttributes, AreResetByAnOrdinaryFunction) {
  PortableServer::Servant_var<ServantWithAResetOfItsOwn> servant = new ServantWithAResetOfItsOwn;
  EXPECT_EQ(servant->resetObject(name_), 5);
  EXPECT_EQ(Journal::lines(), Lines{});
  NS_CORBA::TATopoManagementMgr_IImpl& base = *servant.in();
  base.resetObject(name_);
  EXPECT_EQ(Journal::count("resetObject"), 1);
}

TEST_F(TopoServantView, AnswersThroughItsReference) {
  const PortableServer::ObjectId_var id = orb().iteratorPoa()->activate_object(servant_.in());
  const CORBA::Object_var object = orb().iteratorPoa()->id_to_reference(id.in());
  const auto manager = TopoManagementManager::TopoMgr_I::_narrow(object);
  const TopoManagementManager::TopoMgr_I_var owner = manager;
  ASSERT_FALSE(CORBA::is_nil(manager));
  manager->getTopoSubnetworkViewInfo(1, nodes_.out(), iterator_.out());
  EXPECT_EQ(nodes_->length(), 1U);
  const common::Common_I_var base = common::Common_I::_narrow(object);
  EXPECT_FALSE(CORBA::is_nil(base));
  orb().iteratorPoa()->deactivate_object(id.in());
}

TEST_F(TopoServantView, AnswersManyThreadsAtOnce) {
  fakes::agent().testSwitch = true;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 20; ++round) {
        NodeList_T_var nodes;
        NodeIterator_I_var iterator;
        servant_->getTopoSubnetworkViewInfo(2, nodes.out(), iterator.out());
        EXPECT_EQ(nodes->length(), 2U);
        NodeList_T_var rest;
        EXPECT_FALSE(iterator->next_n(10, rest.out()));
        EXPECT_EQ(rest->length(), 1U);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
