// The clients of examples/client with a real agent, as docs/clients.md describes them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/integration/Programs.h"

namespace integration {
namespace {

using nlohmann::json;
using support::Ended;
using testing::HasSubstr;
using testing::StartsWith;

using Words = std::vector<std::string>;

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Runs an example client to its end, with the arguments after the agent's address.
Ended runCpp(const RunningAgent& agent, const Words& arguments) {
  return support::run(TOPO_EXAMPLE_CLIENT, Words{agent.endpoint()} + arguments);
}

Ended runTcl(const RunningAgent& agent, const Words& arguments) {
  return support::run(TOPO_TCLSH, Words{TOPO_EXAMPLE_SCRIPT, agent.iorFile()} + arguments,
                      {"LC_ALL=C.UTF-8"});
}

Words linesOf(const std::string& text) {
  std::istringstream stream(text);
  Words lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// The value of "NAME=VALUE" in a line that watch prints.
std::string fieldOf(const std::string& line, const std::string& name) {
  const std::size_t start = line.find(name + '=');
  return start == std::string::npos ? ""
                                    : line.substr(start + name.size() + 1,
                                                  line.find(' ', start) - start - name.size() - 1);
}

// The sample network has more nodes than a batch of the example clients.
class ExampleClients : public testing::Test {
 protected:
  Words expectedList() const {
    Words lines;
    for (const json& node : records(agent_, {"topo"})) {
      const json& object = node["name"][1];
      lines.push_back(node["name"][0]["value"].get<std::string>() + "  " +
                      object["name"].get<std::string>() + '=' + object["value"].get<std::string>() +
                      "  " + node["nativeEMSName"].get<std::string>());
    }
    return lines;
  }

  std::string labelOfFirstLink() const { return records(agent_, {"clock-links"})[0]["userLabel"]; }

  void createNode(const std::string& id) const {
    const Ended ended =
        runTopoctl({"--ior-file", agent_.iorFile(), "node", "create", id, "--name", "Node"});
    ASSERT_EQ(0, ended.status) << ended.err;
  }

  RunningAgent agent_{{"--network", TOPO_NETWORKS "/backbone.json"}};
};

const Words kSetLabel = {"label", "Backbone", "ClockTopoLinkId", "clk-1", "10 kΩ"};
const Words kSetMissing = {"label", "Backbone", "ManagedElement", "999", "none"};

TEST_F(ExampleClients, CppClientListsAllBatchesOfTheTopology) {
  const Ended ended = runCpp(agent_, {"list"});
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ(expectedList(), linesOf(ended.out));
}

TEST_F(ExampleClients, CppClientSetsALabelBeyondLatin1) {
  const Ended ended = runCpp(agent_, kSetLabel);
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ("10 kΩ", labelOfFirstLink());
}

TEST_F(ExampleClients, CppClientWithoutUtf8AsNativeCodeSetStoresAnotherText) {
  EXPECT_EQ(0, runCpp(agent_, kSetLabel + Words{"-ORBnativeCharCodeSet", "ISO-8859-1"}).status);
  EXPECT_EQ("10 kÎ©", labelOfFirstLink());
}

TEST_F(ExampleClients, CppClientWithoutUtf8AsDefaultCodeSetCannotSendATextBeyondLatin1) {
  const Ended ended = runCpp(agent_, kSetLabel + Words{"-ORBdefaultCharCodeSet", "ISO-8859-1"});
  EXPECT_EQ(2, ended.status);
  EXPECT_EQ("DATA_CONVERSION\n", ended.err);
}

TEST_F(ExampleClients, CppClientWithoutUtf8AsDefaultCodeSetLosesTheReplyWithATextBeyondLatin1) {
  runTopoctl({"--ior-file", agent_.iorFile(), "node", "rename", "Europe", "10 kΩ"});
  const Ended ended = runCpp(agent_, {"list", "-ORBdefaultCharCodeSet", "ISO-8859-1"});
  EXPECT_EQ(2, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("COMM_FAILURE"));
  EXPECT_EQ(0, runCpp(agent_, {"list"}).status);
}

TEST_F(ExampleClients, CppClientPrintsTheReasonOfARefusal) {
  const Ended ended = runCpp(agent_, kSetMissing);
  EXPECT_EQ(3, ended.status);
  EXPECT_EQ("refused (5): no object {EMS=Backbone, ManagedElement=999}\n", ended.err);
}

TEST_F(ExampleClients, CppClientPrintsNotificationsAndTheGapSinceTheLastId) {
  const Words watch = {agent_.endpoint(), "-ORBendPoint", "giop:tcp:127.0.0.1:", "watch"};
  std::string lastId;
  {
    support::Process client(TOPO_EXAMPLE_CLIENT, watch);
    ASSERT_EQ("subscribed", client.readLine());
    createNode("a");
    const std::string line = client.readLine();
    EXPECT_THAT(line, StartsWith("NT_OBJECT_CREATION"));
    EXPECT_THAT(line, HasSubstr("TopoSubnetwork=a"));
    lastId = fieldOf(line, "notificationId");
  }
  createNode("b");
  createNode("c");
  support::Process client(TOPO_EXAMPLE_CLIENT, watch + Words{lastId});
  Words lines = {client.readLine(), client.readLine()};  // in any order: two threads print
  std::sort(lines.begin(), lines.end());
  EXPECT_THAT(lines[0], StartsWith("NT_EVENTS_LOST"));
  EXPECT_LT(lastId, fieldOf(lines[0], "firstLostId"));
  EXPECT_LT(fieldOf(lines[0], "firstLostId"), fieldOf(lines[0], "lastLostId"));
  EXPECT_EQ("subscribed", lines[1]);
}

TEST_F(ExampleClients, TclClientListsAllBatchesOfTheTopology) {
  const Ended ended = runTcl(agent_, {"list"});
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ(expectedList(), linesOf(ended.out));
}

TEST_F(ExampleClients, TclClientSetsALabelBeyondLatin1) {
  const Ended ended = runTcl(agent_, kSetLabel);
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ("10 kΩ", labelOfFirstLink());
}

TEST_F(ExampleClients, TclClientPrintsTheReasonOfARefusal) {
  const Ended ended = runTcl(agent_, kSetMissing);
  EXPECT_EQ(1, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("EXCPT_ENTITY_NOT_FOUND"));
  EXPECT_THAT(ended.err, HasSubstr("no object {EMS=Backbone, ManagedElement=999}"));
}

}  // namespace
}  // namespace integration
