// The handling of exceptions of the host during a request, for each function of the contracts that
// the servant calls. Other files test the functions of TECommonFunc.h, deactive_object and the
// lookup of interfaces.

#include <functional>
#include <string>
#include <vector>

#include "platform/agent/Failures.h"
#include "tests/fakes/Failure.h"
#include "tests/fakes/OrbFixture.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"

namespace {

using fakes::element;
using fakes::network;
using fakes::subnetwork;
using globaldefs::ProcessingFailureException;

// A call of a function of the host, and the request that makes the call.
struct HostCall {
  const char* function;
  std::function<void()> request;
  int nth = 1;
};

class TopoHostExceptions : public fakes::OrbFixture {
 protected:
  TopoHostExceptions() {
    network().nodes = {subnetwork("S", "S"), element("NE=1"), element("ONE=2"),
                       element("OS=3"),      element("4"),    subnetwork("0", "not convertible")};
    network().indexes = fakes::indexes({5});
    network().clockPositions.emplace_back().reference = "NE=6";
    network().clockLinks.emplace_back().linkId = "7";
  }

  void view() { servant_->getTopoSubnetworkViewInfo(100, nodes_.out(), iterator_.out()); }
  void viewWithIterator() { servant_->getTopoSubnetworkViewInfo(1, nodes_.out(), iterator_.out()); }
  void viewBelow() {
    servant_->getViewInfoByTopoSubnetwork(fakes::nameOf("TopoSubnetwork", "S"), 100, nodes_.out(),
                                          iterator_.out());
  }
  void clocks() { servant_->getClockSourceSubnetworkViewInfo(100, nodes_.out(), iterator_.out()); }
  void links() {
    servant_->getAllClockSourceViewlTopologicalLinks(100, links_.out(), linkIterator_.out());
  }

  // Runs a request with a failing call.
  static void run(const HostCall& call, const fakes::Step& failure) {
    fakes::onCall(call.function, call.nth, failure);
    call.request();
  }

  // The step ends the process. The failing call is counted from the first call after a reset.
  static void expectTheEnd(const HostCall& call, const fakes::Step& failure, const char* text) {
    fakes::resetJournal();
    EXPECT_DEATH(run(call, failure), text) << call.function;
  }

  static void expectCorbaExceptionsAtTheClient(const HostCall& call) {
    fakes::resetJournal();
    EXPECT_THROW(run(call, fakes::raiseTransient()), CORBA::TRANSIENT) << call.function;
    fakes::resetJournal();
    const auto refuse = []() -> CORBA::ULong {
      throw ProcessingFailureException(globaldefs::EXCPT_ACCESS_DENIED, "refused");
    };
    EXPECT_THROW(run(call, refuse), ProcessingFailureException) << call.function;
  }

  // The calls outside of domain queries.
  std::vector<HostCall> calls() {
    const auto view = [this] { this->view(); };
    const auto iterator = [this] { viewWithIterator(); };
    const auto below = [this] { viewBelow(); };
    const auto clocks = [this] { this->clocks(); };
    const auto links = [this] { this->links(); };
    return {{"GetTss", view},
            {"TaDebugWithPara", view},
            {"TaDebug", iterator},
            {"CorbaBaseAgentConfig::Instance", links},
            {"EmsName", links},
            // The first call of each view is part of its domain query.
            {"CorbaAgentConfig::Instance", view, 2},
            {"GetTestSwitch", view, 2},
            {"GetSpliteFDNData", view},
            {"GetMoc", view},
            {"GetIntegerValueByName", view},
            {"Str2Int", view},
            {"ConvertNEIndexToName", view},
            {"ConvertNEIndexToName", clocks},
            {"ConvertONEIndexToName", view},
            {"ConvertOSIndexToName", view},
            {"ConvertTopoNodeIdToName", view},
            {"GetObjectType", below},
            {"Name2Index", below},
            {"GetObjectLabelInfo", links},
            {"getIteratorPoa", iterator},
            {"add_Iterator", iterator}};
  }

  // The calls of the domain queries for nodes.
  std::vector<HostCall> nodeQueries() {
    const auto view = [this] { this->view(); };
    return {{"GetFacet", view},  {"GetTopoData", view},    {"GetAllTopoNodes", view},
            {"GetNEData", view}, {"GetNEIndexList", view}, {"GetNEList", view}};
  }

  // The calls of the domain queries for clock positions and clock links.
  std::vector<HostCall> clockQueries() {
    const auto clocks = [this] { this->clocks(); };
    const auto links = [this] { this->links(); };
    return {{"GetFacet", clocks},
            {"GetTopoData", links},
            {"GetClockPositionList", clocks},
            {"GetClockTopoLinkList", links}};
  }

  Servant_var servant_ = new ServantUnderTest;
  TopoManagementManager::NodeList_T_var nodes_;
  TopoManagementManager::NodeIterator_I_var iterator_;
  topologicalLink::TopologicalLinkList_T_var links_;
  topologicalLink::TopologicalLinkIterator_I_var linkIterator_;
};

using TopoHostExceptionsDeathTest = TopoHostExceptions;

TEST_F(TopoHostExceptionsDeathTest, EndTheProcessAsProcessExceptions) {
  for (const HostCall& call : calls()) {
    expectTheEnd(call, fakes::raiseProcessException(7), "ProcessException");
  }
}

TEST_F(TopoHostExceptionsDeathTest, EndTheProcessAsStandardExceptions) {
  for (const HostCall& call : calls()) {
    expectTheEnd(call, fakes::raiseRuntimeError("the host is broken"), "the host is broken");
  }
}

TEST_F(TopoHostExceptions, ReachTheClientAsCorbaExceptions) {
  for (const HostCall& call : calls()) {
    expectCorbaExceptionsAtTheClient(call);
  }
}

TEST_F(TopoHostExceptionsDeathTest, EndTheProcessDuringANodeQueryUnlessTheyAreProcessExceptions) {
  for (const HostCall& call : nodeQueries()) {
    expectTheEnd(call, fakes::raiseRuntimeError("the domain is broken"), "the domain is broken");
  }
}

TEST_F(TopoHostExceptions, BecomeFailuresDuringANodeQueryAsProcessExceptions) {
  for (const HostCall& call : nodeQueries()) {
    fakes::resetJournal();
    EXPECT_EQ(fakes::failureOf([&] { run(call, fakes::raiseProcessException(7)); }),
              fakes::constructedFrom(7))
        << call.function;
    expectCorbaExceptionsAtTheClient(call);
  }
}

TEST_F(TopoHostExceptions, BecomeFailuresDuringAClockQuery) {
  const fakes::Failure conversion = fakes::thrownFor(NS_CORBA::ERR_TOPO_CONVERSION);
  for (const HostCall& call : clockQueries()) {
    for (const fakes::Step& failure : {fakes::raiseRuntimeError("the domain is broken"),
                                       fakes::raiseBadAlloc(), fakes::raiseTransient()}) {
      fakes::resetJournal();
      EXPECT_EQ(fakes::failureOf([&] { run(call, failure); }), conversion) << call.function;
    }
    fakes::resetJournal();
    EXPECT_EQ(fakes::failureOf([&] { run(call, fakes::raiseProcessException(7)); }),
              fakes::thrownFor(7))
        << call.function;
  }
}

TEST_F(TopoHostExceptionsDeathTest, EndTheProcessInTheReportOfANameWithoutAnId) {
  fakes::onCall("Name2Index", 1, fakes::giveCode(5));
  fakes::onCall("NbiException", 1, fakes::raiseRuntimeError("no report today"));
  EXPECT_DEATH(viewBelow(), "no report today");
}

TEST_F(TopoHostExceptionsDeathTest, EndTheProcessInTheTranslationOfAFailure) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(7));
  fakes::onCall("ConstructException", 1, fakes::raiseRuntimeError("no reason today"));
  EXPECT_DEATH(view(), "no reason today");
  fakes::onCall("ThrowException", 1, fakes::raiseProcessException(7));
  EXPECT_DEATH(servant_->setOwner(fakes::nameOf("TopoSubnetwork", "S"), "owner"),
               "ProcessException");
}

}  // namespace
