#include "conformance/Records.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "conformance/shared/Verdict.h"

namespace {

using conformance::Broken;
using conformance::objectName;
using conformance::requireWellFormed;

TopoManagementManager::Node_T goodNode() {
  TopoManagementManager::Node_T node;
  node.name = objectName("x", "TopoSubnetwork", "a");
  node.nativeEMSName = CORBA::string_dup("München");
  node.nodeType = 1;
  node.nodeParam1 = 0;
  node.nodeParam2 = 0;
  return node;
}

TEST(ConformanceRecords, AcceptAWellFormedNode) {
  EXPECT_NO_THROW(requireWellFormed(goodNode(), "x"));
}

TEST(ConformanceRecords, RejectANameOfAnotherSystemOrForm) {
  for (const auto& name : {objectName("y", "TopoSubnetwork", "a"), objectName("x", "None", "a"),
                           objectName("x", "TopoSubnetwork", ""), globaldefs::NVSList_T()}) {
    TopoManagementManager::Node_T node = goodNode();
    node.name = name;
    EXPECT_THROW(requireWellFormed(node, "x"), Broken) << conformance::toText(name);
  }
}

TEST(ConformanceRecords, RejectATextThatIsNotUtf8) {
  TopoManagementManager::Node_T node = goodNode();
  node.nativeEMSName = CORBA::string_dup("M\xfcnchen");
  EXPECT_THROW(requireWellFormed(node, "x"), Broken);
}

TEST(ConformanceRecords, RejectAnUnknownNodeType) {
  TopoManagementManager::Node_T node = goodNode();
  node.nodeType = 2;
  EXPECT_THROW(requireWellFormed(node, "x"), Broken);
}

TEST(ConformanceRecords, SampleHasTheFirstNodesOfEachType) {
  std::vector<TopoManagementManager::Node_T> nodes;
  for (int i = 0; i < 50; ++i) {
    TopoManagementManager::Node_T node = goodNode();
    node.name = objectName("x", "TopoSubnetwork", std::to_string(i));
    node.nodeType = i < 40 ? 1 : 0;
    nodes.push_back(node);
  }
  const auto sample = conformance::sampleOf(nodes, 2);
  std::string values;
  for (const auto& node : sample) {
    values += std::string(node.name[1].value.in()) + ' ';
  }
  EXPECT_EQ(values, "0 1 40 41 ");
  EXPECT_EQ(conformance::sampleOf(nodes, 30).size(), 40U);
}

}  // namespace
