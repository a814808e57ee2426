// The console against a real store and model, and an agent that records what is asked of it.

#include "agent/console/ConsoleServant.h"
#include "agent/store/sqlite/SqliteStore.h"

#include <gmock/gmock.h>

#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "orb/orb.h"

namespace {

using globaldefs::ProcessingFailureException;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class RecordingAgent final : public agent::AgentControl {
 public:
  TopoAgent::Status_T status() override {
    failIfAsked();
    TopoAgent::Status_T status;
    status.moduleLoads = 7;
    status.testSwitch = true;
    status.receivers.length(1);
    status.receivers[0].receiver = CORBA::string_dup("host:1");
    return status;
  }
  void setTestSwitch(bool on) override {
    failIfAsked();
    calls.push_back(on ? "on" : "off");
  }
  void reloadModule() override {
    failIfAsked();
    calls.emplace_back("reload");
  }

  std::vector<std::string> calls;
  std::string failure;          // what every call throws, unless it is empty
  std::function<void()> raise;  // throws instead, unless it is empty

 private:
  void failIfAsked() const {
    if (raise) {
      raise();
    }
    if (!failure.empty()) {
      throw std::runtime_error(failure);
    }
  }
};

// "TYPE REASON", or "none".
std::string refusalOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const ProcessingFailureException& failure) {
    return std::to_string(failure.exceptionType) + ' ' + failure.errorReason.in();
  }
  return "none";
}

std::string textOf(globaldefs::ExceptionType_T type, const std::string& reason) {
  return std::to_string(type) + ' ' + reason;
}

TopoAgent::NewNode_T newNode(const char* id, const char* parent) {
  TopoAgent::NewNode_T node;
  node.id = id;
  node.parent = parent;
  node.parentKind = TopoAgent::NK_SUBNETWORK;
  node.name = "a name";
  node.kind = TopoAgent::NK_SUBNETWORK;
  node.nodeParam1 = 11;
  node.nodeParam2 = -12;
  return node;
}

TopoAgent::Content_T contentOf(const std::string& text) {
  TopoAgent::Content_T content;
  content.length(static_cast<CORBA::ULong>(text.size()));
  if (!text.empty()) {
    std::memcpy(content.get_buffer(), text.data(), text.size());
  }
  return content;
}

class AgentConsole : public testing::Test {
 protected:
  AgentConsole() { store_.load({}); }

  std::vector<NS_DOMAIN::TopoNode_T> nodes() const {
    std::vector<NS_DOMAIN::TopoNode_T> result;
    model_.appendTopoNodes(result);
    return result;
  }

  agent::SqliteStore store_{agent::SqliteStore::kInMemory};
  agent::NetworkModel model_;
  agent::NetworkWriter writer_{store_, model_};
  agent::NodeService nodes_{writer_};
  RecordingAgent agent_;
  agent::Backups backups_{writer_};
  agent::ConsoleServant console_{nodes_, backups_, agent_};
};

TEST_F(AgentConsole, CreatesASubnetworkWithAllThatIsSaidOfIt) {
  console_.createNode(newNode("top", ""));
  TopoAgent::NewNode_T node = newNode("core", "top");
  node.attributes.length(2);
  node.attributes[0].name = "location";
  node.attributes[0].value = "Hall||3";
  node.attributes[1].name = "owner";
  node.attributes[1].value = "";
  console_.createNode(node);
  ASSERT_EQ(2U, nodes().size());
  const NS_DOMAIN::TopoNode_T created = nodes()[1];
  EXPECT_EQ("core", created.nodeId);
  EXPECT_EQ("top", created.parentId);
  EXPECT_EQ("a name", created.nativeName);
  EXPECT_EQ(2U, created.nodeType);
  EXPECT_EQ(2U, created.parentType);
  EXPECT_EQ(11, created.attribute3);
  EXPECT_EQ(-12, created.attribute4);
  EXPECT_THAT(created.extendedAttributes,
              ElementsAre(std::make_pair("location", "Hall||3"), std::make_pair("owner", "")));
}

TEST_F(AgentConsole, CreatesAnElementBelowAnElement) {
  TopoAgent::NewNode_T shelf = newNode("NE=1", "");
  shelf.kind = TopoAgent::NK_ELEMENT;
  console_.createNode(shelf);
  TopoAgent::NewNode_T card = newNode("NE=2", "NE=1");
  card.kind = TopoAgent::NK_ELEMENT;
  card.parentKind = TopoAgent::NK_ELEMENT;
  console_.createNode(card);
  ASSERT_EQ(2U, nodes().size());
  EXPECT_EQ(1U, nodes()[1].nodeType);
  EXPECT_EQ(1U, nodes()[1].parentType);
}

TEST_F(AgentConsole, CreatesAnElementBelowASubnetwork) {
  console_.createNode(newNode("core", ""));
  TopoAgent::NewNode_T shelf = newNode("NE=1", "core");
  shelf.kind = TopoAgent::NK_ELEMENT;
  console_.createNode(shelf);
  ASSERT_EQ(2U, nodes().size());
  EXPECT_EQ(1U, nodes()[1].nodeType);
  EXPECT_EQ(2U, nodes()[1].parentType);
}

TEST_F(AgentConsole, RefusesANodeThatIsThereAlready) {
  console_.createNode(newNode("core", ""));
  EXPECT_THAT(refusalOf([&] { console_.createNode(newNode("core", "")); }),
              testing::StartsWith(textOf(globaldefs::EXCPT_OBJECT_IN_USE, "")));
  EXPECT_EQ(1U, nodes().size());
}

TEST_F(AgentConsole, RefusesAParentThatIsNotThere) {
  EXPECT_THAT(refusalOf([&] { console_.createNode(newNode("core", "top")); }),
              testing::AllOf(testing::StartsWith(textOf(globaldefs::EXCPT_ENTITY_NOT_FOUND, "")),
                             HasSubstr("top")));
}

TEST_F(AgentConsole, RefusesAnEmptyId) {
  EXPECT_THAT(refusalOf([&] { console_.createNode(newNode("", "")); }),
              testing::StartsWith(textOf(globaldefs::EXCPT_INVALID_INPUT, "")));
}

TEST_F(AgentConsole, DeletesANodeWithWhatIsBelowItAndSaysHowManyThatWere) {
  console_.createNode(newNode("top", ""));
  console_.createNode(newNode("core", "top"));
  console_.createNode(newNode("other", ""));
  EXPECT_EQ(2U, console_.deleteNode("top"));
  ASSERT_EQ(1U, nodes().size());
  EXPECT_EQ("other", nodes()[0].nodeId);
}

TEST_F(AgentConsole, RefusesToDeleteAndToRenameWhatIsNotThere) {
  EXPECT_THAT(refusalOf([&] { console_.deleteNode("gone"); }),
              testing::AllOf(testing::StartsWith(textOf(globaldefs::EXCPT_ENTITY_NOT_FOUND, "")),
                             HasSubstr("gone")));
  EXPECT_THAT(refusalOf([&] { console_.renameNode("gone", "x"); }),
              testing::StartsWith(textOf(globaldefs::EXCPT_ENTITY_NOT_FOUND, "")));
}

TEST_F(AgentConsole, RenamesANode) {
  console_.createNode(newNode("core", ""));
  console_.renameNode("core", "new name");
  EXPECT_EQ("new name", nodes()[0].nativeName);
}

TEST_F(AgentConsole, ImportsANetworkAndSaysWhatItHad) {
  console_.createNode(newNode("top", ""));
  const TopoAgent::ImportSummary_T summary =
      console_.importNetwork("net.json", contentOf(R"({"format": "topo-network/1",
          "topoNodes": [{"id": "a", "parent": "top"}, {"id": "b", "parent": "a"}],
          "networkElements": [{"number": 1}, {"number": 2}, {"number": 3}],
          "clockPositions": [{"reference": "NE=1"}, {"reference": "NE=2"}],
          "clockLinks": [{"id": "l", "name": "SDH/l", "a": "NE=1", "z": "NE=2"}],
          "objectLabels": [{"type": 201, "id": "l", "label": "main"}]})"));
  EXPECT_EQ(2U, summary.topoNodes);
  EXPECT_EQ(3U, summary.networkElements);
  EXPECT_EQ(2U, summary.clockPositions);
  EXPECT_EQ(1U, summary.clockLinks);
  EXPECT_EQ(1U, summary.objectLabels);
  EXPECT_EQ(3U, nodes().size());
}

TEST_F(AgentConsole, RefusesANetworkFileByItsNameAndPlace) {
  EXPECT_THAT(refusalOf([&] { console_.importNetwork("net.json", contentOf("{")); }),
              testing::AllOf(testing::StartsWith(textOf(globaldefs::EXCPT_INVALID_INPUT, "")),
                             HasSubstr("net.json"), Not(HasSubstr("\n"))));
  EXPECT_THAT(refusalOf([&] { console_.importNetwork("", contentOf("")); }),
              testing::StartsWith(textOf(globaldefs::EXCPT_INVALID_INPUT, "")));
}

TEST_F(AgentConsole, SetsTheTestSwitch) {
  console_.setTestSwitch(true);
  console_.setTestSwitch(false);
  EXPECT_THAT(agent_.calls, ElementsAre("on", "off"));
}

TEST_F(AgentConsole, TellsTheStatus) {
  const TopoAgent::Status_T_var status = console_.getStatus();
  EXPECT_EQ(7U, status->moduleLoads);
  EXPECT_TRUE(status->testSwitch);
  ASSERT_EQ(1U, status->receivers.length());
  EXPECT_STREQ("host:1", status->receivers[0].receiver);
}

TEST_F(AgentConsole, ReloadsTheModule) {
  console_.reloadModule();
  EXPECT_THAT(agent_.calls, ElementsAre("reload"));
}

TEST_F(AgentConsole, TellsWhyAReloadFailed) {
  agent_.failure = "module x.so: no such file";
  testing::internal::CaptureStderr();
  EXPECT_EQ(textOf(globaldefs::EXCPT_INTERNAL_ERROR, "module x.so: no such file"),
            refusalOf([&] { console_.reloadModule(); }));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              HasSubstr("reloadModule: module x.so: no such file"));
}

// The reason may hold what is nobody's business.
TEST_F(AgentConsole, KeepsOtherFailuresOfTheAgentToItself) {
  agent_.failure = "secret";
  testing::internal::CaptureStderr();
  for (const std::string& refusal :
       {refusalOf([&] { TopoAgent::Status_T_var status = console_.getStatus(); }),
        refusalOf([&] { console_.setTestSwitch(true); })}) {
    EXPECT_THAT(refusal,
                testing::AllOf(testing::StartsWith(textOf(globaldefs::EXCPT_INTERNAL_ERROR, "")),
                               Not(HasSubstr("secret"))));
  }
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::AllOf(HasSubstr("getStatus: secret"), HasSubstr("setTestSwitch: secret")));
  EXPECT_THAT(agent_.calls, IsEmpty());
}

struct Thrown {
  std::function<void()> raise;
  std::string inTheLog;
};

class AgentConsoleFailure : public AgentConsole, public testing::WithParamInterface<Thrown> {};

TEST_P(AgentConsoleFailure, IsAnInternalErrorWhateverIsThrown) {
  agent_.raise = GetParam().raise;
  testing::internal::CaptureStderr();
  EXPECT_THAT(refusalOf([&] { console_.setTestSwitch(true); }),
              testing::AllOf(testing::StartsWith(textOf(globaldefs::EXCPT_INTERNAL_ERROR, "")),
                             Not(HasSubstr(GetParam().inTheLog))));
  EXPECT_EQ(textOf(globaldefs::EXCPT_INTERNAL_ERROR, GetParam().inTheLog),
            refusalOf([&] { console_.reloadModule(); }));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::AllOf(HasSubstr("setTestSwitch: " + GetParam().inTheLog + '\n'),
                             HasSubstr("reloadModule: " + GetParam().inTheLog + '\n')));
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryKind, AgentConsoleFailure,
    testing::Values(Thrown{[] { throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO); },
                           orb::describe(CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO))},
                    Thrown{[] { throw PortableServer::POA::WrongPolicy(); },
                           PortableServer::POA::WrongPolicy()._name()},
                    Thrown{[] { throw std::bad_alloc(); }, std::bad_alloc().what()},
                    Thrown{[] { throw 1; }, "an exception of an unknown type"}));

}  // namespace
