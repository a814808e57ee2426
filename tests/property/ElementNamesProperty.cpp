// The rule that turns the id of an element node into an object, in its two places: the module's
// conversion into TMF names and the agent's objectOfElementNode. The agent's services change an
// object by that rule, so both must find the same object.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "agent/host/ObjectNaming.h"
#include "agent/host/Publication.h"
#include "agent/model/NetworkModel.h"
#include "agent/network/ManagedObjects.h"
#include "tests/property/Random.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using agent::ObjectKey;

constexpr const char* kEms = "E";

class ElementNamesProperty : public testing::Test {
 protected:
  // The object that the module's views show for an element node.
  static std::optional<ObjectKey> moduleObject(const std::string& nodeId) {
    globaldefs::NVSList_T name;
    if (TopoManagementMgr::convertDomainToTmfObjName(name, NS_DOMAIN::kTopoElement, nodeId) != 0) {
      return std::nullopt;
    }
    std::string problem;
    const std::optional<ObjectKey> key = agent::parseObjectName(name, kEms, problem);
    EXPECT_TRUE(key) << "the module's name of '" << nodeId << "': " << problem;
    return key;
  }

  // The object that the agent's services change for an element node.
  static std::optional<ObjectKey> agentObject(const std::string& nodeId) {
    const auto object = agent::objectOfElementNode(nodeId);
    return object ? std::optional(agent::keyOf(*object)) : std::nullopt;
  }

  static std::string describe(const std::optional<ObjectKey>& key) {
    return key ? std::to_string(key->type) + ' ' + key->id : "none";
  }

  // The views leave the id "0" out before they look for its name.
  static void expectSameObject(const std::string& nodeId) {
    if (nodeId != NS_DOMAIN::kZeroId) {
      EXPECT_EQ(describe(moduleObject(nodeId)), describe(agentObject(nodeId)))
          << "node id '" << nodeId << "'";
    }
  }

 private:
  const agent::NetworkModel model_{agent::Network{}};
  agent::ObjectNaming naming_{kEms, model_};
  const agent::Publication published_{"CorbaUtilInterface", naming_};
};

TEST_F(ElementNamesProperty, ModuleAndAgentFindTheSameObjectForKnownIds) {
  for (const char* nodeId : {"",           "5",
                             "-5",         "+5",
                             "05",         " 5",
                             "5x",         "2147483647",
                             "2147483648", "NE=5",
                             "NE=",        "NE=x",
                             "NE=-1",      "NE=2147483648",
                             "ONE=5",      "ONE=",
                             "ONE=x",      "OS=5",
                             "OS=",        "OS=x",
                             "EQ=7",       "EQ=1,NE=5",
                             "NE=5,EQ=1",  "NE=5,NE=6",
                             "ONE=5,NE=6", "NE=6,ONE=5",
                             "NE=5,ONE",   "ONE=5,OS",
                             "=5",         "NE=5,=6",
                             "ne=5",       "NE = 5",
                             "NE=5,",      ",",
                             "a,b",        "OS=0",
                             "NE=0",       "ONE=-1"}) {
    expectSameObject(nodeId);
  }
}

TEST_F(ElementNamesProperty, ModuleAndAgentFindTheSameObjectForRandomIds) {
  Random random;
  for (int round = 0; round < 20000; ++round) {
    SCOPED_TRACE("round " + std::to_string(round) + " of seed " + std::to_string(random.seed()));
    expectSameObject(random.text("NNEEOOSS==,,0159- x", 14));
    if (HasFailure()) {
      return;
    }
  }
}

}  // namespace
