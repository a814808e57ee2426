// The common attributes over IIOP: set by a client, stored by the agent.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <thread>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"
#include "tests/integration/Programs.h"
#include "tests/support/Pairs.h"

namespace integration {
namespace {

using globaldefs::NVSList_T;
using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using TopoManagementManager::TopoMgr_I;
using TopoManagementManager::TopoMgr_I_var;

constexpr const char* kNetwork = R"({
  "format": "topo-network/1", "ems": "E",
  "topoNodes": [
    {"id": "core", "name": "Core"},
    {"id": "west", "parent": "core", "name": "West"},
    {"id": "NE=6", "parent": "west", "name": "Six", "type": 1}],
  "networkElements": [{"number": 5, "name": "Five"}],
  "clockPositions": [{"reference": "NE=6", "label": "Six"}],
  "clockLinks": [{"id": "k1", "name": "SDH/one", "a": "NE=6", "z": "NE=6"},
                 {"id": "k2", "name": "SDH/two", "a": "NE=6", "z": "NE=6"}]})";

NVSList_T object(const std::string& objectClass, const std::string& value) {
  return nameOf({{"EMS", "E"}, {objectClass, value}});
}

// The texts of a clock link that a client can set, and the link type, which follows from the native
// name.
struct ClockLink {
  std::string userLabel;
  std::string nativeName;
  std::string linkType;  // the value of TOPO_LINK_TYPE
};

bool operator==(const ClockLink& left, const ClockLink& right) {
  return left.userLabel == right.userLabel && left.nativeName == right.nativeName &&
         left.linkType == right.linkType;
}

void PrintTo(const ClockLink& link, std::ostream* out) {
  *out << "label \"" << link.userLabel << "\", native name \"" << link.nativeName << "\", type \""
       << link.linkType << '"';
}

// The exception of a failed call.
using Failure = std::pair<globaldefs::ExceptionType_T, std::string>;

class ServedCommonAttributes : public testing::Test {
 protected:
  ServedCommonAttributes() { start(); }

  void start(const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"--network", network_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    agent_.emplace(arguments, directory_.file("network.db"));
    const CORBA::Object_var object = client_->get()->string_to_object(agent_->corbaloc().c_str());
    manager_ = TopoMgr_I::_narrow(object);
  }

  // Kills the agent and starts it again on the same store.
  void killAndRestart() {
    EXPECT_EQ(SIGKILL, agent_->stop(SIGKILL).signal);
    start();
  }

  const RunningAgent& agent() const { return *agent_; }

  Failure failureOf(const std::function<void()>& call) {
    try {
      call();
    } catch (const globaldefs::ProcessingFailureException& failure) {
      return {failure.exceptionType, failure.errorReason.in()};
    }
    return {globaldefs::EXCPT_NOT_IMPLEMENTED, "did not fail"};
  }

  // Calls every setter for one object. Requires that all setters fail with the same failure, and
  // returns the failure.
  Failure failureOfEverySetter(const NVSList_T& name) {
    NVSList_T info = nameOf({{"a", "1"}});
    const Failure failure = failureOf([&] { manager_->setOwner(name, "x"); });
    EXPECT_EQ(failure, failureOf([&] { manager_->setUserLabel(name, "x", true); }));
    EXPECT_EQ(failure, failureOf([&] { manager_->setNativeEMSName(name, "x"); }));
    EXPECT_EQ(failure, failureOf([&] { manager_->setAdditionalInfo(name, info); }));
    return failure;
  }

  Pairs merged(const NVSList_T& name, const Pairs& pairs) {
    NVSList_T info = nameOf(pairs);
    manager_->setAdditionalInfo(name, info);
    return pairsOf(info);
  }

  std::vector<ClockLink> links() {
    topologicalLink::TopologicalLinkList_T_var list;
    topologicalLink::TopologicalLinkIterator_I_var iterator;
    manager_->getAllClockSourceViewlTopologicalLinks(100, list.out(), iterator.out());
    std::vector<ClockLink> links;
    for (CORBA::ULong i = 0; i < list->length(); ++i) {
      const topologicalLink::TopologicalLink_T& link = list[i];
      links.push_back(
          {link.userLabel.in(), link.nativeEMSName.in(), link.additionalInfo[0].value.in()});
    }
    return links;
  }

  std::vector<std::string> topoNames() {
    std::vector<std::string> names;
    for (const json& record : records(agent(), {"topo"})) {
      names.push_back(record["nativeEMSName"]);
    }
    return names;
  }

  const support::TemporaryDirectory directory_;
  const std::string network_ = directory_.write("network.json", kNetwork);
  const std::unique_ptr<orb::Orb> client_ = orb::startClient({});
  std::optional<RunningAgent> agent_;
  TopoMgr_I_var manager_;
};

TEST_F(ServedCommonAttributes, AreSupportedAsTheCapabilitiesSay) {
  for (const json& record : records(agent(), {"capabilities"})) {
    EXPECT_EQ("Supported", record["value"]) << record;
  }
}

TEST_F(ServedCommonAttributes, ShowAChangedNativeNameInTheTopologyViewAndKeepIt) {
  EXPECT_THAT(topoNames(), ElementsAre("Core", "West", "Six", "Five"));
  manager_->setNativeEMSName(object("TopoSubnetwork", "west"), "Köln-West");
  manager_->setNativeEMSName(object("ManagedElement", "6"), "SIX");
  manager_->setNativeEMSName(object("ManagedElement", "5"), "");
  EXPECT_THAT(topoNames(), ElementsAre("Core", "Köln-West", "SIX", ""));
  killAndRestart();
  EXPECT_THAT(topoNames(), ElementsAre("Core", "Köln-West", "SIX", ""));
}

TEST_F(ServedCommonAttributes, ShowAChangedNativeNameInTheClockView) {
  manager_->setNativeEMSName(object("ManagedElement", "6"), "SIX");
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  manager_->getClockSourceSubnetworkViewInfo(100, nodes.out(), iterator.out());
  ASSERT_EQ(1U, nodes->length());
  EXPECT_STREQ("SIX", nodes[CORBA::ULong{0}].nativeEMSName.in());
}

TEST_F(ServedCommonAttributes, ShowTheUserLabelAndTheNativeNameOfALinkAndKeepThem) {
  EXPECT_THAT(links(), ElementsAre(ClockLink{"Links:SDH/one", "SDH/one", "SDH"},
                                   ClockLink{"Links:SDH/two", "SDH/two", "SDH"}));
  manager_->setUserLabel(object("ClockTopoLinkId", "k1"), "Primär", true);
  manager_->setNativeEMSName(object("ClockTopoLinkId", "k2"), "OTN/2");
  EXPECT_THAT(links(), ElementsAre(ClockLink{"Primär", "SDH/one", "SDH"},
                                   ClockLink{"Links:OTN/2", "OTN/2", "OTN"}));
  killAndRestart();
  EXPECT_THAT(links(), ElementsAre(ClockLink{"Primär", "SDH/one", "SDH"},
                                   ClockLink{"Links:OTN/2", "OTN/2", "OTN"}));
}

TEST_F(ServedCommonAttributes, MergeAdditionalInformationAndKeepIt) {
  const NVSList_T name = object("TopoSubnetwork", "core");
  EXPECT_THAT(merged(name, {{"b", "1"}, {"a", "2"}}), ElementsAre(Pair("b", "1"), Pair("a", "2")));
  killAndRestart();
  EXPECT_THAT(merged(name, {{"c", "3"}, {"b", ""}}), ElementsAre(Pair("a", "2"), Pair("c", "3")));
  EXPECT_THAT(merged(object("ManagedElement", "5"), {}), IsEmpty());
}

TEST_F(ServedCommonAttributes, KeepAnOwner) {
  manager_->setOwner(object("ManagedElement", "5"), "Betrieb");
  EXPECT_THAT(topoNames(), SizeIs(4));
}

TEST_F(ServedCommonAttributes, AreRefusedForUnknownObjects) {
  EXPECT_EQ(Failure(globaldefs::EXCPT_ENTITY_NOT_FOUND, "no object {EMS=E, TopoSubnetwork=x}"),
            failureOfEverySetter(object("TopoSubnetwork", "x")));
  EXPECT_EQ(Failure(globaldefs::EXCPT_ENTITY_NOT_FOUND, "no object {EMS=E, OS=6}"),
            failureOfEverySetter(object("OS", "6")));
}

TEST_F(ServedCommonAttributes, AreRefusedForMalformedNames) {
  EXPECT_EQ(
      Failure(globaldefs::EXCPT_INVALID_INPUT, "malformed name {}: it has 0 pairs instead of 2"),
      failureOfEverySetter(NVSList_T()));
  EXPECT_EQ(Failure(globaldefs::EXCPT_INVALID_INPUT,
                    "malformed name {EMS=E, ManagedElement=-1}: the value of \"ManagedElement\" is "
                    "no number of an object"),
            failureOfEverySetter(object("ManagedElement", "-1")));
}

TEST_F(ServedCommonAttributes, AreRefusedInRequestsOverTheSizeLimit) {
  const std::string text(1024 * 1024, 'x');
  try {
    manager_->setOwner(object("TopoSubnetwork", "core"), text.c_str());
    ADD_FAILURE() << "the request was accepted";
  } catch (const CORBA::SystemException& failure) {
    EXPECT_TRUE(orb::isMessageTooLarge(failure)) << orb::describe(failure);
  }
  EXPECT_THAT(topoNames(), SizeIs(4));
}

TEST_F(ServedCommonAttributes, AreRefusedForHostileNamesAndTheAgentStaysInService) {
  start({"--max-request", "100000000"});
  EXPECT_EQ(globaldefs::EXCPT_INVALID_INPUT,
            failureOfEverySetter(nameOf(Pairs(1000000, {"", ""}))).first);
  EXPECT_EQ(globaldefs::EXCPT_ENTITY_NOT_FOUND,
            failureOfEverySetter(object("TopoSubnetwork", std::string(10000000, 'x'))).first);
  const NVSList_T name = object("TopoSubnetwork", "core");
  const std::string text(10000000, 'x');
  EXPECT_EQ(Failure(globaldefs::EXCPT_INVALID_INPUT,
                    "the owner of {EMS=E, TopoSubnetwork=core} has more than 1048576 bytes"),
            failureOf([&] { manager_->setOwner(name, text.c_str()); }));
  EXPECT_THAT(topoNames(), SizeIs(4));
}

TEST_F(ServedCommonAttributes, AreRefusedWhenAUniqueLabelIsInUse) {
  manager_->setUserLabel(object("ClockTopoLinkId", "k1"), "Trunk", true);
  EXPECT_EQ(
      Failure(globaldefs::EXCPT_USERLABEL_IN_USE,
              "the user label \"Trunk\" is already that of {EMS=E, ClockTopoLinkId=k1}"),
      failureOf([&] { manager_->setUserLabel(object("ClockTopoLinkId", "k2"), "Trunk", true); }));
}

TEST_F(ServedCommonAttributes, AreRefusedForTwoPairsOfOneName) {
  EXPECT_EQ(Failure(globaldefs::EXCPT_INVALID_INPUT,
                    "the additional information of {EMS=E, TopoSubnetwork=core}: pair 2 gives "
                    "\"a\" a second time"),
            failureOf([&] {
              merged(object("TopoSubnetwork", "core"), {{"a", "1"}, {"a", "2"}});
            }));
}

TEST_F(ServedCommonAttributes, ReturnToEachClientItsOwnReason) {
  std::vector<std::thread> clients;
  std::atomic<int> wrong{0};
  for (int i = 0; i < 8; ++i) {
    clients.emplace_back([&, i] {
      const std::string id = "x" + std::to_string(i);
      const std::string reason = "no object {EMS=E, TopoSubnetwork=" + id + "}";
      for (int round = 0; round < 100; ++round) {
        const Failure failure =
            failureOf([&] { manager_->setOwner(object("TopoSubnetwork", id), "x"); });
        wrong += failure.second == reason ? 0 : 1;
      }
    });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  EXPECT_EQ(0, wrong);
}

}  // namespace
}  // namespace integration
