// Every operation of the manager and of both iterators, called by topoctl in a separate process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"
#include "tests/integration/Programs.h"

namespace integration {
namespace {

using nlohmann::json;
using support::Ended;
using testing::HasSubstr;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";

class AllOperations : public testing::Test {
 protected:
  // The commands that print a view, with their arguments.
  static std::vector<std::vector<std::string>> views() {
    return {{"topo"}, {"protect"}, {"below", ""}, {"clocks"}, {"clock-links"}};
  }

  static Ended run(const RunningAgent& agent, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--ior-file", agent.iorFile()});
    return runTopoctl(arguments);
  }

  static Ended run(const RunningAgent& agent, const std::vector<std::string>& options,
                   const std::vector<std::string>& command) {
    std::vector<std::string> all = options;
    all.insert(all.end(), command.begin(), command.end());
    return run(agent, all);
  }
};

// The top subnetwork of the sample network.
std::string topSubnetwork(const RunningAgent& agent) {
  return records(agent, {"topo"})[0]["name"].back()["value"];
}

TEST_F(AllOperations, GiveTheSameTextForEveryBatchSizeInEachFormat) {
  const RunningAgent agent({"--network", kBackbone});
  const std::string subnetwork = topSubnetwork(agent);
  for (std::vector<std::string> command : views()) {
    if (command[0] == "below") {
      command[1] = subnetwork;
    }
    const std::size_t n = records(agent, command).size();
    ASSERT_GT(n, 1U) << command[0];
    for (const char* format : {"table", "json", "csv"}) {
      std::set<std::string> texts;
      for (const std::string& howMany :
           {std::string("0"), std::string("1"), std::to_string(n - 1), std::to_string(n),
            std::to_string(n + 1), std::string("4294967295")}) {
        const Ended ended = run(agent, {"--format", format, "--how-many", howMany}, command);
        EXPECT_EQ(0, ended.status) << command[0] << ": " << ended.err;
        EXPECT_EQ("", ended.err);
        texts.insert(ended.out);
      }
      EXPECT_EQ(1U, texts.size()) << command[0] << " as " << format;
    }
  }
}

TEST_F(AllOperations, GiveTheSameRepliesForEveryKindOfReference) {
  const NamingService naming;
  const RunningAgent agent({"--network", kBackbone, "--naming", naming.reference()});
  const std::string subnetwork = topSubnetwork(agent);
  for (std::vector<std::string> command : views()) {
    if (command[0] == "below") {
      command[1] = subnetwork;
    }
    std::set<std::string> texts;
    for (const std::vector<std::string>& way :
         {std::vector<std::string>{"--ior-file", agent.iorFile()},
          std::vector<std::string>{"--agent", agent.corbaloc()},
          std::vector<std::string>{"--agent",
                                   "corbaname::" + naming.endpoint() + "#TopoManagement"}}) {
      std::vector<std::string> arguments = way;
      arguments.insert(arguments.end(), {"--format", "json"});
      arguments.insert(arguments.end(), command.begin(), command.end());
      const Ended ended = runTopoctl(arguments);
      EXPECT_EQ(0, ended.status) << ended.err;
      texts.insert(ended.out);
    }
    EXPECT_EQ(1U, texts.size()) << command[0];
  }
}

TEST_F(AllOperations, ShowTheProtectViewWithoutTheDescriptivePairs) {
  const RunningAgent agent({"--network", kBackbone, "--test-switch"});
  const json topo = records(agent, {"topo"});
  const json protect = records(agent, {"protect"});
  ASSERT_EQ(topo.size(), protect.size());
  for (std::size_t i = 0; i < topo.size(); ++i) {
    EXPECT_EQ(topo[i]["name"], protect[i]["name"]);
    EXPECT_EQ(protect[i]["additionalInfo"].size(), 1U);
    EXPECT_EQ(topo[i]["additionalInfo"].size(), topo[i]["nodeType"] == 1 ? 7U : 1U);
  }
}

TEST_F(AllOperations, RefuseTheViewBelowAnObjectThatIsNotASubnetwork) {
  const RunningAgent agent({"--network", kBackbone});
  const std::string ems = records(agent, {"topo"})[0]["name"][0]["value"];
  const std::vector<std::vector<std::string>> names = {
      {"--name", "EMS=" + ems},
      {"--name", "EMS=" + ems, "--name", "ManagedElement=1"},
      {"--name", "EMS=" + ems, "--name", "TopoSubnetwork=none such"},
      {"--name", "EMS=other", "--name", "TopoSubnetwork=Europe"},
      {"--name", "ÄÖ=ü", "--name", "b=c", "--name", "d=e"},
      {"--name", "EMS=", "--name", "TopoSubnetwork="},
      {"--name", "EMS=" + ems, "--name", "TopoSubnetwork=" + std::string(100000, 'x')},
  };
  for (const std::vector<std::string>& name : names) {
    const Ended ended = run(agent, {"below"}, name);
    EXPECT_EQ(3, ended.status) << name.back().substr(0, 60);
    EXPECT_THAT(ended.err,
                testing::StartsWith("topoctl: the agent refused: EXCPT_INVALID_INPUT: please input "
                                    "topoSubnetwork! (there is no topology subnetwork {"));
    EXPECT_EQ("", ended.out);
  }
  EXPECT_FALSE(records(agent, {"topo"}).empty());
}

TEST_F(AllOperations, RefuseTheViewBelowNamesThatACommandLineCannotContain) {
  const RunningAgent agent({"--network", kBackbone, "--max-request", "100000000"});
  const auto client = orb::startClient({});
  const CORBA::Object_var object = client->get()->string_to_object(agent.reference().c_str());
  const TopoManagementManager::TopoMgr_I_var manager =
      TopoManagementManager::TopoMgr_I::_narrow(object);
  globaldefs::NVSList_T empty;
  globaldefs::NVSList_T million;
  million.length(1000000);
  globaldefs::NVSList_T huge;
  huge.length(2);
  huge[1].name = CORBA::string_dup("TopoSubnetwork");
  huge[1].value = CORBA::string_dup(std::string(10000000, 'x').c_str());
  for (const globaldefs::NVSList_T* name : {&empty, &million, &huge}) {
    TopoManagementManager::NodeList_T_var nodes;
    TopoManagementManager::NodeIterator_I_var iterator;
    try {
      manager->getViewInfoByTopoSubnetwork(*name, 1, nodes.out(), iterator.out());
      ADD_FAILURE() << "a view below a name of " << name->length() << " pairs";
    } catch (const globaldefs::ProcessingFailureException& refused) {
      EXPECT_EQ(globaldefs::EXCPT_INVALID_INPUT, refused.exceptionType);
      EXPECT_STREQ("please input topoSubnetwork!", refused.errorReason);
    }
  }
  EXPECT_FALSE(records(agent, {"topo"}).empty());
}

TEST_F(AllOperations, DrawTheTopologyAsATree) {
  const RunningAgent agent({"--network", kBackbone});
  const Ended ended = run(agent, {"tree"});
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_THAT(ended.out, HasSubstr("Frankfurt"));
}

}  // namespace
}  // namespace integration
