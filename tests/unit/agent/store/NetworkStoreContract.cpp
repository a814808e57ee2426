#include "tests/unit/agent/store/NetworkStoreContract.h"

#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::AttributeRemoval;
using agent::InfoChange;
using agent::InfoPairs;
using agent::LabelChange;
using agent::Network;
using agent::NetworkAddition;
using agent::NetworkRemoval;
using agent::NetworkRenaming;
using agent::NetworkReplacement;
using agent::ObjectAttributes;
using agent::ObjectKey;
using agent::OwnerChange;
using agent::RecordList;
using agent::RecordRemoval;
using agent::RecordUpdate;
using agent::StoreError;

const ObjectKey kLink{201, "z"};

std::string contentOf(agent::StoreCopy& copy) {
  while (!copy.step()) {
  }
  std::string content;
  while (copy.bytesLeft() != 0) {
    content += copy.read(1000);
  }
  EXPECT_EQ(copy.size(), content.size());
  return content;
}

TEST_P(NetworkStoreContract, IsNewUntilANetworkIsLoaded) {
  EXPECT_TRUE(store().isNew());
  EXPECT_EQ(Network(), store().read());
  store().load(Network());
  EXPECT_FALSE(store().isNew());
  reopen();
  EXPECT_FALSE(store().isNew());
}

TEST_P(NetworkStoreContract, IsNotNewAfterAnAddition) {
  store().commit(NetworkAddition{});
  EXPECT_FALSE(store().isNew());
}

TEST_P(NetworkStoreContract, KeepsEveryFieldAndOrder) {
  store().load(sampleNetwork());
  EXPECT_EQ(sampleNetwork(), store().read());
  reopen();
  EXPECT_EQ(sampleNetwork(), store().read());
  EXPECT_NO_THROW(store().check());
}

TEST_P(NetworkStoreContract, RejectsASecondLoad) {
  store().load(sampleNetwork());
  EXPECT_THROW(store().load(wideNetwork(2)), StoreError);
  EXPECT_EQ(sampleNetwork(), store().read());
}

TEST_P(NetworkStoreContract, StaysNewWhenALoadFails) {
  Network network = wideNetwork(3);
  network.topoNodes.push_back(network.topoNodes.front());
  EXPECT_THROW(store().load(network), StoreError);
  EXPECT_TRUE(store().isNew());
  EXPECT_EQ(Network(), store().read());
}

TEST_P(NetworkStoreContract, AppendsAnAdditionToEveryList) {
  Network whole = sampleNetwork();
  store().load(whole);
  Network more = wideNetwork(2);
  more.ems = "ignored";
  more.networkElements = {{9, "nine", true}, {10, "ten", true, true}};
  store().commit(NetworkAddition{more, {7}});
  whole.topoNodes.insert(whole.topoNodes.end(), more.topoNodes.begin(), more.topoNodes.end());
  whole.networkElements.insert(whole.networkElements.end(), more.networkElements.begin(),
                               more.networkElements.end());
  whole.networkElements[0].shown = whole.networkElements[0].shownForNode = true;
  reopen();
  const Network stored = store().read();
  EXPECT_EQ(whole, stored);
  EXPECT_TRUE(stored.networkElements[0].shownForNode);
  EXPECT_FALSE(stored.networkElements[3].shownForNode);
  EXPECT_TRUE(stored.networkElements[4].shownForNode);
}

TEST_P(NetworkStoreContract, RejectsAnAdditionOfAStoredObjectAsAWhole) {
  store().load(sampleNetwork());
  Network more = wideNetwork(2);
  more.clockLinks.resize(1);
  more.clockLinks[0].linkId = "z";
  EXPECT_THROW(store().commit(NetworkAddition{more, {7}}), StoreError);
  EXPECT_EQ(sampleNetwork(), store().read());
}

TEST_P(NetworkStoreContract, ChangesNothingWhenAnAdditionIsCancelled) {
  agent::Cancellation cancellation;
  cancellation.request();
  EXPECT_THROW(store().commit(NetworkAddition{sampleNetwork(), {}}, cancellation),
               agent::Cancelled);
  EXPECT_TRUE(store().isNew());
  store().commit(NetworkAddition{sampleNetwork(), {}});
  EXPECT_EQ(sampleNetwork(), store().read());
}

TEST_P(NetworkStoreContract, RemovesNodesAttributesAndMarks) {
  Network network = sampleNetwork();
  store().load(network);
  store().commit(OwnerChange{kLink, "me"});
  store().commit(InfoChange{kLink, {{"a", "1"}}});
  store().commit(
      NetworkRemoval{{network.topoNodes[3], network.topoNodes[1]}, {kLink, {1, "unknown"}}, {6}});
  reopen();
  EXPECT_EQ("", GetParam().ownerOf(store(), kLink));
  EXPECT_TRUE(store().additionalInfoOf(kLink).empty());
  network.topoNodes = {network.topoNodes[0], network.topoNodes[2]};
  network.networkElements[2].shown = false;
  network.objectLabels.erase(network.objectLabels.begin());
  EXPECT_EQ(network, store().read());
  EXPECT_NO_THROW(store().check());
}

TEST_P(NetworkStoreContract, RenamesRecordsOfEveryList) {
  Network network = sampleNetwork();
  store().load(network);
  store().commit(NetworkRenaming{{{RecordList::kTopoNodes, network.topoNodes[1].nodeId},
                                  {RecordList::kNetworkElements, "-5"},
                                  {RecordList::kClockPositions, "NE=7"},
                                  {RecordList::kClockLinks, "z"}},
                                 "new",
                                 {}});
  network.topoNodes[1].nativeName = "new";
  network.networkElements[1].name = "new";
  network.clockPositions[0].label = "new";
  network.clockLinks[0].nativeName = "new";
  reopen();
  EXPECT_EQ(network, store().read());
}

TEST_P(NetworkStoreContract, ReplacesTheWholeNetwork) {
  store().load(sampleNetwork());
  const ObjectKey kept{54, "root"};
  for (const ObjectKey& key : {kLink, kept}) {
    store().commit(OwnerChange{key, "me"});
    store().commit(InfoChange{key, {{"a", "1"}}});
  }
  Network network = wideNetwork(3);
  network.ems = "ignored";
  network.networkElements = {{7, "seven", true}};
  network.objectLabels = {{54, "root", "new"}};
  store().commit(NetworkReplacement{network, {kLink}, {}, {}, {}});
  reopen();
  network.ems = sampleNetwork().ems;
  EXPECT_EQ(network, store().read());
  EXPECT_EQ("", store().ownerOf(kLink));
  EXPECT_EQ("me", store().ownerOf(kept));
  EXPECT_TRUE(store().additionalInfoOf(kLink).empty());
  EXPECT_EQ(1U, store().additionalInfoOf(kept).size());
  EXPECT_NO_THROW(store().check());
}

TEST_P(NetworkStoreContract, ReplacesTheAttributesOfAllObjects) {
  store().load(sampleNetwork());
  const ObjectKey other{54, "root"};
  store().commit(OwnerChange{kLink, "me"});
  store().commit(InfoChange{other, {{"b", "2"}, {"a", "1"}}});
  const std::vector<ObjectAttributes> before = {{54, "root", "", {{"b", "2"}, {"a", "1"}}},
                                                {kLink.type, kLink.id, "me", {}}};
  EXPECT_EQ(before, store().attributes());
  Network network = wideNetwork(3);
  network.objectAttributes = {{{1, "x", "you", {{"c", "3"}}}}};
  store().commit(NetworkReplacement{network, {}, {}, {}, {}});
  reopen();
  EXPECT_EQ(*network.objectAttributes, store().attributes());
  Network addition;
  addition.objectAttributes = {{{1, "x", "", {{"d", "4"}}}, {1, "y", "z", {}}}};
  store().commit(NetworkAddition{addition, {}});
  EXPECT_EQ(*addition.objectAttributes, store().attributes());
  EXPECT_LT(0U, store().bytes());
  EXPECT_NO_THROW(store().check());
}

TEST_P(NetworkStoreContract, KeepsTheNetworkWhenAReplacementIsCancelled) {
  store().load(sampleNetwork());
  agent::Cancellation cancellation;
  cancellation.request();
  EXPECT_THROW(store().commit(NetworkReplacement{wideNetwork(2), {}, {}, {}, {}}, cancellation),
               agent::Cancelled);
  EXPECT_EQ(sampleNetwork(), store().read());
}

TEST_P(NetworkStoreContract, RemovesARecordOfEveryListWithAttributes) {
  Network network = sampleNetwork();
  store().load(network);
  store().commit(OwnerChange{kLink, "me"});
  store().commit(RecordRemoval{{RecordList::kNetworkElements, "-5"}, {}});
  store().commit(RecordRemoval{{RecordList::kClockPositions, ""}, {}});
  store().commit(RecordRemoval{{RecordList::kClockLinks, "z"}, {kLink}});
  store().commit(RecordRemoval{{RecordList::kClockLinks, "unknown"}, {}});
  reopen();
  network.networkElements.erase(network.networkElements.begin() + 1);
  network.clockPositions.pop_back();
  network.clockLinks.erase(network.clockLinks.begin());
  network.objectLabels.erase(network.objectLabels.begin());
  EXPECT_EQ(network, store().read());
  EXPECT_EQ("", GetParam().ownerOf(store(), kLink));
  EXPECT_NO_THROW(store().check());
}

TEST_P(NetworkStoreContract, UpdatesARecordOfEveryListInItsPlace) {
  Network network = sampleNetwork();
  store().load(network);
  NS_DOMAIN::TopoNode_T& node = network.topoNodes[0];
  node.parentId = "a";
  node.nativeName = "new";
  node.nodeType = 4294967295U;
  node.parentType = 9;
  node.attribute3 = 7;
  node.attribute4 = -8;
  node.extendedAttributes = {{"x", ""}, {"", "y"}, {"x", "z"}};
  NS_DOMAIN::TopoNode_T& plain = network.topoNodes[3];
  plain.extendedAttributes.clear();
  network.networkElements[0] = {7, "new", true, true};
  network.clockPositions[0].label = "new";
  network.clockPositions[0].value2 = -2147483647;
  network.clockLinks[0].nativeName = "new";
  network.clockLinks[0].aEndReference = "x";
  network.clockLinks[0].zEndReference = "";
  for (const agent::AnyRecord& record :
       std::vector<agent::AnyRecord>{node, plain, network.networkElements[0],
                                     network.clockPositions[0], network.clockLinks[0]}) {
    store().commit(RecordUpdate{record});
  }
  reopen();
  EXPECT_EQ(network, store().read());
  EXPECT_TRUE(store().read().networkElements[0].shownForNode);
  EXPECT_NO_THROW(store().check());
}

TEST_P(NetworkStoreContract, ReplacesAndRemovesALabel) {
  store().commit(LabelChange{kLink, "first"});
  store().commit(LabelChange{{54, "z"}, "second"});
  store().commit(LabelChange{kLink, "second"});
  reopen();
  EXPECT_EQ((std::vector<std::string>{"z"}), store().idsWithLabel(201, "second"));
  EXPECT_TRUE(store().idsWithLabel(201, "first").empty());
  store().commit(LabelChange{kLink, ""});
  EXPECT_TRUE(store().idsWithLabel(201, "second").empty());
  EXPECT_EQ(1U, store().read().objectLabels.size());
}

TEST_P(NetworkStoreContract, ReplacesAndRemovesAnOwner) {
  store().commit(OwnerChange{kLink, "first"});
  store().commit(OwnerChange{kLink, "second"});
  reopen();
  EXPECT_EQ("second", GetParam().ownerOf(store(), kLink));
  EXPECT_EQ("second", store().ownerOf(kLink));
  EXPECT_EQ("", store().ownerOf({54, "z"}));
  EXPECT_EQ("", GetParam().ownerOf(store(), {54, "z"}));
  store().commit(OwnerChange{kLink, ""});
  EXPECT_EQ("", GetParam().ownerOf(store(), kLink));
}

TEST_P(NetworkStoreContract, MergesAdditionalInformationAsMergedInfo) {
  InfoPairs expected;
  for (const InfoPairs& pairs : {InfoPairs{{"b", "1"}, {"a", "2"}, {"c", "3"}},
                                 InfoPairs{{"c", "4"}, {"b", ""}, {"none", ""}},
                                 InfoPairs{{"b", "5"}, {"a", "6"}}, InfoPairs{}}) {
    store().commit(InfoChange{kLink, pairs});
    expected = agent::mergedInfo(expected, pairs);
    EXPECT_EQ(expected, store().additionalInfoOf(kLink));
  }
  reopen();
  EXPECT_EQ(expected, store().additionalInfoOf(kLink));
  EXPECT_TRUE(store().additionalInfoOf({54, "z"}).empty());
}

TEST_P(NetworkStoreContract, RemovesAllAttributesOfOneObject) {
  const ObjectKey other{201, "a"};
  for (const ObjectKey& key : {kLink, other}) {
    store().commit(LabelChange{key, "label"});
    store().commit(OwnerChange{key, "me"});
    store().commit(InfoChange{key, {{"a", "1"}}});
  }
  store().commit(AttributeRemoval{kLink});
  EXPECT_EQ((std::vector<std::string>{"a"}), store().idsWithLabel(201, "label"));
  EXPECT_EQ("", GetParam().ownerOf(store(), kLink));
  EXPECT_EQ("me", GetParam().ownerOf(store(), other));
  EXPECT_TRUE(store().additionalInfoOf(kLink).empty());
  EXPECT_EQ(1U, store().additionalInfoOf(other).size());
}

// --- Change numbers.

TEST_P(NetworkStoreContract, NumbersEveryChange) {
  const std::uint64_t first = store().commit(NetworkAddition{sampleNetwork(), {}});
  EXPECT_EQ(first + 1, store().commit(LabelChange{kLink, "label"}));
  EXPECT_EQ(first + 2, store().commit(OwnerChange{kLink, "me"}));
  EXPECT_EQ(first + 3, store().commit(InfoChange{kLink, {{"a", "1"}}}));
  EXPECT_EQ(first + 4, store().commit(NetworkRenaming{{}, "name", {}}));
  EXPECT_EQ(first + 5, store().commit(AttributeRemoval{kLink}));
  EXPECT_EQ(first + 6, store().commit(NetworkRemoval{sampleNetwork().topoNodes, {}, {}}));
  EXPECT_EQ(first + 6, store().lastChange());
}

TEST_P(NetworkStoreContract, GivesNoNumberToAChangeThatFails) {
  const std::uint64_t first = store().commit(NetworkAddition{sampleNetwork(), {}});
  EXPECT_THROW(store().commit(NetworkAddition{sampleNetwork(), {}}), StoreError);
  EXPECT_EQ(first, store().lastChange());
  EXPECT_EQ(first + 1, store().commit(OwnerChange{kLink, "me"}));
}

TEST_P(NetworkStoreContract, RaisesTheNumberToTheTimeOrByOneAtEveryOpen) {
  EXPECT_EQ(kNow, store().lastChange());
  reopen(kNow + 1000000);
  EXPECT_EQ(kNow + 1000000, store().lastChange());
  EXPECT_EQ(kNow + 1000001, store().commit(OwnerChange{kLink, "me"}));
  reopen(kNow + 1000001);
  EXPECT_EQ(kNow + 1000002, store().lastChange());
  reopen(kNow - 1000000);
  EXPECT_EQ(kNow + 1000003, store().lastChange());
}

TEST_P(NetworkStoreContract, GivesNoNumberAgainAfterTheRestoreOfABackup) {
  const std::string backup = contentOf(*store().beginCopy());
  std::uint64_t last = 0;
  for (int i = 0; i < 3; ++i) {
    last = store().commit(OwnerChange{kLink, std::to_string(i)});
  }
  const auto restored = GetParam().restore(directory_.file("copy"), backup, kNow + 1000);
  EXPECT_LT(last, restored->lastChange());
}

// --- Copies.

TEST_P(NetworkStoreContract, CopiesTheStoreAfterTheLastStep) {
  store().load(sampleNetwork());
  const auto copy = store().beginCopy();
  store().commit(OwnerChange{kLink, "me"});
  const std::string content = contentOf(*copy);
  store().commit(NetworkRemoval{sampleNetwork().topoNodes, {kLink}, {}});
  const auto restored = GetParam().restore(directory_.file("copy"), content, kNow);
  EXPECT_EQ(sampleNetwork(), restored->read());
  EXPECT_EQ("me", GetParam().ownerOf(*restored, kLink));
}

}  // namespace
