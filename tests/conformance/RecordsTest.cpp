#include "conformance/Records.h"

#include <gtest/gtest.h>

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

}  // namespace
