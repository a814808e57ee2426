// The common attributes: stored values, and the codes and reasons of failures.

#include "agent/changes/AttributeService.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>

#include "agent/base/FailureCodes.h"
#include "agent/host/ObjectNaming.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Pairs.h"
#include "tests/support/Task.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/changes/ChangingHost.h"
#include "tests/unit/agent/support/NetworkFiles.h"
#include "tests/unit/agent/support/StoredOwner.h"

namespace {

using agent::AttributeService;
using agent::NetworkModel;
using agent::NetworkStore;
using agent::Outcome;
using agent::SqliteStore;
using globaldefs::NVSList_T;

// Element 5 has three nodes, as only an older store can have.
agent::Network networkOfAllKinds() {
  agent::Network network = readText(withFormat(R"(
    "ems": "other",
    "topoNodes": [
      {"id": "core", "name": "Core"},
      {"id": "west", "parent": "core", "name": "West"},
      {"id": "NE=5", "parent": "west", "name": "Five", "type": 1},
      {"id": "NE=51", "parent": "core", "name": "Five again", "type": 1},
      {"id": "NE=52", "parent": "core", "name": "Bare five", "type": 1},
      {"id": "ONE=6", "name": "Six", "type": 1},
      {"id": "OS=7", "name": "Seven", "type": 1},
      {"id": "EQ=8", "name": "Eight", "type": 1},
      {"id": "third", "name": "Third", "type": 3}],
    "networkElements": [
      {"number": 5, "name": "Element five"}, {"number": 9, "name": "Nine"}, {"number": -1}],
    "clockPositions": [
      {"reference": "NE=5", "label": "Clock five"}, {"reference": "NE=11", "label": "Eleven"}],
    "clockLinks": [{"id": "k1", "name": "SDH/one"}, {"id": "k2", "name": "SDH/two"}],
    "objectLabels": [{"type": 201, "id": "ghost", "label": "Ghost"}])"));
  network.topoNodes[3].nodeId = "EQ=1,NE=5";
  network.topoNodes[4].nodeId = "5";
  return network;
}

NVSList_T object(const std::string& objectClass, const std::string& value) {
  return nameOf({{"EMS", "E"}, {objectClass, value}});
}

NVSList_T subnetwork(const std::string& id) {
  return object("TopoSubnetwork", id);
}

NVSList_T element(const std::string& number) {
  return object("ManagedElement", number);
}

NVSList_T link(const std::string& id) {
  return object("ClockTopoLinkId", id);
}

// Store, model and service of an agent. A second object on the same store simulates a restart.
class Host {
 public:
  explicit Host(const std::string& path)
      : store_(path), model_(networkIn(store_, networkOfAllKinds())) {}

  NetworkStore& store() { return store_; }
  NetworkModel& model() { return model_; }
  AttributeService& service() { return service_; }

  // The id and the name of every record in the model.
  Pairs names() const {
    std::vector<NS_DOMAIN::TopoNode_T> nodes;
    std::vector<NS_DOMAIN::NE_T> elements;
    model_.appendTopoNodes(nodes);
    model_.appendNEs(elements, {{0, 5}, {0, 9}});
    Pairs names;
    for (const auto& node : nodes) {
      names.emplace_back(node.nodeId, node.nativeName);
    }
    for (const auto& one : elements) {
      names.emplace_back(std::to_string(one.number), one.name);
    }
    for (const auto& position : model_.clockPositions()) {
      names.emplace_back(position.reference, position.label);
    }
    for (const auto& one : model_.clockLinks()) {
      names.emplace_back(one.linkId, one.nativeName);
    }
    return names;
  }

 private:
  SqliteStore store_;
  NetworkModel model_;
  agent::NetworkWriter writer_{store_, model_};
  AttributeService service_{"E", writer_};
};

class AttributeServiceTest : public testing::Test {
 protected:
  AttributeService& service() { return host_->service(); }
  NetworkModel& model() { return host_->model(); }
  NetworkStore& store() { return host_->store(); }

  void restart() {
    host_.reset();
    host_ = std::make_unique<Host>(path_);
  }

  void expectDone(const Outcome& outcome) {
    EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    EXPECT_EQ("", outcome.reason);
  }

  void expectRefused(std::uint32_t code, const std::string& reason, const Outcome& outcome) {
    EXPECT_EQ(code, outcome.code);
    EXPECT_EQ(reason, outcome.reason);
  }

  // The stored list after a merge of pairs; after a failure the reason in brackets.
  Pairs merged(const NVSList_T& name, const Pairs& pairs) {
    NVSList_T list = nameOf(pairs);
    const Outcome outcome = service().setAdditionalInfo(name, list);
    if (outcome.code == agent::kSuccess) {
      return pairsOf(list);
    }
    EXPECT_EQ(agent::kInvalidName, outcome.code);
    EXPECT_EQ(pairs, pairsOf(list));
    return {{"refused", outcome.reason}};
  }

  // Every operation on one name.
  std::vector<Outcome> everyOutcome(const NVSList_T& name) {
    NVSList_T info = nameOf({{"a", "1"}});
    return {service().setUserLabel(name, "x", true), service().setOwner(name, "x"),
            service().setNativeName(name, "x"), service().setAdditionalInfo(name, info),
            service().reset(name)};
  }

  void expectEveryRefused(std::uint32_t code, const std::string& reason, const NVSList_T& name) {
    const Pairs before = host_->names();
    for (const Outcome& outcome : everyOutcome(name)) {
      expectRefused(code, reason, outcome);
    }
    EXPECT_EQ(before, host_->names());
  }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("store.db");
  std::unique_ptr<Host> host_ = std::make_unique<Host>(path_);
};

// --- Which objects there are.

TEST_F(AttributeServiceTest, AcceptsEveryTypeOfObject) {
  for (const NVSList_T& name : {subnetwork("core"), element("5"), element("8"), element("9"),
                                element("11"), object("ONE", "6"), object("OS", "7"), link("k1")}) {
    for (const Outcome& outcome : everyOutcome(name)) {
      expectDone(outcome);
    }
  }
}

TEST_F(AttributeServiceTest, RejectsUnknownObjects) {
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, TopoSubnetwork=x}",
                     subnetwork("x"));
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, ManagedElement=6}", element("6"));
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, ONE=5}", object("ONE", "5"));
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, OS=5}", object("OS", "5"));
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, ClockTopoLinkId=ghost}",
                     link("ghost"));
}

TEST_F(AttributeServiceTest, AcceptsOnlySubnetworksAsSubnetworks) {
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, TopoSubnetwork=NE=5}",
                     subnetwork("NE=5"));
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, TopoSubnetwork=third}",
                     subnetwork("third"));
}

TEST_F(AttributeServiceTest, RejectsMalformedNames) {
  expectEveryRefused(agent::kInvalidName, "malformed name {}: it has 0 pairs instead of 2",
                     nameOf({}));
  expectEveryRefused(agent::kInvalidName, "malformed name {EMS=E}: it has 1 pair instead of 2",
                     nameOf({{"EMS", "E"}}));
  expectEveryRefused(agent::kInvalidName,
                     "malformed name {EMS=other, OS=7}: the \"EMS\" is not \"E\"",
                     nameOf({{"EMS", "other"}, {"OS", "7"}}));
  expectEveryRefused(agent::kInvalidName,
                     "malformed name {EMS=E, PTP=1}: \"PTP\" is no class of objects",
                     object("PTP", "1"));
  expectEveryRefused(agent::kInvalidName,
                     "malformed name {EMS=E, TopoSubnetwork=\\xff}: it is not UTF-8",
                     subnetwork("\xff"));
}

TEST_F(AttributeServiceTest, SurvivesHostileNames) {
  const std::string cut = std::string(80, 'x') + "...";
  expectEveryRefused(agent::kInvalidName,
                     "malformed name {EMS=E, EMS=E, EMS=E, EMS=E, ...}: it has 1000000 pairs "
                     "instead of 2",
                     nameOf(Pairs(1000000, {"EMS", "E"})));
  expectEveryRefused(agent::kEntityNotFound, "no object {EMS=E, TopoSubnetwork=" + cut + "}",
                     subnetwork(longText('x')));
  expectEveryRefused(
      agent::kInvalidName,
      "malformed name {EMS=E, " + cut + "=1}: \"" + cut + "\" is no class of objects",
      object(longText('x'), "1"));
  NVSList_T bare;
  bare.length(2);
  expectEveryRefused(agent::kInvalidName,
                     "malformed name {=, =}: its first pair is not the \"EMS\"", bare);
}

// --- User labels.

TEST_F(AttributeServiceTest, StoresALinkLabelUnderTheKeyOfTheModule) {
  expectDone(service().setUserLabel(link("k1"), "Primär", false));
  const auto labelOf = [&](const std::string& id) {
    agent::ObjectNaming naming("E", model());
    NS_CORBA::ObjectLabelInfo info;
    naming.GetObjectLabelInfo(info, id, NS_CORBA::CorbaUtilInterface::kClockTopoLinkType);
    return info.userLabel;
  };
  EXPECT_EQ("Primär", labelOf("k1"));
  EXPECT_EQ("", labelOf("k2"));
  restart();
  EXPECT_EQ("Primär", labelOf("k1"));
}

TEST_F(AttributeServiceTest, StoresUserLabelsByTypeAndId) {
  EXPECT_TRUE(service().setUserLabel(subnetwork("core"), "a", false).ok());
  EXPECT_TRUE(service().setUserLabel(element("5"), "b", false).ok());
  EXPECT_TRUE(service().setUserLabel(object("ONE", "6"), "c", false).ok());
  EXPECT_TRUE(service().setUserLabel(object("OS", "7"), "d", false).ok());
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ("a", model().labelOf(54, "core"));
    EXPECT_EQ("b", model().labelOf(1, "NE=5"));
    EXPECT_EQ("c", model().labelOf(2, "ONE=6"));
    EXPECT_EQ("d", model().labelOf(3, "OS=7"));
    restart();
  }
}

TEST_F(AttributeServiceTest, ReplacesAUserLabel) {
  EXPECT_TRUE(service().setUserLabel(link("k1"), "first", false).ok());
  expectDone(service().setUserLabel(link("k1"), "second", false));
  EXPECT_EQ("second", model().labelOf(201, "k1"));
  restart();
  EXPECT_EQ("second", model().labelOf(201, "k1"));
}

TEST_F(AttributeServiceTest, RemovesAUserLabelForAnEmptyText) {
  EXPECT_TRUE(service().setUserLabel(link("k1"), "first", false).ok());
  expectDone(service().setUserLabel(link("k1"), "", true));
  EXPECT_EQ("", model().labelOf(201, "k1"));
  restart();
  EXPECT_EQ("", model().labelOf(201, "k1"));
  EXPECT_TRUE(store().idsWithLabel(201, "first").empty());
}

TEST_F(AttributeServiceTest, RejectsADuplicateLabelOnlyIfUniquenessIsEnforced) {
  EXPECT_TRUE(service().setUserLabel(link("k1"), "Trunk", false).ok());
  expectRefused(agent::kUserLabelInUse,
                "the user label \"Trunk\" is already that of {EMS=E, ClockTopoLinkId=k1}",
                service().setUserLabel(link("k2"), "Trunk", true));
  EXPECT_EQ("", model().labelOf(201, "k2"));
  expectDone(service().setUserLabel(link("k2"), "Trunk", false));
  EXPECT_EQ("Trunk", model().labelOf(201, "k2"));
}

TEST_F(AttributeServiceTest, AcceptsTheObjectsOwnUniqueLabelAgain) {
  EXPECT_TRUE(service().setUserLabel(link("k1"), "Trunk", true).ok());
  expectDone(service().setUserLabel(link("k1"), "Trunk", true));
}

TEST_F(AttributeServiceTest, ComparesUniqueLabelsWithinAType) {
  EXPECT_TRUE(service().setUserLabel(link("k1"), "Trunk", true).ok());
  expectDone(service().setUserLabel(subnetwork("core"), "Trunk", true));
}

TEST_F(AttributeServiceTest, IgnoresLabelsOfUnknownObjectsForUniqueness) {
  ASSERT_EQ("Ghost", model().labelOf(201, "ghost"));
  expectDone(service().setUserLabel(link("k1"), "Ghost", true));
}

TEST_F(AttributeServiceTest, AcceptsEmptyLabelsForManyObjects) {
  expectDone(service().setUserLabel(link("k1"), "", true));
  expectDone(service().setUserLabel(link("k2"), "", true));
}

// --- Owners.

TEST_F(AttributeServiceTest, StoresOwners) {
  expectDone(service().setOwner(element("5"), "Betrieb Köln"));
  expectDone(service().setOwner(element("9"), "first"));
  expectDone(service().setOwner(element("9"), ""));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ("Betrieb Köln", storedOwner(store(), {1, "NE=5"}));
    EXPECT_EQ("", storedOwner(store(), {1, "NE=9"}));
    EXPECT_EQ("", storedOwner(store(), {2, "ONE=6"}));
    restart();
  }
}

// --- Native names.

TEST_F(AttributeServiceTest, RenamesOnlyTheRecordsOfTheObject) {
  expectDone(service().setNativeName(element("5"), "FÜNF"));
  expectDone(service().setNativeName(subnetwork("core"), ""));
  expectDone(service().setNativeName(object("ONE", "6"), "SIX"));
  expectDone(service().setNativeName(object("OS", "7"), "SEVEN"));
  expectDone(service().setNativeName(element("9"), "NINE"));
  expectDone(service().setNativeName(link("k2"), "OTN/two"));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ((Pairs{{"core", ""},
                     {"west", "West"},
                     {"NE=5", "FÜNF"},
                     {"EQ=1,NE=5", "FÜNF"},
                     {"5", "FÜNF"},
                     {"ONE=6", "SIX"},
                     {"OS=7", "SEVEN"},
                     {"EQ=8", "Eight"},
                     {"third", "Third"},
                     {"5", "FÜNF"},
                     {"9", "NINE"},
                     {"NE=5", "FÜNF"},
                     {"NE=11", "Eleven"},
                     {"k1", "SDH/one"},
                     {"k2", "OTN/two"}}),
              host_->names());
    restart();
  }
}

TEST_F(AttributeServiceTest, RenamesAnElementWithClockRecordsOnly) {
  expectDone(service().setNativeName(element("11"), "ELEVEN"));
  EXPECT_EQ("ELEVEN", model().clockPositions()[1].label);
  restart();
  EXPECT_EQ("ELEVEN", model().clockPositions()[1].label);
}

// --- Additional information.

TEST_F(AttributeServiceTest, MergesAdditionalInformationByName) {
  const NVSList_T name = subnetwork("west");
  EXPECT_EQ((Pairs{{"b", "1"}, {"a", "2"}}), merged(name, {{"b", "1"}, {"a", "2"}}));
  EXPECT_EQ((Pairs{{"b", "3"}, {"a", "2"}, {"0", "4"}}), merged(name, {{"0", "4"}, {"b", "3"}}));
  EXPECT_EQ((Pairs{{"a", "2"}, {"0", "4"}}), merged(name, {{"b", ""}, {"unknown", ""}}));
  EXPECT_EQ((Pairs{{"a", "2"}, {"0", "4"}, {"b", "5"}}), merged(name, {{"b", "5"}}));
  restart();
  EXPECT_EQ((Pairs{{"a", "2"}, {"0", "4"}, {"b", "5"}}), merged(name, {}));
}

TEST_F(AttributeServiceTest, StoresInformationForEachObjectSeparately) {
  merged(element("5"), {{"a", "1"}});
  merged(element("9"), {{"a", "2"}});
  EXPECT_EQ((Pairs{{"a", "1"}}), merged(element("5"), {}));
  EXPECT_EQ(Pairs{}, merged(object("ONE", "6"), {}));
}

TEST_F(AttributeServiceTest, RejectsPairsWithBadOrDuplicateNames) {
  const NVSList_T name = element("5");
  const std::string what = "the additional information of {EMS=E, ManagedElement=5}: ";
  merged(name, {{"kept", "1"}});
  EXPECT_EQ((Pairs{{"refused", what + "pair 2 has no name"}}),
            merged(name, {{"a", "1"}, {"", "2"}}));
  EXPECT_EQ((Pairs{{"refused", what + "pair 3 gives \"a\" a second time"}}),
            merged(name, {{"a", "1"}, {"b", "2"}, {"a", ""}}));
  EXPECT_EQ((Pairs{{"refused", what + "pair 1 has a name that is not UTF-8 at byte 1"}}),
            merged(name, {{"a\xc0", "1"}}));
  EXPECT_EQ((Pairs{{"refused", what + "pair 1 has a value for \"a\" that is not UTF-8 at byte 0"}}),
            merged(name, {{"a", "\xff"}}));
  EXPECT_EQ(
      (Pairs{{"refused", what + "pair 1 has a value for \"a\" that has more than 1048576 bytes"}}),
      merged(name, {{"a", std::string(1048577, 'x')}}));
  EXPECT_EQ((Pairs{{"kept", "1"}}), merged(name, {}));
}

TEST_F(AttributeServiceTest, MergesManyPairs) {
  Pairs pairs;
  for (int i = 0; i < 20000; ++i) {
    pairs.emplace_back("name " + std::to_string(i), "value");
  }
  EXPECT_EQ(pairs, merged(link("k1"), pairs));
}

// The limit keeps a reply, which contains the whole information, within the size of a message.
TEST_F(AttributeServiceTest, RejectsInformationAboveTheSizeLimit) {
  const NVSList_T name = element("5");
  Pairs most;
  constexpr std::size_t kLongest = agent::kMostTextBytes - agent::kInfoPairBytes - 1;
  for (char c = 'a'; c < 'a' + 16; ++c) {
    most.emplace_back(std::string(1, c), std::string(kLongest, c));
  }
  EXPECT_EQ(most, merged(name, most));
  NVSList_T more = nameOf({{"q", "1"}});
  expectRefused(agent::kTooMuch,
                "the additional information of {EMS=E, ManagedElement=5} would have more than "
                "16777216 bytes",
                service().setAdditionalInfo(name, more));
  EXPECT_EQ((Pairs{{"q", "1"}}), pairsOf(more));
  EXPECT_EQ(most, merged(name, {}));
  most.front() = {"q", "1"};
  most.push_back(most.front());
  most.erase(most.begin());
  EXPECT_EQ(most, merged(name, {{"a", ""}, {"q", "1"}}));
}

// --- Reset.

TEST_F(AttributeServiceTest, RemovesAllAttributesButTheNativeNameOnReset) {
  const NVSList_T name = element("5");
  EXPECT_TRUE(service().setUserLabel(name, "label", false).ok());
  EXPECT_TRUE(service().setOwner(name, "owner").ok());
  EXPECT_TRUE(service().setNativeName(name, "native").ok());
  merged(name, {{"a", "1"}});
  EXPECT_TRUE(service().setUserLabel(element("9"), "stays", false).ok());
  expectDone(service().reset(name));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ("", model().labelOf(1, "NE=5"));
    EXPECT_EQ("", storedOwner(store(), {1, "NE=5"}));
    EXPECT_EQ(Pairs{}, store().additionalInfoOf({1, "NE=5"}));
    EXPECT_EQ("native", model().clockPositions()[0].label);
    EXPECT_EQ("stays", model().labelOf(1, "NE=9"));
    restart();
  }
}

// --- Texts.

TEST_F(AttributeServiceTest, RejectsTextsThatAreNotUtf8OrContainNul) {
  expectRefused(agent::kInvalidName,
                "the user label of {EMS=E, TopoSubnetwork=core} is not UTF-8 at byte 3",
                service().setUserLabel(subnetwork("core"), "abc\xff", false));
  expectRefused(agent::kInvalidName,
                "the owner of {EMS=E, TopoSubnetwork=core} contains a NUL character",
                service().setOwner(subnetwork("core"), std::string_view("a\0b", 3)));
  expectRefused(agent::kInvalidName,
                "the native name of {EMS=E, TopoSubnetwork=core} has more than 1048576 bytes",
                service().setNativeName(subnetwork("core"), longText('x')));
}

TEST_F(AttributeServiceTest, AcceptsTextsOfUpToAMebibyte) {
  const std::string text(agent::kMostTextBytes, 'x');
  expectDone(service().setUserLabel(subnetwork("core"), text, true));
  EXPECT_EQ(text, model().labelOf(54, "core"));
}

TEST_F(AttributeServiceTest, StoresUnusualTextsUnchanged) {
  const std::string text = "'; DROP TABLE object_owner; --\n\t\xf0\x9f\x98\x80";
  expectDone(service().setOwner(subnetwork("core"), text));
  EXPECT_EQ((Pairs{{text, text}}), merged(subnetwork("core"), {{text, text}}));
  EXPECT_EQ(text, storedOwner(store(), {54, "core"}));
}

// --- Disks and processes that fail.

TEST_F(AttributeServiceTest, KeepsChangesWhenTheProcessIsKilled) {
  host_.reset();
  const int status = statusOfChild([&] {
    Host host(path_);
    NVSList_T info = nameOf({{"a", "1"}});
    EXPECT_TRUE(host.service().setUserLabel(link("k1"), "label", true).ok());
    EXPECT_TRUE(host.service().setOwner(link("k1"), "owner").ok());
    EXPECT_TRUE(host.service().setNativeName(link("k1"), "native").ok());
    EXPECT_TRUE(host.service().setAdditionalInfo(link("k1"), info).ok());
    raise(SIGKILL);
  });
  ASSERT_TRUE(wasKilledBy(status, SIGKILL));
  host_ = std::make_unique<Host>(path_);
  EXPECT_EQ("label", model().labelOf(201, "k1"));
  EXPECT_EQ("owner", storedOwner(store(), {201, "k1"}));
  EXPECT_EQ("native", model().clockLinks()[0].nativeName);
  EXPECT_EQ((Pairs{{"a", "1"}}), merged(link("k1"), {}));
}

void limitFileSize(rlim_t bytes) {
  const rlimit limit{bytes, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

// Runs in a child process with a file size limit. The exit status is the number of failed checks.
TEST_F(AttributeServiceTest, RecoversFromAFailureOfTheStore) {
  host_.reset();
  const int status = statusOfChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    Host host(path_);
    const Pairs names = host.names();
    const std::string text(100000, 'x');
    limitFileSize(1000);
    const Outcome name = host.service().setNativeName(element("5"), text);
    const Outcome label = host.service().setUserLabel(element("5"), text, true);
    limitFileSize(RLIM_INFINITY);
    int wrong = 0;
    wrong += name.code == agent::kInternalError && label.code == agent::kInternalError ? 0 : 1;
    wrong += name.reason.rfind("{EMS=E, ManagedElement=5}: " + path_ + ": ", 0) == 0 ? 0 : 1;
    wrong += host.names() == names && host.model().labelOf(1, "NE=5").empty() ? 0 : 1;
    wrong += host.service().setOwner(element("5"), "later").code == agent::kSuccess ? 0 : 1;
    _exit(wrong);
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(0, WEXITSTATUS(status));
  host_ = std::make_unique<Host>(path_);
  EXPECT_EQ("later", storedOwner(store(), {1, "NE=5"}));
  EXPECT_EQ("", model().labelOf(1, "NE=5"));
}

// --- Threads.

void runAll(std::vector<std::thread>& threads) {
  for (std::thread& thread : threads) {
    thread.join();
  }
  threads.clear();
}

TEST_F(AttributeServiceTest, LetsOneOfManyThreadsSetAUniqueLabel) {
  std::atomic<int> winners{0};
  std::vector<std::thread> threads;
  for (const char* number : {"5", "8", "9", "11"}) {
    threads.emplace_back([&, number] {
      winners += service().setUserLabel(element(number), "mine", true).code == agent::kSuccess;
    });
  }
  runAll(threads);
  EXPECT_EQ(1, winners);
  EXPECT_EQ(1U, store().idsWithLabel(1, "mine").size());
}

TEST_F(AttributeServiceTest, KeepsStoreAndModelEqualUnderManyThreads) {
  std::atomic<bool> stop{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      while (!stop) {
        host_->names();
        model().labelOf(201, "k1");
      }
    });
  }
  std::vector<std::thread> writers;
  for (int i = 0; i < 4; ++i) {
    writers.emplace_back([&, i] {
      for (int round = 0; round < 25; ++round) {
        const std::string text = std::to_string(i) + '.' + std::to_string(round);
        NVSList_T info = nameOf({{text, text}});
        EXPECT_TRUE(service().setNativeName(element("5"), text).ok());
        EXPECT_TRUE(service().setUserLabel(link("k1"), text, false).ok());
        EXPECT_TRUE(service().setAdditionalInfo(link("k1"), info).ok());
        EXPECT_EQ(agent::kEntityNotFound, service().setOwner(subnetwork("none"), text).code);
      }
    });
  }
  runAll(writers);
  stop = true;
  runAll(readers);
  const Pairs names = host_->names();
  const std::string label = model().labelOf(201, "k1");
  restart();
  EXPECT_EQ(names, host_->names());
  EXPECT_EQ(label, model().labelOf(201, "k1"));
  EXPECT_EQ(100U, merged(link("k1"), {}).size());
}

// Every setter finds the object, waits for the change that removes the object, and must check
// again.
TEST(AttributeServiceRace, RejectsAnObjectThatAConcurrentChangeRemoved) {
  const NVSList_T name = subnetwork("a");
  NVSList_T info = nameOf({{"n", "v"}});
  using Set = std::function<Outcome(AttributeService&)>;
  const std::vector<Set> setters = {
      [&](AttributeService& attributes) { return attributes.setUserLabel(name, "x", false); },
      [&](AttributeService& attributes) { return attributes.setOwner(name, "x"); },
      [&](AttributeService& attributes) { return attributes.setNativeName(name, "x"); },
      [&](AttributeService& attributes) { return attributes.setAdditionalInfo(name, info); },
      [&](AttributeService& attributes) { return attributes.reset(name); }};
  for (const Set& set : setters) {
    ChangingHost host(SqliteStore::kInMemory);
    EXPECT_TRUE(host.nodes().create(nodeOf("a", "")).ok());
    auto change = std::make_unique<agent::NetworkWriter::Change>(host.writer());
    support::Task setter([&] { return set(host.attributes()).code; });
    EXPECT_TRUE(setter.waits());
    change->commit(change->model().prepareRemoval("a"));
    change.reset();
    EXPECT_EQ(agent::kEntityNotFound, setter.get());
    const agent::ObjectKey key = {agent::kTopoSubnetworkObjectType, "a"};
    EXPECT_EQ("", storedOwner(host.store(), key));
    EXPECT_TRUE(host.store().additionalInfoOf(key).empty());
    EXPECT_EQ("", host.model().labelOf(key.type, key.id));
  }
}

}  // namespace
