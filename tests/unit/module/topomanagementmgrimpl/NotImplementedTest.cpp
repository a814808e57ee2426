#include <string>

#include "fakes/Fixture.h"
#include "topomanagementmgrimpl/ServantUnderTest.h"

namespace {

using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T_var;

class TopoServantNotImplemented : public fakes::PlatformFixture {
 protected:
  // The exception type and reason of an operation.
  template <typename Operation>
  static std::string refusal(const Operation& operation) {
    try {
      operation();
      return "nothing was raised";
    } catch (const globaldefs::ProcessingFailureException& failure) {
      return std::to_string(failure.exceptionType) + " " + failure.errorReason.in();
    }
  }

  Servant_var servant_ = new ServantUnderTest;
  NodeList_T_var nodes_;
  NodeIterator_I_var iterator_;
};

TEST_F(TopoServantNotImplemented, RefusesTheProtectSubnetworkView) {
  EXPECT_EQ(
      refusal([&] { servant_->getProtectSubnetworkViewInfo(1, nodes_.out(), iterator_.out()); }),
      "0 getProtectSubnetworkViewInfo is not implemented");
}

TEST_F(TopoServantNotImplemented, RefusesTheViewByTopoSubnetwork) {
  EXPECT_EQ(
      refusal([&] { servant_->getViewInfoByTopoSubnetwork({}, 1, nodes_.out(), iterator_.out()); }),
      "0 getViewInfoByTopoSubnetwork is not implemented");
}

TEST_F(TopoServantNotImplemented, RefusesTheClockSourceSubnetworkView) {
  EXPECT_EQ(refusal([&] {
              servant_->getClockSourceSubnetworkViewInfo(1, nodes_.out(), iterator_.out());
            }),
            "0 getClockSourceSubnetworkViewInfo is not implemented");
}

TEST_F(TopoServantNotImplemented, RefusesTheClockSourceLinks) {
  topologicalLink::TopologicalLinkList_T_var links;
  topologicalLink::TopologicalLinkIterator_I_var linkIterator;
  EXPECT_EQ(refusal([&] {
              servant_->getAllClockSourceViewlTopologicalLinks(1, links.out(), linkIterator.out());
            }),
            "0 getAllClockSourceViewlTopologicalLinks is not implemented");
}

}  // namespace
