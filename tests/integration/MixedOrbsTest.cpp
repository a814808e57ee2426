// An agent on one ORB and a client on another ORB: the results equal those of a pair on one ORB.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <sstream>

#include "tests/integration/Programs.h"

namespace integration {
namespace {

using nlohmann::json;
using support::Ended;
using testing::ElementsAre;
using testing::HasSubstr;

using Words = std::vector<std::string>;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";
const std::string kOtherBuild = TOPO_OTHER_BUILD;
const Words kFormats = {"table", "json", "csv"};

// Characters of two, three and four bytes, and a character of two code points.
const Words kTexts = {"Zürich – Łódź", "Ωμέγα", "東京ネットワーク", "𝄞 𠀋", "e\u0301"};

Programs otherPrograms() {
  return {kOtherBuild + "/bin/topo-agentd", kOtherBuild + "/bin/topoctl"};
}

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::string joined(const Words& words) {
  std::string text;
  for (const std::string& word : words) {
    text += word + " ";
  }
  return text;
}

// The output of a client, command by command. Messages contain the endpoint of the agent and the
// path of its IOR file, which differ between runs; the transcript replaces both by placeholders.
class Dialogue {
 public:
  Dialogue(const Programs& programs, const Words& options)
      : programs_(programs), agent_(options, ":memory:", "127.0.0.1:0", programs) {}

  // Runs a command that must end with this status.
  void run(const Words& command, int status = 0) {
    runAt({"--ior-file", agent_.iorFile()}, command, status);
  }

  // Runs the command against another object of the agent.
  void runAtKey(const std::string& key, const Words& command, int status) {
    runAt({"--agent", "corbaloc::" + agent_.endpoint() + "/" + key}, command, status);
  }

  // Ends the agent and requires that it logged no error.
  void end() {
    const Ended ended = agent_.stop(SIGTERM);
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
  }

  const Words& said() const { return said_; }

 private:
  void runAt(const Words& agent, const Words& command, int status) {
    const Ended ended = runTopoctl(agent + command, programs_);
    EXPECT_EQ(status, ended.status) << joined(command) << ended.err;
    said_.push_back(joined(command) + "\n" + known(ended.out) + known(ended.err));
  }

  // Replaces the seconds in a status, in each output format.
  static void maskUptime(std::string& text) {
    const std::size_t field = text.find("uptimeSeconds");
    if (field == std::string::npos) {
      return;
    }
    const std::size_t begin = text.find_first_of("0123456789", field);
    const std::size_t end = text.find_first_not_of("0123456789", begin);
    text.replace(begin, end - begin, "SECONDS");
  }

  // The text without the agent's address, IOR file and uptime, which differ between runs.
  std::string known(std::string text) const {
    maskUptime(text);
    for (const std::string& own : {agent_.iorFile(), agent_.endpoint()}) {
      for (std::size_t at = 0; (at = text.find(own)) != std::string::npos;) {
        text.replace(at, own.size(), "AGENT");
      }
    }
    return text;
  }

  const Programs programs_;
  RunningAgent agent_;
  Words said_;
};

// The program of this build; its peer is of the other build.
enum class Own { kAgent, kClient };

void PrintTo(Own own, std::ostream* out) {
  *out << (own == Own::kAgent ? "OwnAgentAndOtherClient" : "OtherAgentAndOwnClient");
}

class MixedOrbs : public testing::TestWithParam<Own> {
 protected:
  void SetUp() override {
    if (kOtherBuild.empty()) {
      GTEST_SKIP() << "set TOPO_OTHER_BUILD to a build of this project on the other ORB";
    }
    const Programs other = otherPrograms();
    for (const std::string& program : {other.agent, other.client}) {
      ASSERT_TRUE(std::filesystem::exists(program)) << program;
    }
  }

  static Programs mixedPrograms() {
    return GetParam() == Own::kAgent ? Programs{ownPrograms().agent, otherPrograms().client}
                                     : Programs{otherPrograms().agent, ownPrograms().client};
  }

  // Requires the same transcript, byte for byte, for pairs on one ORB and on two ORBs.
  static void expectTheSame(const Words& options, const std::function<void(Dialogue&)>& talk) {
    Dialogue own(ownPrograms(), options);
    talk(own);
    own.end();
    for (const Programs& programs : {otherPrograms(), mixedPrograms()}) {
      SCOPED_TRACE(programs.agent + ", " + programs.client);
      Dialogue other(programs, options);
      talk(other);
      other.end();
      ASSERT_EQ(own.said().size(), other.said().size());
      for (std::size_t i = 0; i < own.said().size(); ++i) {
        EXPECT_EQ(own.said()[i], other.said()[i]);
      }
    }
  }

  support::TemporaryDirectory directory_;
};

INSTANTIATE_TEST_SUITE_P(BothWays, MixedOrbs, testing::Values(Own::kAgent, Own::kClient),
                         testing::PrintToStringParamName());

// --- Queries.

void showViews(Dialogue& dialogue, const Words& options) {
  for (const Words& view :
       {Words{"topo"}, {"protect"}, {"below", "Europe"}, {"clocks"}, {"clock-links"}}) {
    dialogue.run(options + view);
  }
}

TEST_P(MixedOrbs, ShowTheSameViewsForEveryFormatAndBatchSize) {
  for (const Words& options : {Words{}, {"--test-switch"}}) {
    expectTheSame(Words{"--network", kBackbone} + options, [](Dialogue& dialogue) {
      for (const char* howMany : {"1", "7", "1000"}) {
        for (const std::string& format : kFormats) {
          showViews(dialogue, {"--how-many", howMany, "--format", format});
        }
        dialogue.run({"--how-many", howMany, "tree"});
      }
    });
  }
}

TEST_P(MixedOrbs, ShowTheSameCapabilitiesAndStatusInEveryFormat) {
  expectTheSame({"--network", kBackbone}, [](Dialogue& dialogue) {
    for (const std::string& format : kFormats) {
      dialogue.run({"--format", format, "capabilities"});
      dialogue.run({"--format", format, "status"});
    }
  });
}

TEST_P(MixedOrbs, ShowAnEmptyNetworkAlike) {
  expectTheSame({}, [](Dialogue& dialogue) {
    for (const std::string& format : kFormats) {
      for (const char* view : {"topo", "protect", "clocks", "clock-links"}) {
        dialogue.run({"--format", format, view});
      }
    }
    dialogue.run({"tree"});
  });
}

TEST_P(MixedOrbs, SetEveryAttributeAlike) {
  expectTheSame({"--network", kBackbone}, [](Dialogue& dialogue) {
    for (const std::string& format : kFormats) {
      const Words set = {"--format", format, "set"};
      dialogue.run(set + Words{"user-label", "ClockTopoLinkId=clk-1", format + " Primär"});
      dialogue.run(set + Words{"user-label", "ClockTopoLinkId=clk-2", format, "--unique"});
      dialogue.run(set + Words{"owner", "ManagedElement=5", "Betrieb " + format});
      dialogue.run(set + Words{"native-name", "TopoSubnetwork=Germany", "Deutschland " + format});
      dialogue.run(set + Words{"native-name", "ManagedElement=32", ""});
      dialogue.run(set + Words{"info", "TopoSubnetwork=Europe", format + "=Größe; \"=\" 大"});
      dialogue.run(set +
                   Words{"info", "--name", "EMS=Backbone", "--name", "ManagedElement=1", "a=b"});
      dialogue.run(set + Words{"info", "TopoSubnetwork=Europe", "table="});
      showViews(dialogue, {"--how-many", "7", "--format", format});
    }
  });
}

// --- Changes.

TEST_P(MixedOrbs, ChangeTheNetworkAlike) {
  expectTheSame({"--ems-name", "E"}, [](Dialogue& dialogue) {
    for (const std::string& format : kFormats) {
      const Words options = {"--format", format};
      const Words create = options + Words{"node", "create"};
      dialogue.run(create + Words{"top", "--name", "Top", "--params", "-2147483648,2147483647"});
      dialogue.run(create + Words{"core", "--name", "Kern 核", "--parent", "top", "--attribute",
                                  "location=Zürich||3", "--attribute", "a="});
      dialogue.run(create +
                   Words{"NE=6", "--name", "Six", "--parent", "core", "--kind", "element"});
      dialogue.run(options + Words{"node", "rename", "core", "Nucleus " + format});
      dialogue.run(options + Words{"topo"});
      dialogue.run(options + Words{"status"});
      dialogue.run(options + Words{"node", "delete", "top"});
      dialogue.run(options + Words{"topo"});
    }
  });
}

TEST_P(MixedOrbs, ImportAlike) {
  for (const std::string& format : kFormats) {
    expectTheSame({}, [&format](Dialogue& dialogue) {
      dialogue.run({"--format", format, "import", kBackbone});
      showViews(dialogue, {"--format", format});
    });
  }
}

TEST_P(MixedOrbs, SetTheTestSwitchAndReloadTheModuleAlike) {
  expectTheSame({"--network", kBackbone}, [](Dialogue& dialogue) {
    for (const Words& command : {Words{"test-switch", "on"},
                                 {"module", "reload"},
                                 {"test-switch", "off"},
                                 {"module", "reload"}}) {
      dialogue.run(command);
      dialogue.run({"--format", "json", "status"});
      showViews(dialogue, {"--how-many", "7", "--format", "json"});
    }
  });
}

// --- Refused requests.

TEST_P(MixedOrbs, RefuseInvalidRequestsToTheManagerAlike) {
  expectTheSame({"--network", kBackbone}, [](Dialogue& dialogue) {
    dialogue.run({"below", "none such"}, 3);
    dialogue.run({"below", "--name", "ÄÖ=ü", "--name", "=", "--name", "d=e"}, 3);
    dialogue.run({"below", std::string(100000, 'x')}, 3);
    dialogue.run({"set", "owner", "TopoSubnetwork=京", "x"}, 3);
    dialogue.run({"set", "owner", "--name", "EMS=E", "x"}, 3);
    dialogue.run({"set", "native-name", "ManagedElement=-1", "x"}, 3);
    dialogue.run({"set", "native-name", "TopoSubnetwork=Europe", "no UTF-8: \xff"}, 3);
    dialogue.run({"set", "user-label", "ClockTopoLinkId=clk-1", "Trünk 主"});
    dialogue.run({"set", "user-label", "ClockTopoLinkId=clk-2", "Trünk 主", "--unique"}, 3);
  });
}

TEST_P(MixedOrbs, RefuseInvalidRequestsToTheConsoleAlike) {
  const std::string broken = directory_.write("broken.json", R"({"format": "topo-network/1", )");
  const std::string unknown = directory_.write("ünknown.json", R"({"format": "topo-network/9"})");
  expectTheSame({"--network", kBackbone}, [&](Dialogue& dialogue) {
    dialogue.run({"node", "create", "Europe", "--name", "x"}, 3);
    dialogue.run({"node", "create", "x", "--name", "x", "--parent", "nö such"}, 3);
    dialogue.run({"node", "create", "x", "--name", "\xff"}, 3);
    dialogue.run({"node", "delete", "京"}, 3);
    dialogue.run({"node", "rename", "nö", "x"}, 3);
    dialogue.run({"import", broken}, 3);
    dialogue.run({"import", unknown}, 3);
    dialogue.run({"import", kBackbone}, 3);
    dialogue.run({"import", directory_.file("none.json")}, 1);
    dialogue.run({"topo"});
  });
}

TEST_P(MixedOrbs, FailAlikeAtWrongAndMissingObjects) {
  expectTheSame({"--no-console"}, [](Dialogue& dialogue) {
    dialogue.run({"test-switch", "on"}, 2);
    dialogue.runAtKey("Nothing", {"topo"}, 2);
    dialogue.runAtKey("TopoAgentSession", {"topo"}, 4);
    dialogue.run({"below", "core"}, 4);
    dialogue.run({"set", "owner", "TopoSubnetwork=core", "x"}, 4);
  });
}

// The agent's ORB decides whether the client learns that the reply is too large.
TEST_P(MixedOrbs, NameTheOptionToRaiseWhenABatchExceedsTheAgentsLimit) {
  json content = {{"format", "topo-network/1"}, {"topoNodes", json::array()}};
  for (int i = 0; i < 200; ++i) {
    content["topoNodes"].push_back({{"id", "n" + std::to_string(i)}, {"name", "a node"}});
  }
  const std::string file = directory_.write("network.json", content.dump());
  const RunningAgent agent({"--network", file, "--max-message", "8192"}, ":memory:", "127.0.0.1:0",
                           mixedPrograms());
  const Words command = {"--ior-file", agent.iorFile(), "--format", "json", "topo", "--how-many"};
  const Ended tooLarge = runTopoctl(command + Words{"1000"}, mixedPrograms());
  EXPECT_EQ(4, tooLarge.status);
  EXPECT_EQ("", tooLarge.out);
  EXPECT_THAT(tooLarge.err, HasSubstr("--max-message"));
  const Ended inBatches = runTopoctl(command + Words{"10"}, mixedPrograms());
  EXPECT_EQ(0, inBatches.status) << inBatches.err;
  EXPECT_EQ(200U, json::parse(inBatches.out).size());
}

// --- Texts.

json recordOf(const json& records, const std::string& id) {
  for (const json& record : records) {
    if (record["name"].back()["value"] == id) {
      return record;
    }
  }
  return {};
}

// Sends a text in every text argument and expects the same text in the replies.
void expectUnchanged(const Words& agent, const std::string& text, const Programs& programs) {
  const auto ask = [&](const Words& command) {
    const Ended ended = runTopoctl(agent + Words{"--format", "json"} + command, programs);
    EXPECT_EQ(0, ended.status) << ended.err;
    return ended.out;
  };
  const std::string id = "id " + text;
  ask({"node", "create", id, "--name", text, "--attribute", "location=" + text + "||3"});
  ask({"node", "create", "child " + text, "--name", text, "--parent", id});
  const json created = recordOf(json::parse(ask({"topo"})), id);
  EXPECT_EQ(text, created["nativeEMSName"]);
  EXPECT_THAT(created["additionalInfo"].dump(), HasSubstr(text));
  EXPECT_EQ(id, json::parse(ask({"below", id})).at(0)["relatedName"][1]["value"]);
  ask({"set", "native-name", "TopoSubnetwork=" + id, text + text});
  EXPECT_EQ(text + text, recordOf(json::parse(ask({"topo"})), id)["nativeEMSName"]);
  const json info = json::parse(ask({"set", "info", "TopoSubnetwork=" + id, text + "=" + text}));
  EXPECT_EQ(json({{{"name", text}, {"value", text}}}), info);
  ask({"node", "delete", id});
  const Ended refused = runTopoctl(agent + Words{"node", "delete", id}, programs);
  EXPECT_EQ(3, refused.status);
  EXPECT_THAT(refused.err, HasSubstr(id));
}

TEST_P(MixedOrbs, TransportTextsBeyondAsciiUnchangedForEveryKindOfReference) {
  const Programs programs = mixedPrograms();
  const NamingService naming;
  const RunningAgent agent({"--test-switch", "--naming", naming.reference()},
                           ":memory:", "127.0.0.1:0", programs);
  for (const Words& way : {Words{"--ior-file", agent.iorFile()},
                           {"--agent", agent.corbaloc()},
                           {"--agent", "corbaname::" + naming.endpoint() + "#TopoManagement"}}) {
    for (const std::string& text : kTexts) {
      SCOPED_TRACE(way.back() + " " + text);
      expectUnchanged(way, text, programs);
    }
  }
}

// --- Notifications.

void change(const RunningAgent& agent, const Programs& programs, const Words& command) {
  const Ended ended = runTopoctl(Words{"--ior-file", agent.iorFile()} + command, programs);
  EXPECT_EQ(0, ended.status) << ended.err;
}

// Creates one more node at the end, so that duplicates of earlier notifications would be seen.
void makeChanges(const RunningAgent& agent, const Programs& programs) {
  change(agent, programs, {"node", "create", "top", "--name", "Top", "--params", "3,-4"});
  change(agent, programs, {"node", "create", "core", "--name", "Kern 核", "--parent", "top"});
  change(agent, programs, {"node", "rename", "core", "Zürich 主"});
  change(agent, programs, {"set", "native-name", "TopoSubnetwork=top", "Spitze"});
  change(agent, programs, {"node", "delete", "top"});
  change(agent, programs, {"node", "create", "last", "--name", "Last"});
}

// The notifications of the changes, without ids and times, which differ between runs.
std::vector<json> watched(const Programs& programs) {
  RunningAgent agent({"--ems-name", "E"}, ":memory:", "127.0.0.1:0", programs);
  Watcher watcher(agent, programs);
  EXPECT_EQ("watching", watcher.first()["event"]);
  makeChanges(agent, programs);
  std::vector<json> lines = watcher.next(7);
  std::uint64_t last = 0;
  for (json& line : lines) {
    const std::uint64_t id = std::stoull(line.value("notificationId", "0"));
    EXPECT_LT(last, id);
    last = id;
    line.erase("notificationId");
    line.erase("emsTime");
  }
  EXPECT_EQ(0, watcher.stop().status);
  const Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
  return lines;
}

TEST_P(MixedOrbs, NotifyCreationRenameAndDeletionOnceAndInOrder) {
  const std::vector<json> lines = watched(mixedPrograms());
  Words heard;
  for (const json& line : lines) {
    heard.push_back(line["event"].get<std::string>() + " " +
                    line["objectName"][1]["value"].get<std::string>());
  }
  EXPECT_THAT(heard, ElementsAre("creation top", "creation core", "change core", "change top",
                                 "deletion core", "deletion top", "creation last"));
  EXPECT_EQ("Kern 核", lines[1]["object"]["nativeEMSName"]);
  EXPECT_EQ("Zürich 主", lines[2]["attributes"][0]["value"]);
  EXPECT_EQ(watched(ownPrograms()), lines);
  EXPECT_EQ(watched(otherPrograms()), lines);
}

// The lines for people, without the leading time.
std::string watchedByPeople(const Programs& programs) {
  const RunningAgent agent({"--ems-name", "E"}, ":memory:", "127.0.0.1:0", programs);
  support::Process watch(programs.client, {"--ior-file", agent.iorFile(), "watch", "--count", "7"});
  watch.readLine();
  makeChanges(agent, programs);
  const Ended ended = watch.wait();
  EXPECT_EQ(0, ended.status) << ended.err;
  std::istringstream lines(ended.out);
  std::string timeless;
  for (std::string line; std::getline(lines, line);) {
    timeless += line.substr(line.find("Z  ")) + "\n";
  }
  return timeless;
}

TEST_P(MixedOrbs, PrintTheSameLinesForPeople) {
  const std::string lines = watchedByPeople(mixedPrograms());
  EXPECT_THAT(lines, HasSubstr("Z  created  TopoSubnetwork=core  \"Kern 核\"\n"));
  EXPECT_EQ(watchedByPeople(ownPrograms()), lines);
  EXPECT_EQ(watchedByPeople(otherPrograms()), lines);
}

TEST_P(MixedOrbs, PrintChangesMadeDuringADisconnection) {
  const Programs programs = mixedPrograms();
  const std::string endpoint = quietEndpoint();
  const std::string store = directory_.file("store.db");
  const auto start = [&](const std::string& where) {
    return std::make_unique<RunningAgent>(Words{"--ems-name", "E", "--create"}, store, where,
                                          programs);
  };
  auto agent = start(endpoint);
  support::Process watch(programs.client,
                         {"--agent", agent->corbaloc(), "--format", "json", "watch"});
  EXPECT_EQ("watching", json::parse(watch.readLine())["event"]);
  change(*agent, programs, {"node", "create", "core", "--name", "Core"});
  EXPECT_EQ("creation", json::parse(watch.readLine())["event"]);
  EXPECT_EQ(SIGKILL, agent->stop(SIGKILL).signal);
  EXPECT_EQ("disconnected", json::parse(watch.readLine())["event"]);
  {
    const auto elsewhere = start("127.0.0.1:0");
    change(*elsewhere, programs, {"node", "rename", "core", "Zürich 主"});
    EXPECT_EQ(0, elsewhere->stop(SIGTERM).status);
  }
  agent = start(endpoint);
  json line;
  do {
    line = json::parse(watch.readLine());
  } while (!line.value("resync", false));
  EXPECT_EQ("Zürich 主", line["attributes"][0]["value"]);
  EXPECT_EQ("watching", json::parse(watch.readLine())["event"]);
  change(*agent, programs, {"node", "delete", "core"});
  do {  // a gap may precede the creation
    line = json::parse(watch.readLine());
  } while (line["event"] == "lost");
  EXPECT_EQ("deletion", line["event"]);
  watch.send(SIGINT);
  EXPECT_EQ(0, watch.wait().status);
}

}  // namespace
}  // namespace integration
