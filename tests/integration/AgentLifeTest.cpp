// Start, stop and restart of the agent, and refused starts.

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "orb/idl/TopoManagementManager.h"
#include "orb/naming.h"
#include "orb/orb.h"
#include "tests/integration/Programs.h"
#include "tests/support/DamagedStore.h"
#include "tests/support/NotifySocket.h"

namespace integration {
namespace {

using nlohmann::json;
using support::Ended;
using support::TemporaryDirectory;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";

// A loopback port in use.
class TakenPort {
 public:
  TakenPort() : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* raw = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    bind(socket_, raw, size);
    listen(socket_, 1);
    getsockname(socket_, raw, &size);
    port_ = ntohs(address.sin_port);
  }
  ~TakenPort() { close(socket_); }

  TakenPort(const TakenPort&) = delete;
  TakenPort& operator=(const TakenPort&) = delete;

  std::string endpoint() const { return "127.0.0.1:" + std::to_string(port_); }

 private:
  const int socket_;
  int port_ = 0;
};

class AgentLife : public testing::Test {
 protected:
  // Runs an agent whose start must fail; returns its line on standard error.
  std::string refusal(const std::vector<std::string>& arguments) {
    const Ended ended = runAgent(arguments);
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ(1, std::count(ended.err.begin(), ended.err.end(), '\n')) << ended.err;
    EXPECT_THAT(ended.err, StartsWith("topo-agentd: "));
    return ended.err;
  }

  std::vector<std::string> onStore(const std::vector<std::string>& more) const {
    std::vector<std::string> all = {"--endpoint", "127.0.0.1:0", "--store", store(), "--create"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  std::string store() const { return directory_.file("network.db"); }

  TemporaryDirectory directory_;
};

TEST_F(AgentLife, PrintsOneLineWithEndpointReferenceAndNumberOfNodesWhenReady) {
  RunningAgent agent({"--network", kBackbone});
  EXPECT_THAT(agent.readyLine(),
              MatchesRegex("topo-agentd ready: endpoint 127.0.0.1:[0-9]+, reference "
                           "corbaloc:iiop:1.2@127.0.0.1:[0-9]+/TopoManagement, [0-9]+ nodes"));
  EXPECT_EQ("", agent.stop(SIGTERM).out);
}

TEST_F(AgentLife, ServesTopoctlOverAUnixSocket) {
  const std::string endpoint = "unix:" + directory_.file("agent.sock");
  RunningAgent agent({"--network", kBackbone, "--endpoint", endpoint});
  EXPECT_THAT(agent.readyLine(), testing::EndsWith(" nodes, also at " + endpoint));
  const Ended called =
      support::Process(ownPrograms().client, {"--agent", endpoint, "capabilities"}).wait();
  EXPECT_EQ(0, called.status) << called.err;
  EXPECT_EQ("", agent.stop(SIGTERM).out);
  EXPECT_FALSE(std::filesystem::exists(directory_.file("agent.sock")));
}

// Whether a connection to "HOST:PORT" is accepted.
bool isListenedOn(const std::string& endpoint) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port =
      htons(static_cast<std::uint16_t>(std::stoul(endpoint.substr(endpoint.rfind(':') + 1))));
  const int client = socket(AF_INET, SOCK_STREAM, 0);
  const bool connected =
      connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  close(client);
  return connected;
}

TEST_F(AgentLife, IgnoresSettingsOfTheOrbInItsEnvironment) {
  const std::string unwanted = quietEndpoint();
  support::Process agent(
      ownPrograms().agent,
      {"--endpoint", "127.0.0.1:0", "--store", ":memory:", "--module", TOPO_MODULE},
      {"ORBendPoint=giop:tcp:" + unwanted, "ORBgiopMaxMsgSize=8192", "ORBtraceLevel=40"});
  EXPECT_THAT(agent.readLine(), StartsWith("topo-agentd ready: endpoint 127.0.0.1:"));
  EXPECT_FALSE(isListenedOn(unwanted));
  agent.send(SIGTERM);
  const Ended ended = agent.wait();
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
}

TEST_F(AgentLife, EndsCleanlyOnSigterm) {
  RunningAgent agent({"--network", kBackbone});
  const Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
}

TEST_F(AgentLife, LogsStartAndStopAtLevelTwo) {
  RunningAgent agent({"--network", kBackbone, "--log-level", "2"}, store());
  EXPECT_THAT(
      agent.stop(SIGTERM).err,
      testing::ContainsRegex("starts to serve: version [0-9.]+, endpoint 127.0.0.1:[0-9]+, store "
                             ".*network.db, [0-9]+ nodes, module .*libzu_corba_topo.so version "
                             "[0-9.]+\n.*stops\n.*has stopped\n"));
}

TEST_F(AgentLife, EndsCleanlyOnSigint) {
  RunningAgent agent({"--network", kBackbone});
  EXPECT_EQ(0, agent.stop(SIGINT).status);
}

TEST_F(AgentLife, EndsCleanlyWithIteratorsLeftOpen) {
  RunningAgent agent({"--network", kBackbone});
  const auto client = orb::startClient({});
  const CORBA::Object_var object = client->get()->string_to_object(agent.corbaloc().c_str());
  const auto manager =
      TopoManagementManager::TopoMgr_I_var(TopoManagementManager::TopoMgr_I::_narrow(object));
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
}

TEST_F(AgentLife, TracesTheServantsLifeAtLogLevelThree) {
  RunningAgent agent({"--log-level", "3"});
  const std::string log = agent.stop(SIGTERM).err;
  EXPECT_THAT(log, HasSubstr("toposvc:33 [ RefCount]  ref_count!"));
  EXPECT_THAT(log,
              HasSubstr("toposvc:39 [ ~RefCount]  Reference count associated object destroyed!"));
}

// The address of a reference. The text of equal references may differ, because padding need not be
// zero.
std::pair<std::string, orb::ObjectKey> targetOf(const std::string& reference) {
  const auto client = orb::startClient({});
  const CORBA::Object_var object = client->get()->string_to_object(reference.c_str());
  return {orb::addressOf(object), orb::objectKeyOf(object)};
}

TEST_F(AgentLife, RestartsAfterAKillWithTheSameNetworkAndReference) {
  const std::string endpoint = quietEndpoint();
  std::string reference;
  std::string view;
  {
    RunningAgent agent({"--network", kBackbone}, store(), endpoint);
    reference = agent.reference();
    view = records(agent, {"topo"}).dump();
    EXPECT_EQ(SIGKILL, agent.stop(SIGKILL).signal);
  }
  const RunningAgent agent({}, store(), endpoint);
  EXPECT_EQ(targetOf(reference), targetOf(agent.reference()));
  const Ended ended = runTopoctl({"--agent", reference, "--format", "json", "topo"});
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ(view, json::parse(ended.out).dump());
}

TEST_F(AgentLife, LoadsANetworkOnlyIntoANewStore) {
  {
    RunningAgent agent({"--network", kBackbone}, store());
    agent.stop(SIGTERM);
  }
  const std::string other =
      directory_.write("other.json", R"({"format":"topo-network/1","topoNodes":[{"id":"x"}]})");
  RunningAgent agent({"--network", other, "--log-level", "2"}, store());
  EXPECT_LT(1U, records(agent, {"topo"}).size());
  EXPECT_THAT(agent.stop(SIGTERM).err,
              HasSubstr("store " + store() + " contains a network already, " + other));
}

TEST_F(AgentLife, ReadsEveryOptionFromAConfigurationFile) {
  const std::string config =
      directory_.write("agent.conf", "network = \"" + kBackbone +
                                         "\"\nems-name = \"from the file\"\ntest-switch = true\n");
  const RunningAgent agent({"--config", config});
  const json view = records(agent, {"topo"});
  EXPECT_EQ("from the file", view[0]["name"][0]["value"]);
  EXPECT_FALSE(view[0]["additionalInfo"].empty());
}

// The root context of a naming service, and the name that agents bind in it.
class BoundName {
 public:
  explicit BoundName(const NamingService& naming) {
    const CORBA::Object_var root = client_->get()->string_to_object(naming.reference().c_str());
    context_ = CosNaming::NamingContext::_narrow(root);
    name_.length(1);
    name_[0].id = CORBA::string_dup("TopoManagement");
  }

  std::string resolve() {
    const CORBA::Object_var bound = context_->resolve(name_);
    const CORBA::String_var text = client_->get()->object_to_string(bound);
    return text.in();
  }

  // Rebinds the agent's name to another object.
  void takeOver() { context_->rebind(name_, context_); }

 private:
  std::unique_ptr<orb::Orb> client_ = orb::startClient({});
  CosNaming::NamingContext_var context_;
  CosNaming::Name name_;
};

TEST_F(AgentLife, IsBoundInTheNamingServiceUntilItStops) {
  const NamingService naming;
  RunningAgent agent({"--network", kBackbone, "--naming", naming.reference()});
  BoundName name(naming);
  const Ended ended = runTopoctl({"--agent", name.resolve(), "--format", "csv", "topo"});
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
  EXPECT_THROW(name.resolve(), CosNaming::NamingContext::NotFound);
}

TEST_F(AgentLife, ReplacesTheNamingEntryOfAKilledAgent) {
  const NamingService naming;
  BoundName name(naming);
  {
    RunningAgent killed({"--naming", naming.reference()});
    killed.stop(SIGKILL);
  }
  const std::string stale = name.resolve();
  const RunningAgent agent({"--naming", naming.reference()});
  EXPECT_NE(stale, name.resolve());
  EXPECT_EQ(0, runTopoctl({"--agent", name.resolve(), "topo"}).status);
}

TEST_F(AgentLife, KeepsANamingEntryThatAnotherProcessHasRebound) {
  const NamingService naming;
  RunningAgent agent({"--naming", naming.reference()});
  BoundName name(naming);
  name.takeOver();
  const std::string other = name.resolve();
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
  EXPECT_EQ(other, name.resolve());
}

TEST_F(AgentLife, IsBoundAgainInANamingServiceThatRestartsWithoutItsData) {
  auto naming = std::make_unique<NamingService>();
  const std::string endpoint = naming->endpoint();
  support::Process agent(
      "/bin/sh", {"-c", "exec " TOPO_AGENTD " --create --endpoint 127.0.0.1:0 --store " + store() +
                            " --naming corbaloc:iiop:1.2@" + endpoint + "/NameService 2>&1"});
  agent.readLine();  // the ready line
  naming.reset();
  naming = std::make_unique<NamingService>(endpoint);
  std::string line = agent.readLine();
  while (!line.empty() && line.find("is bound again") == std::string::npos) {
    line = agent.readLine();
  }
  EXPECT_EQ(0, runTopoctl({"--agent", BoundName(*naming).resolve(), "topo"}).status) << line;
}

TEST_F(AgentLife, ReportsItsStateToTheServiceManager) {
  support::NotifySocket socket;
  support::Process agent(TOPO_AGENTD, onStore({}),
                         {"NOTIFY_SOCKET=" + socket.path(), "WATCHDOG_USEC=20000"});
  EXPECT_EQ("READY=1\nSTATUS=" + agent.readLine(), socket.next());
  EXPECT_EQ("WATCHDOG=1", socket.next());
  EXPECT_EQ("WATCHDOG=1", socket.next());
  agent.send(SIGTERM);
  EXPECT_EQ(0, agent.wait().status);
  std::string last;
  for (std::string message = socket.arrived(); !message.empty(); message = socket.arrived()) {
    last = message;
  }
  EXPECT_EQ("STOPPING=1", last);
}

TEST_F(AgentLife, ReplacesTheIorFileInOneStep) {
  const std::string file = directory_.write("manager.ior", "before\n");
  const std::string link = directory_.file("link");
  std::filesystem::create_hard_link(file, link);
  {
    support::Process agent(TOPO_AGENTD, onStore({"--ior-file", file}));
    ASSERT_NE("", agent.readLine());
    EXPECT_THAT(support::readFile(file), AllOf(StartsWith("IOR:"), EndsWith("\n")));
    agent.send(SIGTERM);
    EXPECT_EQ(0, agent.wait().status);
  }
  EXPECT_EQ("before\n", support::readFile(link));
}

TEST_F(AgentLife, RemovesItsIorFileAtACleanStop) {
  RunningAgent agent({});
  const std::string file = agent.iorFile();
  EXPECT_TRUE(std::filesystem::exists(file));
  agent.stop(SIGTERM);
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(AgentLife, LeavesAnIorFileOfAnotherProcess) {
  RunningAgent agent({});
  std::ofstream(agent.iorFile(), std::ios::trunc) << "IOR:00\n";
  agent.stop(SIGTERM);
  EXPECT_EQ("IOR:00\n", support::readFile(agent.iorFile()));
}

TEST_F(AgentLife, RefusesAnIorFileThatIsAFolder) {
  const std::string folder = directory_.file("folder");
  std::filesystem::create_directory(folder);
  EXPECT_EQ("topo-agentd: IOR file " + folder + ": cannot be written: Is a directory\n",
            refusal(onStore({"--ior-file", folder})));
}

TEST_F(AgentLife, LogsOmittedRecordsAtLevelThree) {
  const std::string odd = directory_.write(
      "odd.json", R"({"format":"topo-network/1","topoNodes":[{"id":"a","type":9}]})");
  RunningAgent agent({"--network", odd, "--log-level", "3"});
  EXPECT_TRUE(records(agent, {"topo"}).empty());
  EXPECT_THAT(agent.stop(SIGTERM).err, HasSubstr("Failed to covert domain to tmf type of topo!"));
}

TEST_F(AgentLife, LogsWhyAnElementIsMissingAtLevelThree) {
  const std::string odd = directory_.write(
      "odd.json",
      R"({"format":"topo-network/1","topoNodes":[{"id":"NE=0","type":1},{"id":"NE=-6","type":1}],
          "networkElements":[{"number":0},{"number":-5},{"number":5}]})");
  RunningAgent agent({"--network", odd, "--log-level", "3"});
  EXPECT_THAT(records(agent, {"topo"}), SizeIs(2));
  EXPECT_THAT(agent.stop(SIGTERM).err,
              AllOf(HasSubstr("Object ID cannot be 0!"),
                    HasSubstr(R"(no name for ManagedElement "-5": the number is negative)"),
                    HasSubstr(R"(no name for ManagedElement "-6": the number is negative)")));
}

// --- Refused starts: status 1 and one line.

TEST_F(AgentLife, RefusesAMissingNetworkFile) {
  EXPECT_THAT(refusal(onStore({"--network", directory_.file("none.json")})),
              HasSubstr(directory_.file("none.json") + ": "));
  EXPECT_FALSE(std::filesystem::exists(store()));
}

TEST_F(AgentLife, RefusesAnInvalidNetworkFileAndCreatesNoStore) {
  const std::string bad = directory_.write(
      "bad.json", R"({"format":"topo-network/1","topoNodes":[{"id":"a","parent":"b"}]})");
  EXPECT_THAT(refusal(onStore({"--network", bad})), HasSubstr(bad + ": topoNodes[0].parent: "));
  EXPECT_FALSE(std::filesystem::exists(store()));
}

TEST_F(AgentLife, RefusesAPortInUse) {
  const TakenPort port;
  EXPECT_THAT(refusal({"--store", ":memory:", "--endpoint", port.endpoint()}),
              AllOf(StartsWith("topo-agentd: cannot listen on " + port.endpoint() + ": "),
                    HasSubstr("in use")));
}

TEST_F(AgentLife, RefusesAMissingModule) {
  EXPECT_EQ("topo-agentd: module /nowhere/module.so: no such file\n",
            refusal(onStore({"--module", "/nowhere/module.so"})));
}

TEST_F(AgentLife, RefusesAModuleThatIsNotALibrary) {
  const std::string text = directory_.write("text.so", "not a library");
  EXPECT_THAT(refusal(onStore({"--module", text})), HasSubstr("module " + text + ": "));
}

TEST_F(AgentLife, RefusesALibraryThatIsNotAModule) {
  EXPECT_THAT(refusal(onStore({"--module", TOPO_IDL})),
              EndsWith(": it has no _make_zu_corba_topo\n"));
}

TEST_F(AgentLife, RefusesAMissingStoreAndCreatesNone) {
  EXPECT_EQ("topo-agentd: " + store() +
                ": there is no store (--network FILE loads a network into a new store, --create "
                "makes an empty one)\n",
            refusal({"--endpoint", "127.0.0.1:0", "--store", store()}));
  EXPECT_FALSE(std::filesystem::exists(store()));
}

TEST_F(AgentLife, CreatesAnEmptyStoreOnRequestAndReopensTheStore) {
  {
    RunningAgent agent({"--create"}, store());
    agent.stop(SIGTERM);
  }
  RunningAgent agent({}, store());
  EXPECT_THAT(agent.readyLine(), EndsWith(", 0 nodes"));
}

TEST_F(AgentLife, CreatesAStoreThatOnlyItsOwnerCanRead) {
  const RunningAgent agent({"--network", kBackbone}, store());
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
    names.push_back(entry.path().filename());
    EXPECT_EQ(0600, static_cast<int>(entry.status().permissions())) << entry.path();
  }
  EXPECT_THAT(names, UnorderedElementsAre("network.db", "network.db-wal"));
}

TEST_F(AgentLife, RefusesAStoreInAMissingFolder) {
  const std::string path = directory_.file("none/network.db");
  EXPECT_THAT(refusal({"--endpoint", "127.0.0.1:0", "--store", path}), HasSubstr(path + ": "));
}

TEST_F(AgentLife, RefusesAStoreThatIsNotADatabase) {
  const std::string path = directory_.write("text.db", std::string(5000, 'x'));
  EXPECT_THAT(refusal({"--endpoint", "127.0.0.1:0", "--store", path}), HasSubstr(path + ": "));
  EXPECT_EQ(std::string(5000, 'x'), support::readFile(path));
}

// Moves a store away together with its -wal and -journal files.
void moveAway(const std::string& store) {
  for (const char* const suffix : {"", "-wal", "-journal"}) {
    if (std::filesystem::exists(store + suffix)) {
      std::filesystem::rename(store + suffix, store + ".old" + suffix);
    }
  }
}

TEST_F(AgentLife, ServesABackupThatReplacesItsStore) {
  const std::string backup = directory_.file("backup.db");
  json view;
  {
    RunningAgent agent({"--network", kBackbone}, store());
    const auto at = [&](std::vector<std::string> words) {
      words.insert(words.begin(), {"--ior-file", agent.iorFile()});
      return runTopoctl(words);
    };
    EXPECT_EQ(0, at({"node", "create", "before", "--name", "Before"}).status);
    view = records(agent, {"topo"});
    EXPECT_EQ(0, at({"backup", backup}).status);
    EXPECT_EQ(0, at({"node", "create", "after", "--name", "After"}).status);
    EXPECT_EQ(view.size() + 1, records(agent, {"topo"}).size());
    agent.stop(SIGKILL);  // keeps the -wal file of the old store
  }
  ASSERT_TRUE(std::filesystem::exists(store() + "-wal"));
  moveAway(store());
  std::filesystem::copy_file(backup, store());
  const RunningAgent restored({}, store());
  EXPECT_EQ(view, records(restored, {"topo"}));
}

TEST_F(AgentLife, RefusesADamagedStoreUnlessTheCheckIsSkipped) {
  { RunningAgent agent({"--network", kBackbone}, store()); }
  support::damageStore(store());
  EXPECT_THAT(refusal({"--endpoint", "127.0.0.1:0", "--store", store()}),
              StartsWith("topo-agentd: " + store() + ": is damaged: "));
  const RunningAgent agent({"--skip-store-check"}, store());
}

TEST_F(AgentLife, RefusesAStoreThatAnotherAgentHasOpen) {
  const RunningAgent first({"--network", kBackbone}, store());
  EXPECT_THAT(refusal(onStore({})), HasSubstr(store() + ": "));
  EXPECT_FALSE(records(first, {"topo"}).empty());
}

// Files and the console refuse these nodes today; the store of an earlier version may have them.
TEST_F(AgentLife, ServesAStoreWithSeveralNodesOfOneElement) {
  RunningAgent({}, store()).stop(SIGTERM);
  {
    SQLite::Database database(store(), SQLite::OPEN_READWRITE);
    database.exec("INSERT INTO topo_node VALUES (0, 'NE=7', '', 'x', 1, 2, 0, 0)");
    database.exec("INSERT INTO topo_node VALUES (1, '7', '', 'y', 1, 2, 0, 0)");
    database.exec("INSERT INTO topo_node VALUES (2, 'none', '', 'z', 1, 2, 0, 0)");
  }
  const RunningAgent agent({}, store());
  const auto elements = [&agent] {
    std::vector<std::string> numbers;
    for (const json& node : records(agent, {"topo"})) {
      numbers.push_back(node["name"][1]["value"]);
    }
    return numbers;
  };
  EXPECT_THAT(elements(), UnorderedElementsAre("7", "7", "0"));
  for (const std::string id : {"7", "none"}) {
    EXPECT_EQ(1, records(agent, {"node", "delete", id})["deletedNodes"]);
  }
  EXPECT_THAT(elements(), UnorderedElementsAre("7"));
}

TEST_F(AgentLife, RefusesAMissingNamingService) {
  std::string nobody;
  {
    const TakenPort port;
    nobody = "corbaloc::" + port.endpoint() + "/NameService";
  }
  EXPECT_THAT(refusal(onStore({"--naming", nobody})), HasSubstr("naming service " + nobody + ": "));
}

TEST_F(AgentLife, RefusesAMalformedReference) {
  const std::string reason = "it starts with none of IOR:, corbaloc:, corbaname:\n";
  EXPECT_EQ("topo-agentd: naming service nonsense: " + reason,
            refusal(onStore({"--naming", "nonsense"})));
  EXPECT_EQ("topo-agentd: event channel foo: " + reason,
            refusal(onStore({"--event-channel", "foo"})));
  EXPECT_EQ("topo-agentd: event channel corbaname::localhost:1: it has no #NAME\n",
            refusal(onStore({"--event-channel", "corbaname::localhost:1"})));
  EXPECT_FALSE(std::filesystem::exists(store()));
}

TEST_F(AgentLife, AcceptsTheConfigurationFileOfThePackage) {
  support::Process agent(TOPO_AGENTD,
                         {"--config", TOPO_PACKAGING "/etc/agent.conf", "--check-config"});
  EXPECT_EQ("the options are valid\n", agent.wait().out);
}

TEST_F(AgentLife, ChecksItsOptionsWithoutServing) {
  const std::string config = directory_.write("agent.conf", "store = \"" + store() + "\"\n");
  support::Process good(TOPO_AGENTD, {"--config", config, "--check-config"});
  const Ended ended = good.wait();
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("the options are valid\n", ended.out);
  EXPECT_EQ("", ended.err);
  EXPECT_FALSE(std::filesystem::exists(store()));
  EXPECT_EQ("topo-agentd: event channel foo: it starts with none of IOR:, corbaloc:, corbaname:\n",
            refusal({"--check-config", "--event-channel", "foo"}));
  EXPECT_EQ("topo-agentd: module /nowhere/m.so: no such file\n",
            refusal({"--check-config", "--module", "/nowhere/m.so"}));
  EXPECT_EQ("topo-agentd: /nowhere/n.json: No such file or directory\n",
            refusal({"--check-config", "--network", "/nowhere/n.json"}));
}

TEST_F(AgentLife, NamesTheLineOfAConfigurationFileWhoseValueFailsACheck) {
  const std::string folder = directory_.path();
  for (const auto& [line, reason] : std::vector<std::pair<std::string, std::string>>{
           {"naming = foo", "naming service foo: it starts with none of "},
           {"event-channel = foo", "event channel foo: it starts with none of "},
           {"module = \"/nowhere/m.so\"", "module /nowhere/m.so: no such file\n"},
           {"network = \"" + folder + "\"", folder + ": is not a regular file\n"}}) {
    const std::string config = directory_.write("agent.conf", "queue = 5\n" + line + "\n");
    EXPECT_THAT(refusal({"--check-config", "--config", config}),
                StartsWith("topo-agentd: " + config + ":2: " + reason));
  }
}

// No directive of the service configurator can contain these names.
TEST_F(AgentLife, RefusesAModuleWhoseNameTheConfiguratorCannotRead) {
  for (const std::string name : {"a'\".so", "a\n.so"}) {
    const std::string file = directory_.file(name);
    std::filesystem::copy_file(TOPO_MODULE, file);
    EXPECT_THAT(refusal({"--check-config", "--module", file}), HasSubstr(": the name contains "));
  }
}

TEST_F(AgentLife, RefusesAnIorFileThatCannotBeWritten) {
  const std::string path = directory_.file("none/manager.ior");
  EXPECT_EQ("topo-agentd: IOR file " + path + ": cannot be written: No such file or directory\n",
            refusal(onStore({"--ior-file", path})));
}

TEST_F(AgentLife, RefusesAMissingConfigurationFile) {
  EXPECT_THAT(refusal({"--config", directory_.file("none.conf")}), HasSubstr("none.conf"));
}

TEST_F(AgentLife, RefusesUnknownAndMalformedOptions) {
  EXPECT_THAT(refusal({"--nonsense"}), HasSubstr("--nonsense"));
  EXPECT_THAT(refusal({"--endpoint", "localhost"}), HasSubstr("'localhost' is not HOST:PORT"));
  EXPECT_THAT(refusal({"--endpoint", "localhost:70000"}), HasSubstr("is not HOST:PORT"));
  EXPECT_THAT(refusal({"--log-level", "4"}), HasSubstr("--log-level"));
  EXPECT_THAT(refusal({"--max-message", "1"}), HasSubstr("--max-message"));
}

}  // namespace
}  // namespace integration
