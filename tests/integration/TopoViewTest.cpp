// Loads network files and reads the views over IIOP.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <pugixml.hpp>
#include <set>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"
#include "tests/integration/Programs.h"

namespace integration {
namespace {

using nlohmann::json;
using support::Ended;
using support::TemporaryDirectory;
using testing::ElementsAre;
using testing::SizeIs;

json pair(const std::string& name, const std::string& value) {
  return {{"name", name}, {"value", value}};
}

json elementName(const std::string& ems, int number) {
  return json::array({pair("EMS", ems), pair("ManagedElement", std::to_string(number))});
}

json subnetworkName(const std::string& ems, const std::string& id) {
  return json::array({pair("EMS", ems), pair("TopoSubnetwork", id)});
}

// --- Networks of the Topology Zoo.

std::vector<std::string> zooNetworks() {
  std::vector<std::string> files;
  if (std::filesystem::is_directory(TOPO_ZOO)) {
    for (const auto& entry : std::filesystem::directory_iterator(TOPO_ZOO)) {
      if (entry.path().extension() == ".graphml") {
        files.push_back(entry.path().filename());
      }
    }
  }
  return files;
}

// The expected records: one subnetwork, one for each country, one element for each node.
std::size_t expectedRecords(const std::string& file) {
  pugi::xml_document document;
  document.load_file(file.c_str());
  const pugi::xml_node root = document.child("graphml");
  std::string countryKey;
  for (const pugi::xml_node key : root.children("key")) {
    if (key.attribute("attr.name").value() == std::string("Country") &&
        key.attribute("for").value() == std::string("node")) {
      countryKey = key.attribute("id").value();
    }
  }
  std::set<std::string> countries;
  std::size_t nodes = 0;
  for (const pugi::xml_node node : root.child("graph").children("node")) {
    ++nodes;
    const std::string country =
        node.find_child_by_attribute("data", "key", countryKey.c_str()).text().get();
    if (!country.empty()) {
      countries.insert(country);
    }
  }
  return 1 + countries.size() + nodes;
}

TEST(ZooNetworks, GiveOneRecordForTheGraphEachCountryAndEachNode) {
  const std::vector<std::string> files = zooNetworks();
  if (files.empty()) {
    GTEST_SKIP() << "no networks in " << TOPO_ZOO;
  }
  for (const std::string& file : files) {
    const std::string path = std::string(TOPO_ZOO) + "/" + file;
    const RunningAgent agent({"--network", path});
    const json view = records(agent, {"topo"});
    EXPECT_THAT(view, SizeIs(expectedRecords(path))) << file;
    std::set<std::string> names;
    for (const json& record : view) {
      names.insert(record["name"].dump());
    }
    EXPECT_THAT(names, SizeIs(view.size())) << file << " has a record twice";
  }
}

TEST(ZooNetworks, GiveTheSameTextForEveryBatchSize) {
  const std::vector<std::string> files = zooNetworks();
  if (files.empty()) {
    GTEST_SKIP() << "no networks in " << TOPO_ZOO;
  }
  for (const std::string& file : files) {
    const RunningAgent agent({"--network", std::string(TOPO_ZOO) + "/" + file});
    std::set<std::string> texts;
    for (const char* howMany : {"1", "7", "100000"}) {
      const Ended ended = runTopoctl(
          {"--agent", agent.corbaloc(), "--format", "json", "--how-many", howMany, "topo"});
      EXPECT_EQ(0, ended.status) << file << ": " << ended.err;
      EXPECT_EQ("", ended.err);
      texts.insert(ended.out);
    }
    EXPECT_THAT(texts, SizeIs(1)) << file;
  }
}

// --- Networks made for these tests.

class TopoView : public testing::Test {
 protected:
  std::string network(const json& content) const {
    return directory_.write("network.json", content.dump());
  }

  TemporaryDirectory directory_;
};

json threeNodesAndThreeElements() {
  return {{"format", "topo-network/1"},
          {"ems", "E"},
          {"topoNodes",
           {{{"id", "core"}, {"parent", "QNMAP_PHY_SUBMAP"}, {"name", "Core"}},
            {{"id", "west"}, {"parent", "core"}, {"name", "West"}, {"params", {1, -2}}},
            {{"id", "NE=6"}, {"parent", "west"}, {"name", "Six"}, {"type", 1}}}},
          {"networkElements",
           {{{"number", 5}, {"name", "Five"}},
            {{"number", 6}, {"name", "Six"}, {"shown", true}},
            {{"number", 7}, {"name", "Seven"}}}}};
}

json record(const json& name, const std::string& label, int type, int param1, int param2,
            const json& related) {
  return {{"name", name},
          {"nativeEMSName", label},
          {"nodeType", type},
          {"nodeParam1", param1},
          {"nodeParam2", param2},
          {"relatedName", related},
          {"additionalInfo", json::array()}};
}

TEST_F(TopoView, ShowsTopologyNodesThenTheElementsThatTheTopologyDoesNotShow) {
  const RunningAgent agent({"--network", network(threeNodesAndThreeElements())});
  const json none = json::array();
  EXPECT_THAT(records(agent, {"topo"}),
              ElementsAre(record(subnetworkName("E", "core"), "Core", 1, 0, 0,
                                 subnetworkName("E", "QNMAP_PHY_SUBMAP")),
                          record(subnetworkName("E", "west"), "West", 1, 1, -2,
                                 subnetworkName("E", "core")),
                          record(elementName("E", 6), "Six", 0, 0, 0, subnetworkName("E", "west")),
                          record(elementName("E", 5), "Five", 0, 100, 100, none),
                          record(elementName("E", 7), "Seven", 0, 100, 100, none)));
}

TEST_F(TopoView, ShowsCompleteRecordsBelowASubnetworkAtAnyDepth) {
  const RunningAgent agent({"--network", network(threeNodesAndThreeElements())});
  const json west =
      record(subnetworkName("E", "west"), "West", 1, 1, -2, subnetworkName("E", "core"));
  const json six = record(elementName("E", 6), "Six", 0, 0, 0, subnetworkName("E", "west"));
  for (const char* const howMany : {"0", "1", "2", "1000"}) {
    EXPECT_THAT(records(agent, {"below", "core", "--how-many", howMany}), ElementsAre(west, six));
  }
  EXPECT_THAT(records(agent, {"below", "west"}), ElementsAre(six));
  const Ended refused = runTopoctl({"--ior-file", agent.iorFile(), "below", "Six"});
  EXPECT_EQ(3, refused.status);
  EXPECT_THAT(refused.err, testing::HasSubstr("please input topoSubnetwork!"));
}

TEST_F(TopoView, CarriesDescriptivePairsAndNoFurtherElementsInTestMode) {
  json content = threeNodesAndThreeElements();
  content["topoNodes"][1]["attributes"] = json::array({json::array({"location", "Hall4||3"})});
  const RunningAgent agent({"--network", network(content), "--test-switch"});
  const json view = records(agent, {"topo"});
  ASSERT_THAT(view, SizeIs(3));
  const char* vendor = "KORVANE TECHNOLOGIES CO., LTD";
  EXPECT_THAT(view[1]["additionalInfo"],
              ElementsAre(pair("Vendor", vendor), pair("userLabel", ""), pair("Location", "Hall4"),
                          pair("TopoType", "Ring"), pair("Vendor", vendor),
                          pair("SubnetworkBandWidth", ""), pair("layerRate", "")));
  EXPECT_THAT(view[2]["additionalInfo"], ElementsAre(pair("Vendor", vendor)));
}

TEST_F(TopoView, OmitsNodesOfUnknownTypes) {
  json content = threeNodesAndThreeElements();
  content["topoNodes"][1]["type"] = 4294967295U;
  const RunningAgent agent({"--network", network(content)});
  EXPECT_THAT(records(agent, {"topo"}), SizeIs(4));
}

TEST_F(TopoView, IsEmptyWithoutANetwork) {
  const RunningAgent agent({});
  EXPECT_EQ(json::array(), records(agent, {"topo"}));
}

TEST_F(TopoView, UsesTheEmsNameOfTheCommandLine) {
  const RunningAgent agent(
      {"--network", network(threeNodesAndThreeElements()), "--ems-name", "Zürich/1"});
  EXPECT_EQ(subnetworkName("Zürich/1", "core"), records(agent, {"topo"})[0]["name"]);
}

TEST_F(TopoView, ShowsTheSampleNetworkInEveryFormat) {
  const RunningAgent agent({"--network", std::string(TOPO_NETWORKS) + "/backbone.json"});
  for (const char* format : {"table", "json", "csv"}) {
    const Ended ended = runTopoctl({"--ior-file", agent.iorFile(), "--format", format, "topo"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("", ended.err);
    EXPECT_THAT(ended.out, testing::HasSubstr("Frankfurt")) << format;
  }
}

TEST_F(TopoView, ReportsTheSevenCapabilities) {
  const RunningAgent agent({});
  std::vector<std::string> names;
  for (const json& capability : records(agent, {"capabilities"})) {
    names.push_back(capability["name"]);
  }
  const std::string prefix = "TopoManagementManager::TopoMgr_I::";
  EXPECT_THAT(
      names,
      ElementsAre(prefix + "setUserLabel", prefix + "setOwner", prefix + "setNativeEMSName",
                  prefix + "getTopoSubnetworkViewInfo", prefix + "getProtectSubnetworkViewInfo",
                  prefix + "getViewInfoByTopoSubnetwork", prefix + "getCapabilities"));
}

TEST_F(TopoView, NamesTheOptionToRaiseWhenABatchExceedsTheMessageLimit) {
  json content = {{"format", "topo-network/1"}, {"topoNodes", json::array()}};
  for (int i = 0; i < 200; ++i) {
    content["topoNodes"].push_back({{"id", "n" + std::to_string(i)}, {"name", "a node"}});
  }
  const RunningAgent agent({"--network", network(content), "--max-message", "8192"});
  const Ended tooLarge = runTopoctl({"--ior-file", agent.iorFile(), "--how-many", "1000", "topo"});
  EXPECT_EQ(4, tooLarge.status);
  EXPECT_EQ("", tooLarge.out);
  EXPECT_THAT(tooLarge.err, testing::HasSubstr("--max-message"));
  EXPECT_THAT(records(agent, {"--how-many", "10", "topo"}), SizeIs(200));
}

// --- A CORBA client, for calls that topoctl does not make.

TEST_F(TopoView, EndsAnIteratorWithItsLastBatch) {
  const RunningAgent agent({"--network", network(threeNodesAndThreeElements())});
  const auto client = orb::startClient({});
  const CORBA::Object_var object = client->get()->string_to_object(agent.reference().c_str());
  const TopoManagementManager::TopoMgr_I_var manager =
      TopoManagementManager::TopoMgr_I::_narrow(object);
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(2, nodes.out(), iterator.out());
  EXPECT_EQ(2U, nodes->length());
  EXPECT_EQ(3U, iterator->getLength());
  EXPECT_TRUE(iterator->next_n(0, nodes.out()));
  EXPECT_EQ(0U, nodes->length());
  EXPECT_TRUE(iterator->next_n(2, nodes.out()));
  EXPECT_EQ(3U, iterator->getLength());
  EXPECT_FALSE(iterator->next_n(7, nodes.out()));
  EXPECT_EQ(1U, nodes->length());
  EXPECT_THROW(iterator->next_n(1, nodes.out()), CORBA::OBJECT_NOT_EXIST);
}

}  // namespace
}  // namespace integration
