// The protect subnetwork view and the view below a subnetwork, through the servant.

#include <functional>
#include <iostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/fakes/Failure.h"
#include "tests/fakes/OrbFixture.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"

namespace {

using Lines = std::vector<std::string>;
using Operation = std::function<void(CORBA::ULong)>;

using fakes::failureOf;
using fakes::Journal;
using fakes::network;
using fakes::subnetwork;
using globaldefs::ProcessingFailureException;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_var;

class TopoServantSubnetworks : public fakes::OrbFixture {
 protected:
  // A, B and C are in S.
  TopoServantSubnetworks() {
    network().nodes = {subnetwork("S", "S"), subnetwork("A", "A"), subnetwork("B", "B"),
                       subnetwork("C", "C")};
    for (std::size_t i = 1; i < 4; ++i) {
      network().nodes[i].parentId = "S";
      network().nodes[i].parentType = NS_DOMAIN::kTopoSubnetwork;
    }
  }

  void protectView(CORBA::ULong howMany) {
    servant_->getProtectSubnetworkViewInfo(howMany, nodes_.out(), iterator_.out());
  }

  void viewBelow(CORBA::ULong howMany) {
    servant_->getViewInfoByTopoSubnetwork(name_, howMany, nodes_.out(), iterator_.out());
  }

  // Both operations.
  std::vector<std::pair<std::string, Operation>> views() {
    return {{"protect", [this](CORBA::ULong howMany) { protectView(howMany); }},
            {"below", [this](CORBA::ULong howMany) { viewBelow(howMany); }}};
  }

  static Lines labelsOf(const NodeList_T& nodes) {
    Lines result;
    for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
      result.emplace_back(nodes[i].nativeEMSName.in());
    }
    return result;
  }

  Servant_var servant_ = new ServantUnderTest;
  globaldefs::NVSList_T name_ = fakes::nameOf("TopoSubnetwork", "S");
  NodeList_T_var nodes_;
  NodeIterator_I_var iterator_;
};

using TopoServantSubnetworksDeathTest = TopoServantSubnetworks;

// --- Results.

TEST_F(TopoServantSubnetworks, ReturnTheWholeViewWhenItFits) {
  protectView(4);
  EXPECT_EQ(labelsOf(nodes_.in()), (Lines{"S", "A", "B", "C"}));
  EXPECT_TRUE(CORBA::is_nil(iterator_));
  viewBelow(3);
  EXPECT_EQ(labelsOf(nodes_.in()), (Lines{"A", "B", "C"}));
  EXPECT_TRUE(CORBA::is_nil(iterator_));
  EXPECT_EQ(Journal::linesOf({"getIteratorPoa", "add_Iterator"}), Lines{});
}

TEST_F(TopoServantSubnetworks, ReturnTheRestThroughAnIterator) {
  for (const auto& view : views()) {
    view.second(1);
    Lines delivered = labelsOf(nodes_.in());
    EXPECT_EQ(delivered.size(), 1U) << view.first;
    ASSERT_FALSE(CORBA::is_nil(iterator_)) << view.first;
    NodeList_T_var rest;
    EXPECT_FALSE(iterator_->next_n(5, rest.out())) << view.first;
    for (const std::string& label : labelsOf(rest.in())) {
      delivered.push_back(label);
    }
    EXPECT_EQ(delivered,
              view.first == "below" ? (Lines{"A", "B", "C"}) : (Lines{"S", "A", "B", "C"}));
  }
}

TEST_F(TopoServantSubnetworks, AcceptEveryBatchSize) {
  for (const auto& view : views()) {
    view.second(0);
    EXPECT_EQ(nodes_->length(), 0U) << view.first;
    ASSERT_FALSE(CORBA::is_nil(iterator_)) << view.first;
    const CORBA::ULong all = view.first == "below" ? 3 : 4;
    EXPECT_EQ(iterator_->getLength(), all) << view.first;
    view.second(0xFFFFFFFF);
    EXPECT_EQ(nodes_->length(), all) << view.first;
    EXPECT_TRUE(CORBA::is_nil(iterator_)) << view.first;
  }
}

TEST_F(TopoServantSubnetworks, ReturnAnEmptyListForAnEmptyDomain) {
  network().nodes.clear();
  for (const auto& view : views()) {
    for (const CORBA::ULong howMany : {0U, 1U, 0xFFFFFFFFU}) {
      view.second(howMany);
      EXPECT_EQ(nodes_->length(), 0U) << view.first;
      EXPECT_TRUE(CORBA::is_nil(iterator_)) << view.first;
    }
  }
}

TEST_F(TopoServantSubnetworks, PassTheFailureOfTheIterator) {
  for (const auto& view : views()) {
    fakes::resetJournal();
    fakes::onCall("add_Iterator", 1, fakes::giveCode(88));
    EXPECT_EQ(failureOf([&] { view.second(1); }), fakes::thrownFor(88)) << view.first;
    EXPECT_TRUE(CORBA::is_nil(iterator_)) << view.first;
  }
}

TEST_F(TopoServantSubnetworks, LogNothingOfTheirOwn) {
  for (const auto& view : views()) {
    view.second(4);
  }
  EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException"}), Lines{});
}

TEST_F(TopoServantSubnetworks, AnswerManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 10; ++round) {
        NodeList_T_var nodes;
        NodeIterator_I_var iterator;
        servant_->getProtectSubnetworkViewInfo(4, nodes.out(), iterator.out());
        EXPECT_EQ(nodes->length(), 4U);
        servant_->getViewInfoByTopoSubnetwork(name_, 3, nodes.out(), iterator.out());
        EXPECT_EQ(nodes->length(), 3U);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// --- The protect subnetwork view.

TEST_F(TopoServantSubnetworks, MakeTheProtectViewOfTheseCalls) {
  network().nodes.resize(1);
  protectView(1);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
                   "GetAllTopoNodes()", "GetTestSwitch()", "GetNEData()", "GetNEIndexList(false)",
                   "GetNEIndexList(true)", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertTopoNodeIdToName(\"S\")", "GetTestSwitch()"}));
}

TEST_F(TopoServantSubnetworks, TurnAFailureCodeOfTheProtectViewIntoTheUserException) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(77));
  EXPECT_EQ(failureOf([&] { protectView(1); }), fakes::constructedFrom(77));
  EXPECT_EQ(Journal::linesOf({"ConstructException", "ThrowException"}),
            Lines{"ConstructException(77)"});
}

TEST_F(TopoServantSubnetworks, TurnANegativeCodeOfTheProtectViewIntoAnUnsignedOne) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(-5));
  EXPECT_EQ(failureOf([&] { protectView(1); }), fakes::constructedFrom(4294967291));
}

TEST_F(TopoServantSubnetworks, ReturnNeitherListNorIteratorWhenTheProtectViewFailsPartly) {
  network().indexes = fakes::indexes({5});
  fakes::onCall("GetNEList late", 1, fakes::raiseProcessException(77));
  NodeList_T* nodes = nullptr;
  EXPECT_EQ(failureOf([&] { servant_->getProtectSubnetworkViewInfo(1, nodes, iterator_.out()); }),
            fakes::constructedFrom(77));
  EXPECT_EQ(nodes, nullptr);
  EXPECT_TRUE(CORBA::is_nil(iterator_));
  EXPECT_EQ(Journal::linesOf({"getIteratorPoa", "add_Iterator"}), Lines{});
}

TEST_F(TopoServantSubnetworks, TurnAMissingDomainOfTheProtectViewIntoTheUserException) {
  fakes::openBuffer("DomainInterface").Remove(&fakes::domainInterface());
  EXPECT_EQ(failureOf([&] { protectView(1); }), fakes::constructedFrom(1092091908));
}

TEST_F(TopoServantSubnetworks, ReturnTheProtectViewOfAQueryThatFailsWithoutACode) {
  fakes::onCall("GetNEIndexList", 1, fakes::raiseProcessException(0));
  EXPECT_EQ(failureOf([&] { protectView(4); }), std::nullopt);
  EXPECT_EQ(nodes_->length(), 4U);
  EXPECT_EQ(Journal::count("ConstructException"), 0);
}

// --- The view below a subnetwork.

TEST_F(TopoServantSubnetworks, AskForTheTypeOfTheNameFirst) {
  network().nodes.resize(2);
  viewBelow(1);
  EXPECT_EQ(
      Journal::lines(),
      (Lines{"CheckIFBuf(\"CorbaUtilInterface\")", "GetObjectType([EMS=EMS-1, TopoSubnetwork=S])",
             "CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
             "GetAllTopoNodes()", "GetNEData()", "GetNEIndexList(false)", "GetNEIndexList(true)",
             "CheckIFBuf(\"CorbaUtilInterface\")", "Name2Index([EMS=EMS-1, TopoSubnetwork=S])",
             "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"A\")",
             "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"S\")",
             "GetTestSwitch()"}));
}

TEST_F(TopoServantSubnetworks, RefuseTheNameOfAnythingElseBeforeReadingTheTopology) {
  for (const int type : {0, 53, 55, -54, 201}) {
    fakes::resetJournal();
    fakes::corbaUtilAnswers().objectType = type;
    NodeList_T* nodes = nullptr;
    EXPECT_EQ(
        failureOf([&] { servant_->getViewInfoByTopoSubnetwork(name_, 1, nodes, iterator_.out()); }),
        (fakes::Failure{globaldefs::EXCPT_INVALID_INPUT, "please input topoSubnetwork!"}));
    EXPECT_EQ(nodes, nullptr);
    EXPECT_TRUE(CORBA::is_nil(iterator_));
    EXPECT_EQ(Journal::lines(), (Lines{"CheckIFBuf(\"CorbaUtilInterface\")",
                                       "GetObjectType([EMS=EMS-1, TopoSubnetwork=S])"}));
  }
}

TEST_F(TopoServantSubnetworks, RefuseInputWithTheExceptionTypeForIt) {
  fakes::corbaUtilAnswers().objectType = 1;
  try {
    viewBelow(1);
    FAIL() << "nothing was raised";
  } catch (const ProcessingFailureException& failure) {
    EXPECT_EQ(failure.exceptionType, globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(static_cast<int>(failure.exceptionType), 2);
  }
}

TEST_F(TopoServantSubnetworks, CheckNothingElseInTheName) {
  for (const auto& name : {globaldefs::NVSList_T(), fakes::nameOf("", "")}) {
    name_ = name;
    EXPECT_EQ(failureOf([&] { viewBelow(9); }), std::nullopt);
  }
  EXPECT_EQ(Journal::linesOf({"GetObjectType", "Name2Index"}),
            (Lines{"GetObjectType([])", "Name2Index([])", "GetObjectType([EMS=EMS-1, =])",
                   "Name2Index([EMS=EMS-1, =])"}));
}

TEST_F(TopoServantSubnetworks, ReturnTheNodesCollectedBeforeTheDomainFails) {
  fakes::onCall("GetNEIndexList", 1, fakes::raiseProcessException(77));
  EXPECT_EQ(failureOf([&] { viewBelow(9); }), std::nullopt);
  EXPECT_EQ(labelsOf(nodes_.in()), (Lines{"A", "B", "C"}));
  fakes::onCall("GetAllTopoNodes", 2, fakes::raiseProcessException(77));
  EXPECT_EQ(failureOf([&] { viewBelow(9); }), std::nullopt);
  EXPECT_EQ(nodes_->length(), 0U);
  EXPECT_EQ(Journal::linesOf({"ConstructException", "ThrowException"}), Lines{});
}

TEST_F(TopoServantSubnetworks, AnswerAboutASubnetworkThroughAReference) {
  const PortableServer::ObjectId_var id = orb().iteratorPoa()->activate_object(servant_.in());
  const CORBA::Object_var object = orb().iteratorPoa()->id_to_reference(id.in());
  const TopoManagementManager::TopoMgr_I_var manager =
      TopoManagementManager::TopoMgr_I::_narrow(object);
  manager->getViewInfoByTopoSubnetwork(name_, 1, nodes_.out(), iterator_.out());
  EXPECT_EQ(nodes_->length(), 1U);
  EXPECT_EQ(iterator_->getLength(), 2U);
  orb().iteratorPoa()->deactivate_object(id.in());
}

// --- Exceptions that pass and exceptions that end the process.

TEST_F(TopoServantSubnetworks, PassSystemExceptions) {
  for (const auto& view : views()) {
    for (const char* call : {"GetAllTopoNodes", "GetNEIndexList", "ConvertTopoNodeIdToName"}) {
      fakes::resetJournal();
      fakes::onCall(call, 1, fakes::raiseTransient());
      EXPECT_THROW(view.second(1), CORBA::TRANSIENT) << view.first << " " << call;
    }
  }
  fakes::resetJournal();
  fakes::onCall("GetObjectType", 1, fakes::raiseTransient());
  EXPECT_THROW(viewBelow(1), CORBA::TRANSIENT);
  fakes::onCall("Name2Index", 1, fakes::raiseTransient());
  EXPECT_THROW(viewBelow(1), CORBA::TRANSIENT);
}

TEST_F(TopoServantSubnetworksDeathTest, EndTheProcessWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  for (const auto& view : views()) {
    EXPECT_DEATH(view.second(1), "InterfaceNotExistException") << view.first;
  }
}

TEST_F(TopoServantSubnetworksDeathTest, EndTheProcessWhenTheUtilityIsWithdrawnAfterTheCheck) {
  fakes::onCall("GetAllTopoNodes", 1, [] {
    fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
    return 0U;
  });
  EXPECT_DEATH(viewBelow(1), "InterfaceNotExistException");
}

TEST_F(TopoServantSubnetworksDeathTest, EndTheProcessForANameWithoutAnIdAfterReportingIt) {
  fakes::onCall("Name2Index", 1, fakes::giveCode(7));
  fakes::onCall("NbiException", 1, [] {
    std::cerr << "reported: " << fakes::reportedFailures().at(0).detail << std::endl;
    return 0U;
  });
  EXPECT_DEATH(viewBelow(1),
               "reported: ErrCode:7,Detail:TopoManagementMgr::getViewInfoByTopoSubnetwork, "
               "Name2Index Error!!\n(.|\n)*ProcessException");
}

TEST_F(TopoServantSubnetworksDeathTest, EndTheProcessForAForeignException) {
  fakes::onCall("GetNEIndexList", 1, fakes::raiseRuntimeError("the domain is broken"));
  for (const auto& view : views()) {
    EXPECT_DEATH(view.second(1), "the domain is broken") << view.first;
  }
  fakes::onCall("Name2Index", 1, fakes::raiseRuntimeError("no names today"));
  fakes::onCall("GetNEIndexList", 1, nullptr);
  EXPECT_DEATH(viewBelow(1), "no names today");
  fakes::onCall("GetObjectType", 1, fakes::raiseProcessException(7));
  EXPECT_DEATH(viewBelow(1), "ProcessException");
}

TEST_F(TopoServantSubnetworksDeathTest, EndTheProcessWhenMemoryIsShort) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseBadAlloc());
  for (const auto& view : views()) {
    EXPECT_DEATH(view.second(1), "bad_alloc") << view.first;
  }
}

}  // namespace
