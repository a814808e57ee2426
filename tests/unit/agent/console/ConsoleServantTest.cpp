// The console with a real store, a real model and a fake agent.

#include "agent/console/ConsoleServant.h"
#include "agent/store/sqlite/SqliteStore.h"

#include <gmock/gmock.h>

#include <cstring>
#include <functional>
#include <new>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "orb/orb.h"
#include "tests/support/Pairs.h"
#include "tests/unit/agent/support/CapturedLog.h"

namespace {

using globaldefs::ProcessingFailureException;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

// Records the calls, and fails on demand.
class RecordingAgent final : public agent::AgentControl {
 public:
  TopoAgent::Status_T status() override {
    failOnDemand();
    TopoAgent::Status_T status;
    status.moduleLoads = 7;
    status.testSwitch = true;
    status.receivers.length(1);
    status.receivers[0].receiver = CORBA::string_dup("host:1");
    return status;
  }
  void setTestSwitch(bool on) override {
    failOnDemand();
    calls.push_back(on ? "on" : "off");
  }
  void reloadModule() override {
    failOnDemand();
    calls.emplace_back("reload");
  }

  std::vector<std::string> calls;
  std::string failure;          // the reason of the exception of every call, unless empty
  std::function<void()> raise;  // throws another exception, unless empty

 private:
  void failOnDemand() const {
    if (raise) {
      raise();
    }
    if (!failure.empty()) {
      throw std::runtime_error(failure);
    }
  }
};

// A ProcessingFailureException.
struct Refusal {
  globaldefs::ExceptionType_T type;
  std::string reason;
};
bool operator==(const Refusal& left, const Refusal& right) {
  return left.type == right.type && left.reason == right.reason;
}
void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << "type " << refusal.type << ", " << refusal.reason;
}

// The refusal of a call, if there is one.
std::optional<Refusal> refusalOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const ProcessingFailureException& failure) {
    return Refusal{failure.exceptionType, failure.errorReason.in()};
  }
  return std::nullopt;
}

// Matches a refusal of this type whose reason matches.
testing::Matcher<std::optional<Refusal>> refused(
    globaldefs::ExceptionType_T type, const testing::Matcher<std::string>& reason = testing::_) {
  return Optional(AllOf(Field(&Refusal::type, type), Field(&Refusal::reason, reason)));
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

// Options of an import: replace, dryRun, firstElement.
const TopoAgent::ImportOptions_T kAdd = {false, false, 0};

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
  agent::InventoryService inventory_{writer_};
  agent::AttributeService attributes_{"E", writer_};
  RecordingAgent agent_;
  agent::Backups backups_{writer_};
  agent::ConsoleServant console_{nodes_, inventory_, attributes_, backups_, agent_};
};

TEST_F(AgentConsole, CreatesASubnetworkWithAllItsAttributes) {
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

TEST_F(AgentConsole, TakesTheKindOfAParentFromTheParent) {
  TopoAgent::NewNode_T shelf = newNode("NE=1", "");
  shelf.kind = TopoAgent::NK_ELEMENT;
  console_.createNode(shelf);
  TopoAgent::NewNode_T node = newNode("wk", "NE=1");
  EXPECT_THAT(refusalOf([&] { console_.createNode(node); }),
              refused(globaldefs::EXCPT_INVALID_INPUT,
                      "the parent of node \"wk\", node \"NE=1\", is an element, not a subnetwork"));
  node.parentKind = TopoAgent::NK_OF_PARENT;
  console_.createNode(node);
  node.id = "root";
  node.parent = "";
  console_.createNode(node);
  ASSERT_EQ(3U, nodes().size());
  EXPECT_EQ(1U, nodes()[1].parentType);
  EXPECT_EQ(2U, nodes()[2].parentType);
}

TEST_F(AgentConsole, RejectsTheKindOfTheParentAsTheKindOfANode) {
  TopoAgent::NewNode_T node = newNode("wk", "");
  node.kind = TopoAgent::NK_OF_PARENT;
  EXPECT_THAT(refusalOf([&] { console_.createNode(node); }),
              refused(globaldefs::EXCPT_INVALID_INPUT));
}

TEST_F(AgentConsole, RefusesANodeThatExists) {
  console_.createNode(newNode("core", ""));
  EXPECT_THAT(refusalOf([&] { console_.createNode(newNode("core", "")); }),
              refused(globaldefs::EXCPT_OBJECT_IN_USE));
  EXPECT_EQ(1U, nodes().size());
}

TEST_F(AgentConsole, RefusesAMissingParent) {
  EXPECT_THAT(refusalOf([&] { console_.createNode(newNode("core", "top")); }),
              refused(globaldefs::EXCPT_ENTITY_NOT_FOUND, HasSubstr("top")));
}

TEST_F(AgentConsole, RefusesAnEmptyId) {
  EXPECT_THAT(refusalOf([&] { console_.createNode(newNode("", "")); }),
              refused(globaldefs::EXCPT_INVALID_INPUT));
}

TEST_F(AgentConsole, DeletesASubtreeAndReturnsTheNumberOfNodes) {
  console_.createNode(newNode("top", ""));
  console_.createNode(newNode("core", "top"));
  console_.createNode(newNode("other", ""));
  EXPECT_EQ(2U, console_.deleteNode("top"));
  ASSERT_EQ(1U, nodes().size());
  EXPECT_EQ("other", nodes()[0].nodeId);
}

TEST_F(AgentConsole, RefusesToDeleteAndToRenameAMissingNode) {
  EXPECT_THAT(refusalOf([&] { console_.deleteNode("gone"); }),
              refused(globaldefs::EXCPT_ENTITY_NOT_FOUND, HasSubstr("gone")));
  EXPECT_THAT(refusalOf([&] { console_.renameNode("gone", "x"); }),
              refused(globaldefs::EXCPT_ENTITY_NOT_FOUND));
}

TEST_F(AgentConsole, MovesAndChangesANode) {
  console_.createNode(newNode("top", ""));
  console_.createNode(newNode("core", ""));
  console_.moveNode("core", "top", TopoAgent::NK_OF_PARENT);
  TopoAgent::OptionalNumbers_T params;
  params.length(1);
  params[0].first = 3;
  params[0].second = -4;
  console_.changeNode("core", params, {});
  TopoAgent::OptionalPairs_T attributes;
  attributes.length(1);
  attributes[0].length(1);
  attributes[0][0].name = "location";
  attributes[0][0].value = "Hall";
  console_.changeNode("core", {}, attributes);
  const NS_DOMAIN::TopoNode_T node = nodes()[1];
  EXPECT_EQ("top", node.parentId);
  EXPECT_EQ(3, node.attribute3);
  EXPECT_EQ(-4, node.attribute4);
  EXPECT_THAT(node.extendedAttributes, ElementsAre(std::make_pair("location", "Hall")));
  EXPECT_THAT(refusalOf([&] { console_.moveNode("top", "core", TopoAgent::NK_OF_PARENT); }),
              refused(globaldefs::EXCPT_INVALID_INPUT));
  EXPECT_THAT(refusalOf([&] { console_.moveNode("core", "top", TopoAgent::NK_ELEMENT); }),
              refused(globaldefs::EXCPT_INVALID_INPUT));
}

TEST_F(AgentConsole, HidesAnElement) {
  console_.createElement({5, "Five", true});
  console_.setElementShown(5, false);
  EXPECT_FALSE(model_.networkElement(5)->shown);
}

TEST_F(AgentConsole, EmptiesATextWithAnEmptyText) {
  TopoAgent::ClockPosition_T position;
  position.reference = "NE=5";
  position.label = "Five";
  position.values = {1, 2};
  console_.createClockPosition(position);
  TopoAgent::OptionalText_T empty;
  empty.length(1);
  empty[0] = "";
  console_.changeClockPosition("NE=5", empty, {});
  EXPECT_EQ("", model_.clockPosition("NE=5")->label);
}

TEST_F(AgentConsole, ChangesElements) {
  TopoAgent::Element_T element;
  element.number = 5;
  element.name = "Five";
  element.isShown = false;
  console_.createElement(element);
  console_.renameElement(5, "Fünf");
  console_.setElementShown(5, true);
  EXPECT_EQ("Fünf", model_.networkElement(5)->name);
  EXPECT_TRUE(model_.networkElement(5)->shown);
  console_.deleteElement(5);
  EXPECT_THAT(refusalOf([&] { console_.deleteElement(5); }),
              refused(globaldefs::EXCPT_ENTITY_NOT_FOUND, "no network element 5"));
}

TEST_F(AgentConsole, ChangesClockPositionsAndLinks) {
  TopoAgent::ClockPosition_T position;
  position.reference = "NE=5";
  position.label = "Five";
  position.values.first = 1;
  position.values.second = 2;
  console_.createClockPosition(position);
  TopoAgent::OptionalText_T text;
  text.length(1);
  text[0] = "new";
  console_.changeClockPosition("NE=5", text, {});
  EXPECT_EQ("new", model_.clockPositions()[0].label);
  EXPECT_EQ(2, model_.clockPositions()[0].value2);
  TopoAgent::ClockLink_T link;
  link.id = "k";
  link.name = "SDH/k";
  link.aEnd = "NE=5";
  link.zEnd = "NE=6";
  console_.createClockLink(link);
  console_.changeClockLink("k", {}, {}, text);
  EXPECT_EQ("SDH/k", model_.clockLinks()[0].nativeName);
  EXPECT_EQ("NE=5", model_.clockLinks()[0].aEndReference);
  EXPECT_EQ("new", model_.clockLinks()[0].zEndReference);
  console_.deleteClockPosition("NE=5");
  console_.deleteClockLink("k");
  EXPECT_TRUE(model_.clockPositions().empty());
  EXPECT_TRUE(model_.clockLinks().empty());
}

TEST_F(AgentConsole, SetsAndDeletesLabels) {
  console_.setLabel(201, "k", "Trunk");
  EXPECT_EQ("Trunk", model_.labelOf(201, "k"));
  console_.deleteLabel(201, "k");
  EXPECT_THAT(refusalOf([&] { console_.deleteLabel(201, "k"); }),
              refused(globaldefs::EXCPT_ENTITY_NOT_FOUND));
}

TEST_F(AgentConsole, RenamesANode) {
  console_.createNode(newNode("core", ""));
  console_.renameNode("core", "new name");
  EXPECT_EQ("new name", nodes()[0].nativeName);
}

TEST_F(AgentConsole, ImportsANetworkAndReturnsItsSummary) {
  console_.createNode(newNode("top", ""));
  const TopoAgent::ImportSummary_T summary =
      console_.importNetwork("net.json", contentOf(R"({"format": "topo-network/1",
          "topoNodes": [{"id": "a", "parent": "top"}, {"id": "b", "parent": "a"}],
          "networkElements": [{"number": 1}, {"number": 2}, {"number": 3}],
          "clockPositions": [{"reference": "NE=1"}, {"reference": "NE=2"}],
          "clockLinks": [{"id": "l", "name": "SDH/l", "a": "NE=1", "z": "NE=2"}],
          "objectLabels": [{"type": 201, "id": "l", "label": "main"}]})"),
                             kAdd);
  EXPECT_EQ(2U, summary.topoNodes);
  EXPECT_EQ(3U, summary.networkElements);
  EXPECT_EQ(2U, summary.clockPositions);
  EXPECT_EQ(1U, summary.clockLinks);
  EXPECT_EQ(1U, summary.objectLabels);
  EXPECT_EQ(3U, nodes().size());
}

TEST_F(AgentConsole, RefusesAMalformedFileWithItsName) {
  EXPECT_THAT(
      refusalOf([&] { console_.importNetwork("net.json", contentOf("{"), kAdd); }),
      refused(globaldefs::EXCPT_INVALID_INPUT, AllOf(HasSubstr("net.json"), Not(HasSubstr("\n")))));
  EXPECT_THAT(refusalOf([&] { console_.importNetwork("", contentOf(""), kAdd); }),
              refused(globaldefs::EXCPT_INVALID_INPUT));
}

TEST_F(AgentConsole, ImportsWithDryRunAndWithReplace) {
  console_.createNode(newNode("top", ""));
  const auto content = contentOf(R"({"format": "topo-network/1", "topoNodes": [{"id": "a"}]})");
  EXPECT_EQ(1U, console_.importNetwork("net.json", content, {false, true, 0}).topoNodes);
  EXPECT_EQ(1U, nodes().size());
  EXPECT_EQ(1U, console_.importNetwork("net.json", content, {true, false, 0}).topoNodes);
  ASSERT_EQ(1U, nodes().size());
  EXPECT_EQ("a", nodes()[0].nodeId);
}

TEST_F(AgentConsole, NumbersTheElementsOfAGraph) {
  const auto graph = contentOf("<graphml><graph><node id='x'/></graph></graphml>");
  console_.importNetwork("one.graphml", graph, kAdd);
  console_.importNetwork("two.graphml", graph, {false, false, 100});
  EXPECT_TRUE(model_.hasNetworkElement(1));
  EXPECT_TRUE(model_.hasNetworkElement(100));
  EXPECT_THAT(refusalOf([&] {
                console_.importNetwork("three.graphml", graph, {false, false, -1});
              }),
              refused(globaldefs::EXCPT_INVALID_INPUT));
  EXPECT_THAT(
      refusalOf([&] {
        console_.importNetwork("net.json", contentOf("{}"), {false, false, 1});
      }),
      refused(globaldefs::EXCPT_INVALID_INPUT,
              "net.json: file: is not GraphML, the only format whose elements can be numbered"));
}

TEST_F(AgentConsole, NamesFileAndPlaceOfAnImportThatClashes) {
  const auto graph = contentOf("<graphml><graph><node id='x'/></graph></graphml>");
  console_.importNetwork("one.graphml", graph, kAdd);
  EXPECT_THAT(refusalOf([&] { console_.importNetwork("two.graphml", graph, kAdd); }),
              refused(globaldefs::EXCPT_OBJECT_IN_USE,
                      "two.graphml: node[0]: node \"NE=1\" exists already"));
  EXPECT_THAT(refusalOf([&] { console_.importNetwork("a\nb.graphml", graph, kAdd); }),
              refused(globaldefs::EXCPT_OBJECT_IN_USE,
                      "a\\x0ab.graphml: node[0]: node \"NE=1\" exists already"));
  EXPECT_THAT(refusalOf([&] {
                console_.importNetwork("net.json", contentOf(R"({"format": "topo-network/1",
            "topoNodes": [{"id": "b"}, {"id": "NE=01", "type": 1}]})"),
                                       kAdd);
              }),
              refused(globaldefs::EXCPT_OBJECT_IN_USE,
                      "net.json: topoNodes[1].id: \"NE=01\" is shown as ManagedElement=1, as node "
                      "\"NE=1\" is"));
}

// --- Objects.

// Expects a record of a list with these fields.
void expectRecord(const char* list, const Pairs& fields, const TopoAgent::ObjectRecord_T& record) {
  EXPECT_STREQ(list, record.list);
  EXPECT_EQ(fields, pairsOf(record.fields));
}

// Expects the object of ReturnsEverythingThatIsStoredAboutAnElement.
void expectElementFive(const TopoAgent::ObjectDetails_T& details) {
  EXPECT_EQ((Pairs{{"EMS", "E"}, {"ManagedElement", "5"}}), pairsOf(details.name));
  EXPECT_STREQ("label", details.userLabel);
  EXPECT_STREQ("owner", details.owner);
  EXPECT_EQ((Pairs{{"Region", "north"}}), pairsOf(details.additionalInfo));
  ASSERT_EQ(3U, details.records.length());
  expectRecord("topoNodes",
               {{"id", "NE=5"},
                {"parent", ""},
                {"name", "a name"},
                {"type", "1"},
                {"parentType", "2"},
                {"params", "11,-12"}},
               details.records[0]);
  EXPECT_EQ((Pairs{{"location", "Hall"}}), pairsOf(details.records[0].attributes));
  expectRecord("networkElements", {{"number", "5"}, {"name", "Five"}, {"shown", "true"}},
               details.records[1]);
  expectRecord("clockPositions", {{"reference", "SSU=5"}, {"label", "Clock"}, {"values", "1,-2"}},
               details.records[2]);
}

TEST_F(AgentConsole, ReturnsEverythingThatIsStoredAboutAnElement) {
  TopoAgent::NewNode_T node = newNode("NE=5", "");
  node.kind = TopoAgent::NK_ELEMENT;
  node.attributes = nameOf({{"location", "Hall"}});
  console_.createNode(node);
  console_.createElement({5, "Five", false});
  console_.createClockPosition({"SSU=5", "Clock", {1, -2}});
  const globaldefs::NVSList_T name = nameOf({{"EMS", "E"}, {"ManagedElement", "5"}});
  globaldefs::NVSList_T info = nameOf({{"Region", "north"}});
  EXPECT_TRUE(attributes_.setUserLabel(name, "label", false).ok());
  EXPECT_TRUE(attributes_.setOwner(name, "owner").ok());
  EXPECT_TRUE(attributes_.setAdditionalInfo(name, info).ok());
  for (const globaldefs::NVSList_T& given : {name, nameOf({{"ManagedElement", "5"}})}) {
    const TopoAgent::ObjectDetails_T_var details = console_.getObject(given);
    expectElementFive(details);
  }
}

TEST_F(AgentConsole, ReturnsSubnetworksAndClockLinks) {
  console_.createNode(newNode("core", ""));
  console_.createClockLink({"k", "SDH/k", "NE=1", "NE=2"});
  const TopoAgent::ObjectDetails_T_var core =
      console_.getObject(nameOf({{"TopoSubnetwork", "core"}}));
  ASSERT_EQ(1U, core->records.length());
  EXPECT_STREQ("core", core->records[0].fields[0].value);
  const TopoAgent::ObjectDetails_T_var link =
      console_.getObject(nameOf({{"ClockTopoLinkId", "k"}}));
  ASSERT_EQ(1U, link->records.length());
  expectRecord("clockLinks", {{"id", "k"}, {"name", "SDH/k"}, {"a", "NE=1"}, {"z", "NE=2"}},
               link->records[0]);
}

TEST_F(AgentConsole, RejectsTheNamesOfUnknownObjects) {
  EXPECT_THAT(refusalOf([&] {
                const TopoAgent::ObjectDetails_T_var details =
                    console_.getObject(nameOf({{"ManagedElement", "5"}}));
              }),
              refused(globaldefs::EXCPT_ENTITY_NOT_FOUND, "no object {EMS=E, ManagedElement=5}"));
  EXPECT_THAT(
      refusalOf([&] { const TopoAgent::ObjectDetails_T_var details = console_.getObject({}); }),
      refused(globaldefs::EXCPT_INVALID_INPUT));
}

TEST_F(AgentConsole, SetsTheTestSwitch) {
  console_.setTestSwitch(true);
  console_.setTestSwitch(false);
  EXPECT_THAT(agent_.calls, ElementsAre("on", "off"));
}

TEST_F(AgentConsole, LogsChangesAtLevelTwo) {
  support::CapturedLog log(agent::kLogEvents);
  console_.createNode(newNode("a", ""));
  console_.renameNode("a", "A");
  console_.deleteNode("a");
  console_.importNetwork(
      "net.json", contentOf(R"({"format": "topo-network/1", "topoNodes": [{"id": "b"}]})"), kAdd);
  console_.setTestSwitch(true);
  console_.reloadModule();
  refusalOf([&] { console_.deleteNode("none"); });
  const std::string text = log.text();
  for (const char* line :
       {"createNode \"a\"", "renameNode \"a\" to \"A\"", "deleteNode \"a\", 1 nodes",
        "importNetwork \"net.json\", 1 nodes", "setTestSwitch on", "reloadModule"}) {
    EXPECT_THAT(text, HasSubstr(std::string("this process: ") + line + "\n"));
  }
  EXPECT_THAT(text, Not(HasSubstr("none")));
}

TEST_F(AgentConsole, LogsChangesOfRecordsAtLevelTwo) {
  support::CapturedLog log(agent::kLogEvents);
  console_.createNode(newNode("a", ""));
  console_.createNode(newNode("b", ""));
  console_.moveNode("b", "a", TopoAgent::NK_OF_PARENT);
  console_.createElement({5, "Five", false});
  console_.setElementShown(5, true);
  console_.setElementShown(5, false);
  const std::string text = log.text();
  for (const char* line : {"moveNode \"b\" below \"a\"", "createElement 5", "setElementShown 5 yes",
                           "setElementShown 5 no"}) {
    EXPECT_THAT(text, HasSubstr(std::string("this process: ") + line + "\n"));
  }
}

TEST_F(AgentConsole, LogsAReplacementAndNoDryRun) {
  support::CapturedLog log(agent::kLogEvents);
  const auto content = contentOf(R"({"format": "topo-network/1", "topoNodes": [{"id": "b"}]})");
  console_.importNetwork("dry.json", content, {false, true, 0});
  console_.importNetwork("net.json", content, {true, false, 0});
  const std::string text = log.text();
  EXPECT_THAT(text, HasSubstr("importNetwork \"net.json\", 1 nodes, in place of all\n"));
  EXPECT_THAT(text, Not(HasSubstr("dry.json")));
}

TEST_F(AgentConsole, LogsRefusalsAtLevelThree) {
  support::CapturedLog log(agent::kLogTraces);
  refusalOf([&] { console_.deleteNode("none"); });
  EXPECT_THAT(log.text(), HasSubstr("this process: deleteNode is refused: no node \"none\"\n"));
}

TEST_F(AgentConsole, ReturnsTheStatus) {
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

TEST_F(AgentConsole, ReturnsTheReasonOfAFailedReload) {
  agent_.failure = "module x.so: no such file";
  testing::internal::CaptureStderr();
  EXPECT_EQ((Refusal{globaldefs::EXCPT_INTERNAL_ERROR, "module x.so: no such file"}),
            refusalOf([&] { console_.reloadModule(); }));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              HasSubstr("reloadModule: module x.so: no such file"));
}

// The reason may contain internals of the agent.
TEST_F(AgentConsole, LogsTheReasonOfOtherFailuresOnly) {
  agent_.failure = "secret";
  testing::internal::CaptureStderr();
  for (const std::optional<Refusal>& refusal :
       {refusalOf([&] { TopoAgent::Status_T_var status = console_.getStatus(); }),
        refusalOf([&] { console_.setTestSwitch(true); })}) {
    EXPECT_THAT(refusal, refused(globaldefs::EXCPT_INTERNAL_ERROR, Not(HasSubstr("secret"))));
  }
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              AllOf(HasSubstr("getStatus: secret"), HasSubstr("setTestSwitch: secret")));
  EXPECT_THAT(agent_.calls, IsEmpty());
}

struct Thrown {
  std::function<void()> raise;
  std::string inTheLog;
};

class AgentConsoleFailure : public AgentConsole, public testing::WithParamInterface<Thrown> {};

TEST_P(AgentConsoleFailure, IsAnInternalErrorForEveryException) {
  agent_.raise = GetParam().raise;
  testing::internal::CaptureStderr();
  EXPECT_THAT(refusalOf([&] { console_.setTestSwitch(true); }),
              refused(globaldefs::EXCPT_INTERNAL_ERROR, Not(HasSubstr(GetParam().inTheLog))));
  EXPECT_EQ((Refusal{globaldefs::EXCPT_INTERNAL_ERROR, GetParam().inTheLog}),
            refusalOf([&] { console_.reloadModule(); }));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              AllOf(HasSubstr("setTestSwitch: " + GetParam().inTheLog + '\n'),
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
