// The clock views of the servant.

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/Failure.h"
#include "tests/fakes/OrbFixture.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::failureOf;
using fakes::Journal;
using fakes::network;
using globaldefs::ProcessingFailureException;
using topologicalLink::TopologicalLinkIterator_I_var;
using topologicalLink::TopologicalLinkList_T;
using topologicalLink::TopologicalLinkList_T_var;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_var;

// One of the two operations, with the differences between them.
struct ClockOperation {
  std::function<void(CORBA::ULong howMany)> call;
  std::string query;
  std::string name;
  std::string line;
};

class TopoServantClocks : public fakes::OrbFixture {
 protected:
  // Three clock positions and three clock links.
  TopoServantClocks() {
    for (const char* number : {"1", "2", "3"}) {
      NS_DOMAIN::ClockPositionInfo_T position;
      position.reference = std::string("NE=") + number;
      position.label = std::string("Clock ") + number;
      network().clockPositions.push_back(position);
      NS_DOMAIN::ClockTopoLinkInfo_T link;
      link.linkId = number;
      link.nativeName = std::string("Link ") + number;
      link.aEndReference = position.reference;
      link.zEndReference = "NE=9";
      network().clockLinks.push_back(link);
    }
  }

  void nodes(CORBA::ULong howMany) {
    servant_->getClockSourceSubnetworkViewInfo(howMany, nodes_.out(), nodeIterator_.out());
  }

  void links(CORBA::ULong howMany) {
    servant_->getAllClockSourceViewlTopologicalLinks(howMany, links_.out(), linkIterator_.out());
  }

  std::vector<ClockOperation> operations() {
    return {{[this](CORBA::ULong howMany) { nodes(howMany); }, "GetClockPositionList",
             "getClockSourceSubnetworkViewInfo", "121"},
            {[this](CORBA::ULong howMany) { links(howMany); }, "GetClockTopoLinkList",
             "getAllClockSourceViewlTopologicalLinks", "144"}};
  }

  static std::string logged(const ClockOperation& operation, const std::string& code) {
    return "TaDebugWithPara(1, \"[TopoManagementMgr::" + operation.name +
           "]: catch processException! errorCode = " + code +
           "\") at topomanagementmgrimpl:" + operation.line + " unknown";
  }

  static Lines failureCalls() {
    return Journal::linesOf(
        {"TaDebug", "TaDebugWithPara", "NbiException", "ThrowException", "ConstructException"});
  }

  template <typename List>
  static Lines labelsOf(const List& list) {
    Lines result;
    for (CORBA::ULong i = 0; i < list.length(); ++i) {
      result.emplace_back(list[i].nativeEMSName.in());
    }
    return result;
  }

  Servant_var servant_ = new ServantUnderTest;
  NodeList_T_var nodes_;
  NodeIterator_I_var nodeIterator_;
  TopologicalLinkList_T_var links_;
  TopologicalLinkIterator_I_var linkIterator_;
};

using TopoServantClocksDeathTest = TopoServantClocks;

// --- Results.

TEST_F(TopoServantClocks, ReturnAllNodesWhenTheyFit) {
  for (const CORBA::ULong howMany : {3U, 4U, 0xFFFFFFFFU}) {
    nodes(howMany);
    EXPECT_EQ(labelsOf(nodes_.in()), (Lines{"Clock 1", "Clock 2", "Clock 3"}));
    EXPECT_TRUE(CORBA::is_nil(nodeIterator_));
  }
  EXPECT_EQ(Journal::count("add_Iterator"), 0);
}

TEST_F(TopoServantClocks, ReturnAllLinksWhenTheyFit) {
  for (const CORBA::ULong howMany : {3U, 4U, 0xFFFFFFFFU}) {
    links(howMany);
    EXPECT_EQ(labelsOf(links_.in()), (Lines{"Link 1", "Link 2", "Link 3"}));
    EXPECT_TRUE(CORBA::is_nil(linkIterator_));
  }
  EXPECT_EQ(Journal::count("add_Iterator"), 0);
}

TEST_F(TopoServantClocks, ReturnTheRestOfTheNodesThroughAnIterator) {
  nodes(2);
  EXPECT_EQ(labelsOf(nodes_.in()), (Lines{"Clock 1", "Clock 2"}));
  ASSERT_FALSE(CORBA::is_nil(nodeIterator_));
  EXPECT_EQ(nodeIterator_->getLength(), 1U);
  NodeList_T_var rest;
  EXPECT_FALSE(nodeIterator_->next_n(1, rest.out()));
  EXPECT_EQ(labelsOf(rest.in()), Lines{"Clock 3"});
}

TEST_F(TopoServantClocks, ReturnTheRestOfTheLinksThroughAnIterator) {
  links(1);
  EXPECT_EQ(labelsOf(links_.in()), Lines{"Link 1"});
  ASSERT_FALSE(CORBA::is_nil(linkIterator_));
  EXPECT_EQ(linkIterator_->getLength(), 2U);
  TopologicalLinkList_T_var batch;
  EXPECT_TRUE(linkIterator_->next_n(1, batch.out()));
  EXPECT_EQ(labelsOf(batch.in()), Lines{"Link 2"});
  EXPECT_FALSE(linkIterator_->next_n(5, batch.out()));
  EXPECT_EQ(labelsOf(batch.in()), Lines{"Link 3"});
  EXPECT_EQ(fakes::printed(batch[0].aEndTP), "[EMS=EMS-1, ManagedElement=3]");
  EXPECT_TRUE(fakes::registeredIterators().empty());
}

TEST_F(TopoServantClocks, GiveIteratorsThatCanBeEndedEarly) {
  nodes(1);
  links(1);
  EXPECT_EQ(fakes::registeredIterators().size(), 2U);
  nodeIterator_->destroy();
  linkIterator_->destroy();
  EXPECT_TRUE(fakes::registeredIterators().empty());
}

TEST_F(TopoServantClocks, AcceptEveryBatchSize) {
  nodes(0);
  EXPECT_EQ(nodes_->length(), 0U);
  ASSERT_FALSE(CORBA::is_nil(nodeIterator_));
  EXPECT_EQ(nodeIterator_->getLength(), 3U);
  links(0);
  EXPECT_EQ(links_->length(), 0U);
  ASSERT_FALSE(CORBA::is_nil(linkIterator_));
  EXPECT_EQ(linkIterator_->getLength(), 3U);
}

TEST_F(TopoServantClocks, ReturnEmptyListsWhenThereIsNothing) {
  network().clockPositions.clear();
  network().clockLinks.clear();
  for (const CORBA::ULong howMany : {0U, 1U, 0xFFFFFFFFU}) {
    nodes(howMany);
    EXPECT_EQ(nodes_->length(), 0U);
    EXPECT_TRUE(CORBA::is_nil(nodeIterator_));
    links(howMany);
    EXPECT_EQ(links_->length(), 0U);
    EXPECT_TRUE(CORBA::is_nil(linkIterator_));
  }
}

TEST_F(TopoServantClocks, ReadTheDomainInEveryView) {
  nodes(9);
  network().clockPositions.resize(1);
  nodes(9);
  EXPECT_EQ(nodes_->length(), 1U);
  EXPECT_EQ(Journal::count("GetClockPositionList"), 2);
}

TEST_F(TopoServantClocks, AnswerManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 10; ++round) {
        NodeList_T_var nodes;
        NodeIterator_I_var nodeIterator;
        servant_->getClockSourceSubnetworkViewInfo(3, nodes.out(), nodeIterator.out());
        EXPECT_EQ(nodes->length(), 3U);
        TopologicalLinkList_T_var links;
        TopologicalLinkIterator_I_var linkIterator;
        servant_->getAllClockSourceViewlTopologicalLinks(2, links.out(), linkIterator.out());
        TopologicalLinkList_T_var rest;
        EXPECT_FALSE(linkIterator->next_n(10, rest.out()));
        EXPECT_EQ(rest->length(), 1U);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

TEST_F(TopoServantClocks, AnswerThroughAReference) {
  const PortableServer::ObjectId_var id = orb().iteratorPoa()->activate_object(servant_.in());
  const CORBA::Object_var object = orb().iteratorPoa()->id_to_reference(id.in());
  const TopoManagementManager::TopoMgr_I_var manager =
      TopoManagementManager::TopoMgr_I::_narrow(object);
  manager->getClockSourceSubnetworkViewInfo(2, nodes_.out(), nodeIterator_.out());
  EXPECT_EQ(nodes_->length(), 2U);
  manager->getAllClockSourceViewlTopologicalLinks(2, links_.out(), linkIterator_.out());
  EXPECT_EQ(links_->length(), 2U);
  orb().iteratorPoa()->deactivate_object(id.in());
}

// --- The calls.

TEST_F(TopoServantClocks, MakeTheNodesOfTheseCalls) {
  network().clockPositions.resize(1);
  nodes(1);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
                   "GetClockPositionList(10)", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertNEIndexToName(0, 1)"}));
}

TEST_F(TopoServantClocks, MakeTheLinksOfTheseCalls) {
  network().clockLinks.resize(1);
  links(1);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
                   "GetClockTopoLinkList(10)", "EmsName()", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "GetObjectLabelInfo(\"1\", 201)", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertNEIndexToName(0, 1)", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertNEIndexToName(0, 9)"}));
}

TEST_F(TopoServantClocks, MakeTheIteratorLast) {
  for (const ClockOperation& operation : operations()) {
    Journal::clear();
    operation.call(2);
    const Lines lines = Journal::linesOf({"ConvertNEIndexToName", "add_Iterator"});
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "add_Iterator()");
  }
}

TEST_F(TopoServantClocks, CallNoFailureFunctionOnSuccess) {
  for (const ClockOperation& operation : operations()) {
    operation.call(3);
  }
  EXPECT_EQ(failureCalls(), Lines{});
}

// --- Failures of the domain.

TEST_F(TopoServantClocks, LogAFailureOfTheDomainAndRaiseItsCode) {
  for (const ClockOperation& operation : operations()) {
    for (const std::string& call : {std::string("GetFacet"), std::string("GetTopoData"),
                                    operation.query, operation.query + " late"}) {
      fakes::resetJournal();
      fakes::onCall(call, 1, fakes::raiseProcessException(77));
      EXPECT_EQ(failureOf([&] { operation.call(1); }), fakes::thrownFor(77)) << call;
      EXPECT_EQ(failureCalls(), (Lines{logged(operation, "77"), "ThrowException(77)"})) << call;
      EXPECT_EQ(Journal::linesOf({"ConvertNEIndexToName", "add_Iterator"}), Lines{}) << call;
    }
  }
}

TEST_F(TopoServantClocks, LogANegativeCodeAndRaiseItUnsigned) {
  for (const ClockOperation& operation : operations()) {
    fakes::resetJournal();
    fakes::onCall(operation.query, 1, fakes::raiseProcessException(-5));
    EXPECT_EQ(failureOf([&] { operation.call(1); }), fakes::thrownFor(4294967291));
    EXPECT_EQ(failureCalls(), (Lines{logged(operation, "-5"), "ThrowException(4294967291)"}));
  }
}

TEST_F(TopoServantClocks, LogAMissingDomainAndRaiseItsCode) {
  fakes::openBuffer("DomainInterface").Remove(&fakes::domainInterface());
  for (const ClockOperation& operation : operations()) {
    Journal::clear();
    EXPECT_EQ(failureOf([&] { operation.call(1); }), fakes::thrownFor(1092091908));
    EXPECT_EQ(failureCalls(),
              (Lines{logged(operation, "1092091908"), "ThrowException(1092091908)"}));
  }
}

TEST_F(TopoServantClocks, RaiseOneCodeForAnyOtherFailureAndLogNothing) {
  const std::vector<fakes::Step> steps = {
      fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc(), fakes::raiseTransient(),
      []() -> CORBA::ULong { throw 5; },
      []() -> CORBA::ULong {
        throw ProcessingFailureException(globaldefs::EXCPT_NOT_IMPLEMENTED, "the domain's own");
      }};
  for (const ClockOperation& operation : operations()) {
    for (const std::string& call : {std::string("GetFacet"), std::string("GetTopoData"),
                                    operation.query, operation.query + " late"}) {
      for (const fakes::Step& step : steps) {
        fakes::resetJournal();
        fakes::onCall(call, 1, step);
        EXPECT_EQ(failureOf([&] { operation.call(1); }), fakes::thrownFor(1092092090)) << call;
        EXPECT_EQ(failureCalls(), Lines{"ThrowException(1092092090)"}) << call;
      }
    }
  }
}

TEST_F(TopoServantClocks, GoOnWithoutRecordsAfterAFailureWithoutACode) {
  for (const ClockOperation& operation : operations()) {
    for (const std::string& call :
         {std::string("GetFacet"), std::string("GetTopoData"), operation.query}) {
      fakes::resetJournal();
      fakes::onCall(call, 1, fakes::raiseProcessException(0));
      EXPECT_EQ(failureOf([&] { operation.call(1); }), std::nullopt) << call;
      EXPECT_EQ(failureCalls(), (Lines{logged(operation, "0"), "ThrowException(0)"})) << call;
    }
  }
  EXPECT_EQ(nodes_->length(), 0U);
  EXPECT_TRUE(CORBA::is_nil(nodeIterator_));
  EXPECT_EQ(links_->length(), 0U);
  EXPECT_TRUE(CORBA::is_nil(linkIterator_));
}

TEST_F(TopoServantClocks, GoOnWithTheRecordsOfAQueryThatFailsLateWithoutACode) {
  for (const ClockOperation& operation : operations()) {
    fakes::onCall(operation.query + " late", 1, fakes::raiseProcessException(0));
    operation.call(2);
  }
  EXPECT_EQ(labelsOf(nodes_.in()), (Lines{"Clock 1", "Clock 2"}));
  EXPECT_EQ(nodeIterator_->getLength(), 1U);
  EXPECT_EQ(labelsOf(links_.in()), (Lines{"Link 1", "Link 2"}));
  EXPECT_EQ(linkIterator_->getLength(), 1U);
}

TEST_F(TopoServantClocks, ReturnNeitherListNorIteratorWhenTheyFail) {
  fakes::onCall("GetClockPositionList late", 1, fakes::raiseProcessException(7));
  fakes::onCall("GetClockTopoLinkList late", 1, fakes::raiseRuntimeError("broken"));
  NodeList_T* nodes = nullptr;
  EXPECT_THROW(servant_->getClockSourceSubnetworkViewInfo(1, nodes, nodeIterator_.out()),
               ProcessingFailureException);
  EXPECT_EQ(nodes, nullptr);
  EXPECT_TRUE(CORBA::is_nil(nodeIterator_));
  TopologicalLinkList_T* links = nullptr;
  EXPECT_THROW(servant_->getAllClockSourceViewlTopologicalLinks(1, links, linkIterator_.out()),
               ProcessingFailureException);
  EXPECT_EQ(links, nullptr);
  EXPECT_TRUE(CORBA::is_nil(linkIterator_));
}

// --- Failures after the query.

TEST_F(TopoServantClocks, PassTheFailureOfTheIterator) {
  for (const ClockOperation& operation : operations()) {
    fakes::resetJournal();
    fakes::onCall("add_Iterator", 1, fakes::giveCode(88));
    EXPECT_EQ(failureOf([&] { operation.call(1); }), fakes::thrownFor(88));
  }
  EXPECT_TRUE(CORBA::is_nil(nodeIterator_));
  EXPECT_TRUE(CORBA::is_nil(linkIterator_));
}

TEST_F(TopoServantClocks, LetSystemExceptionsBehindTheQueryPass) {
  for (const ClockOperation& operation : operations()) {
    fakes::resetJournal();
    fakes::onCall("ConvertNEIndexToName", 1, fakes::raiseTransient());
    EXPECT_THROW(operation.call(1), CORBA::TRANSIENT);
    EXPECT_EQ(failureCalls(), Lines{});
  }
}

TEST_F(TopoServantClocksDeathTest, EndTheProcessWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  for (const ClockOperation& operation : operations()) {
    EXPECT_DEATH(operation.call(1), "InterfaceNotExistException") << operation.name;
  }
}

TEST_F(TopoServantClocksDeathTest, EndTheProcessForAForeignExceptionBehindTheQuery) {
  fakes::onCall("ConvertNEIndexToName", 1, fakes::raiseRuntimeError("no names today"));
  for (const ClockOperation& operation : operations()) {
    EXPECT_DEATH(operation.call(1), "no names today") << operation.name;
  }
  fakes::onCall("GetObjectLabelInfo", 1, fakes::raiseBadAlloc());
  EXPECT_DEATH(links(1), "bad_alloc");
}

TEST_F(TopoServantClocksDeathTest, EndTheProcessForTheFrameworksExceptionBehindTheQuery) {
  fakes::onCall("ConvertNEIndexToName", 1, fakes::raiseProcessException(7));
  for (const ClockOperation& operation : operations()) {
    EXPECT_DEATH(operation.call(1), "ProcessException") << operation.name;
  }
}

}  // namespace
