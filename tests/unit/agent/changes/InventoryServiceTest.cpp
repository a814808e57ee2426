// Changes of network elements, clock positions, clock links and stored labels.

#include "agent/changes/InventoryService.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "agent/base/FailureCodes.h"
#include "tests/support/Pairs.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/changes/ChangingHost.h"

namespace {

using agent::ClockLinkFields;
using agent::ClockPositionFields;
using agent::InventoryService;
using agent::Network;
using agent::Outcome;
using NS_DOMAIN::ClockPositionInfo_T;
using NS_DOMAIN::ClockTopoLinkInfo_T;

Network smallNetwork() {
  return readText(withFormat(R"(
    "ems": "E",
    "topoNodes": [{"id": "NE=1", "name": "One", "type": 1}],
    "networkElements": [
      {"number": 1, "name": "One", "shown": true}, {"number": 2, "name": "Two"},
      {"number": -3, "name": "Minus three"}],
    "clockPositions": [
      {"reference": "NE=1", "label": "One"}, {"reference": "SSU=1", "label": "Clock one"},
      {"reference": "NE=4", "label": "Four", "values": [4, 44]}],
    "clockLinks": [{"id": "k", "name": "SDH/k", "a": "NE=1", "z": "NE=4"}, {"id": "l"}],
    "objectLabels": [{"type": 201, "id": "k", "label": "Trunk"}, {"type": 7, "id": "x"}])"));
}

class InventoryServiceTest : public testing::Test {
 protected:
  InventoryService service() { return InventoryService(host_->writer()); }

  void restart() {
    host_.reset();
    host_ = std::make_unique<ChangingHost>(path_, Network());
  }

  void expectDone(const Outcome& outcome) {
    EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    EXPECT_EQ(host_->stored(), host_->seen());
  }

  void expectRefused(std::uint32_t code, const std::string& reason, const Outcome& outcome) {
    EXPECT_EQ(code, outcome.code);
    EXPECT_EQ(reason, outcome.reason);
    EXPECT_EQ(smallNetwork(), host_->store().read());
    EXPECT_EQ(host_->stored(), host_->seen());
    EXPECT_EQ(NodeEvents(), host_->events());
  }

  // Expects expected_ in store and model, before and after a restart.
  void expectNetwork() {
    EXPECT_EQ(expected_, host_->seen());
    restart();
    EXPECT_EQ(expected_, host_->seen());
  }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("store.db");
  std::unique_ptr<ChangingHost> host_ = std::make_unique<ChangingHost>(path_, smallNetwork());

  // The lists that clients see; a test changes the records that its calls change.
  Network expected_ = host_->seen();
};

// --- Network elements.

TEST_F(InventoryServiceTest, CreatesAnElementAtTheEnd) {
  expectDone(service().createElement({9, "Nine", true}));
  EXPECT_EQ(NodeEvents(), host_->events());
  EXPECT_TRUE(host_->model().hasObject({1, "NE=9"}));
  expected_.networkElements.push_back({9, "Nine", true});
  expectNetwork();
}

TEST_F(InventoryServiceTest, ShowsANewElementThatHasANode) {
  expectDone(host_->nodes().create(nodeOf("NE=9", "", NS_DOMAIN::kTopoElement)));
  expectDone(service().createElement({9, "Nine"}));
  EXPECT_TRUE(host_->model().networkElement(9)->shownForNode);
}

TEST_F(InventoryServiceTest, RenamesEveryRecordOfAnElement) {
  expectDone(service().renameElement(1, "Uno"));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"NE=1"}}}), host_->events());
  expected_.topoNodes[0].nativeName = "Uno";
  expected_.networkElements[0].name = "Uno";
  expected_.clockPositions[0].label = "Uno";
  expected_.clockPositions[1].label = "Uno";
  expectNetwork();
}

TEST_F(InventoryServiceTest, RaisesNoEventForAnElementWithANegativeNumber) {
  expectDone(service().renameElement(-3, "Minus"));
  EXPECT_EQ(NodeEvents(), host_->events());
  expected_.networkElements[2].name = "Minus";
  expectNetwork();
}

TEST_F(InventoryServiceTest, ShowsAndHidesAnElement) {
  expectDone(service().setElementShown(2, true));
  expected_.networkElements[1].shown = true;
  expectNetwork();
  expectDone(service().setElementShown(2, false));
  expected_.networkElements[1].shown = false;
  expectNetwork();
}

TEST_F(InventoryServiceTest, HidesAnElementWithItsLastNode) {
  expectDone(service().setElementShown(1, false));
  EXPECT_TRUE(host_->model().networkElement(1)->shown);
  restart();
  std::size_t removed = 0;
  expectDone(host_->nodes().remove("NE=1", removed));
  EXPECT_FALSE(host_->model().networkElement(1)->shown);
}

TEST_F(InventoryServiceTest, ShowsAnElementThatWasDeclaredAsShownWithoutItsLastNode) {
  expectDone(service().setElementShown(1, false));
  expectDone(service().setElementShown(1, true));
  restart();
  std::size_t removed = 0;
  expectDone(host_->nodes().remove("NE=1", removed));
  EXPECT_TRUE(host_->model().networkElement(1)->shown);
}

TEST_F(InventoryServiceTest, RemovesAnElementAndKeepsItsOtherRecords) {
  expectDone(service().removeElement(1));
  EXPECT_EQ(NodeEvents(), host_->events());
  EXPECT_TRUE(host_->model().hasTopoNode("NE=1"));
  expected_.networkElements = {{2, "Two", false}, {-3, "Minus three", false}};
  expectNetwork();
  expectDone(service().removeElement(-3));
  expectDone(service().createElement({1, "One again"}));
  expected_.networkElements = {{2, "Two", false}, {1, "One again", true, true}};
  expectNetwork();
}

TEST_F(InventoryServiceTest, RejectsDuplicateAndUnknownElements) {
  expectRefused(agent::kAlreadyExists, "network element 2 exists already",
                service().createElement({2, "x"}));
  expectRefused(agent::kEntityNotFound, "no network element 4", service().renameElement(4, "x"));
  expectRefused(agent::kEntityNotFound, "no network element 4", service().setElementShown(4, true));
  expectRefused(agent::kEntityNotFound, "no network element 4", service().removeElement(4));
  expectRefused(agent::kInvalidName, "the name of network element 2 is not UTF-8 at byte 0",
                service().renameElement(2, "\xff"));
  expectRefused(agent::kInvalidName, "the name of network element 4 is not UTF-8 at byte 0",
                service().createElement({4, "\xff"}));
}

// --- Clock positions.

TEST_F(InventoryServiceTest, CreatesChangesAndRemovesAClockPosition) {
  ClockPositionInfo_T created = positionOf("NE=9", "Nine");
  created.value1 = 9;
  created.value2 = 99;
  created.text4 = "not stored";
  expectDone(service().createClockPosition(created));
  EXPECT_EQ("", host_->model().clockPosition("NE=9")->text4);
  expectDone(service().changeClockPosition("NE=9", {"New", std::nullopt}));
  expectDone(service().changeClockPosition("SSU=1", {std::nullopt, std::make_pair(-1, 2)}));
  expected_.clockPositions = {positionOf("NE=1", "One"), positionOf("SSU=1", "Clock one", -1, 2),
                              positionOf("NE=4", "Four", 4, 44), positionOf("NE=9", "New", 9, 99)};
  expectNetwork();
  for (const std::string reference : {"SSU=1", "NE=9", "NE=1"}) {
    expectDone(service().removeClockPosition(reference));
  }
  expected_.clockPositions = {positionOf("NE=4", "Four", 4, 44)};
  expectNetwork();
  EXPECT_FALSE(host_->model().hasObject({1, "NE=9"}));
  EXPECT_TRUE(host_->model().hasObject({1, "NE=1"}));
  EXPECT_EQ(NodeEvents(), host_->events());
}

// A record that is removed and created again is the last entry in the linked list of its object.
TEST_F(InventoryServiceTest, RenamesTheClockPositionsThatRemain) {
  expectDone(service().createClockPosition(positionOf("SEC=1", "Third")));
  for (const std::string reference : {"SSU=1", "NE=1"}) {
    expectDone(service().removeClockPosition(reference));
    expectDone(service().createClockPosition(positionOf(reference, "again")));
  }
  expectDone(service().renameElement(1, "Uno"));
  expected_.topoNodes[0].nativeName = "Uno";
  expected_.networkElements[0].name = "Uno";
  expected_.clockPositions = {positionOf("NE=4", "Four", 4, 44), positionOf("SEC=1", "Uno"),
                              positionOf("SSU=1", "Uno"), positionOf("NE=1", "Uno")};
  expectNetwork();
}

TEST_F(InventoryServiceTest, RejectsDuplicateAndUnknownClockPositions) {
  expectRefused(agent::kAlreadyExists, "clock position \"NE=4\" exists already",
                service().createClockPosition(positionOf("NE=4", "")));
  expectRefused(agent::kEntityNotFound, "no clock position \"x\"",
                service().changeClockPosition("x", {}));
  expectRefused(agent::kEntityNotFound, "no clock position \"x\"",
                service().removeClockPosition("x"));
  expectRefused(agent::kInvalidName, "the label of clock position \"NE=4\" is not UTF-8 at byte 0",
                service().changeClockPosition("NE=4", {"\xff", std::nullopt}));
}

// --- Clock links.

TEST_F(InventoryServiceTest, CreatesChangesAndRemovesAClockLink) {
  ClockTopoLinkInfo_T created = linkOf("m", "SDH/m");
  created.scalar8 = 8;
  expectDone(service().createClockLink(created));
  EXPECT_EQ(0, host_->model().clockLink("m")->scalar8);
  expectDone(service().changeClockLink("m", {"PDH/m", std::nullopt, "NE=4"}));
  expectDone(service().changeClockLink("l", {std::nullopt, "NE=1", std::nullopt}));
  expected_.clockLinks = {linkOf("k", "SDH/k", "NE=1", "NE=4"), linkOf("l", "", "NE=1"),
                          linkOf("m", "PDH/m", "", "NE=4")};
  expectNetwork();
  expectDone(service().removeClockLink("l"));
  expected_.clockLinks = {linkOf("k", "SDH/k", "NE=1", "NE=4"), linkOf("m", "PDH/m", "", "NE=4")};
  expectNetwork();
  EXPECT_FALSE(host_->model().hasObject({201, "l"}));
  EXPECT_EQ(NodeEvents(), host_->events());
}

TEST_F(InventoryServiceTest, RemovesTheAttributesOfAnObjectWithItsLastRecord) {
  const auto four = nameOf({{"EMS", "E"}, {"ManagedElement", "4"}});
  const auto two = nameOf({{"EMS", "E"}, {"ManagedElement", "2"}});
  for (const auto& name : {four, two}) {
    EXPECT_EQ(agent::kSuccess, host_->attributes().setUserLabel(name, "label", false).code);
    EXPECT_EQ(agent::kSuccess, host_->attributes().setOwner(name, "owner").code);
  }
  expectDone(service().removeClockPosition("NE=4"));
  expectDone(service().removeElement(2));
  expectDone(service().removeClockLink("k"));
  EXPECT_EQ("", host_->model().labelOf(1, "NE=4"));
  EXPECT_EQ("", host_->model().labelOf(1, "NE=2"));
  EXPECT_EQ("", host_->model().labelOf(201, "k"));
  EXPECT_EQ(1U, host_->store().read().objectLabels.size());
}

TEST_F(InventoryServiceTest, KeepsTheAttributesOfAnObjectThatHasAnotherRecord) {
  const auto one = nameOf({{"EMS", "E"}, {"ManagedElement", "1"}});
  EXPECT_EQ(agent::kSuccess, host_->attributes().setUserLabel(one, "label", false).code);
  expectDone(service().removeElement(1));
  expectDone(service().removeClockPosition("NE=1"));
  expectDone(service().removeClockPosition("SSU=1"));
  EXPECT_EQ("label", host_->model().labelOf(1, "NE=1"));
}

TEST_F(InventoryServiceTest, RejectsDuplicateAndUnknownClockLinks) {
  expectRefused(agent::kAlreadyExists, "clock link \"k\" exists already",
                service().createClockLink(linkOf("k", "")));
  expectRefused(agent::kEntityNotFound, "no clock link \"x\"", service().changeClockLink("x", {}));
  expectRefused(agent::kEntityNotFound, "no clock link \"x\"", service().removeClockLink("x"));
  expectRefused(agent::kInvalidName, "the Z end of clock link \"k\" is not UTF-8 at byte 0",
                service().changeClockLink("k", {std::nullopt, std::nullopt, "\xff"}));
}

// --- Labels.

TEST_F(InventoryServiceTest, SetsAndRemovesLabelsOfAnyObject) {
  expectDone(service().setLabel({201, "k"}, "New"));
  expectDone(service().setLabel({8, "nothing"}, "Ghost"));
  EXPECT_EQ("New", host_->model().labelOf(201, "k"));
  expectDone(service().removeLabel({201, "k"}));
  expectDone(service().removeLabel({7, "x"}));  // an empty label of a network file
  restart();
  EXPECT_EQ("Ghost", host_->model().labelOf(8, "nothing"));
  EXPECT_FALSE(host_->model().hasLabel({201, "k"}));
  EXPECT_FALSE(host_->model().hasLabel({7, "x"}));
}

TEST_F(InventoryServiceTest, RejectsEmptyAndUnknownLabels) {
  expectRefused(agent::kInvalidName, "the text of the label of the object 201 \"k\" is empty",
                service().setLabel({201, "k"}, ""));
  expectRefused(agent::kEntityNotFound, "no label of the object 201 \"l\"",
                service().removeLabel({201, "l"}));
}

TEST_F(InventoryServiceTest, RejectsInvalidUtf8InEveryText) {
  const auto expectInvalid = [this](const std::string& text, const Outcome& outcome) {
    expectRefused(agent::kInvalidName, "the " + text + " is not UTF-8 at byte 0", outcome);
  };
  expectInvalid("reference of clock position \"\\xff\"",
                service().createClockPosition(positionOf("\xff", "")));
  expectInvalid("label of clock position \"p\"",
                service().createClockPosition(positionOf("p", "\xff")));
  for (const auto& [name, field] :
       std::vector<std::pair<std::string, std::string ClockTopoLinkInfo_T::*>>{
           {"name", &ClockTopoLinkInfo_T::nativeName},
           {"A end", &ClockTopoLinkInfo_T::aEndReference},
           {"Z end", &ClockTopoLinkInfo_T::zEndReference}}) {
    ClockTopoLinkInfo_T link = linkOf("m", "");
    link.*field = "\xff";
    expectInvalid(name + " of clock link \"m\"", service().createClockLink(link));
  }
  expectInvalid("id of clock link \"\\xff\"", service().createClockLink(linkOf("\xff", "")));
  expectInvalid("name of clock link \"k\"",
                service().changeClockLink("k", {"\xff", std::nullopt, std::nullopt}));
  expectInvalid("A end of clock link \"k\"",
                service().changeClockLink("k", {std::nullopt, "\xff", std::nullopt}));
  expectInvalid("id of label of the object 201 \"\\xff\"", service().setLabel({201, "\xff"}, "x"));
  expectInvalid("text of label of the object 201 \"k\"", service().setLabel({201, "k"}, "\xff"));
}

// --- Undoing an import.

TEST_F(InventoryServiceTest, UndoesAnImport) {
  const Network before = host_->store().read();
  Network network = readText(withFormat(R"(
    "topoNodes": [{"id": "new"}, {"id": "NE=9", "parent": "new", "type": 1}],
    "networkElements": [{"number": 9, "shown": true}],
    "clockPositions": [{"reference": "NE=9"}],
    "clockLinks": [{"id": "m"}],
    "objectLabels": [{"type": 201, "id": "m", "label": "M"}, {"type": 201, "id": "n"}])"));
  agent::ImportSummary summary;
  expectDone(host_->nodes().import(std::move(network), summary));
  std::size_t removed = 0;
  expectDone(host_->nodes().remove("new", removed));
  expectDone(service().removeElement(9));
  expectDone(service().removeClockPosition("NE=9"));
  expectDone(service().removeClockLink("m"));
  expectDone(service().removeLabel({201, "n"}));
  EXPECT_EQ(before, host_->store().read());
}

}  // namespace
