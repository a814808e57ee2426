// The roles of clients, the audit log and the limits of pushes, checked with a running agent.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <sstream>

#include "agent/access/Operations.h"
#include "idl/ObjectKeys.h"
#include "idl/PermissionMinors.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/TopoManagementManager.h"
#include "tests/integration/Programs.h"
#include "tests/unit/orb/Answers.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/RawPeer.h"

namespace integration {
namespace {

using agent::ObjectKind;
using agent::Operation;
using agent::Role;
using nlohmann::json;
using support::Ended;
using testing::HasSubstr;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";
const char* const kNoRole =
    "topoctl: the agent refused: this client does not have the role of the operation (--access of "
    "the agent)\n";

// A command that needs the role operate.
const std::vector<std::string> kOperate = {"test-switch", "off"};

class Access : public testing::Test {
 protected:
  std::string rules(const std::string& text) const { return directory_.write("access", text); }

  static Ended run(const RunningAgent& agent, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--ior-file", agent.iorFile()});
    return runTopoctl(arguments);
  }

  // Runs topoctl until it ends with the status, because the agent reloads files some time after
  // SIGHUP.
  static Ended runUntil(int status, const RunningAgent& agent,
                        const std::vector<std::string>& arguments) {
    Ended ended = run(agent, arguments);
    for (int i = 0; i < 100 && ended.status != status; ++i) {
      ended = run(agent, arguments);
    }
    return ended;
  }

  static orb::Endpoint endpointOf(const RunningAgent& agent) {
    const std::string text = agent.endpoint();
    return {"127.0.0.1", static_cast<std::uint16_t>(std::stoul(text.substr(text.rfind(':') + 1)))};
  }

  // The second endpoint in the ready line.
  static orb::Endpoint secondEndpointOf(const RunningAgent& agent) {
    const std::string before = "also at 127.0.0.1:";
    const std::size_t begin = agent.readyLine().find(before);
    EXPECT_NE(std::string::npos, begin) << agent.readyLine();
    return {"127.0.0.1", static_cast<std::uint16_t>(
                             std::stoul(agent.readyLine().substr(begin + before.size())))};
  }

  static const char* keyOf(ObjectKind kind) {
    switch (kind) {
      case ObjectKind::kConsole:
        return object_key::kConsole;
      case ObjectKind::kSession:
        return object_key::kSession;
      case ObjectKind::kNetwork:
        break;
    }
    return object_key::kManager;
  }

  // Sends a request without arguments. Returns whether the agent raises NO_PERMISSION.
  static bool isRefused(const RunningAgent& agent, const std::string& key,
                        const std::string& operation) {
    return isRefusedAt(endpointOf(agent), key, operation);
  }

  static bool isRefusedAt(const orb::Endpoint& endpoint, const std::string& key,
                          const std::string& operation) {
    return isRefused(answerTo(endpoint, orb_tests::requestTo(key, operation).bytes()));
  }

  static bool isRefused(const std::string& answer) {
    EXPECT_NE("", answer);
    return answer.find("IDL:omg.org/CORBA/NO_PERMISSION:1.0") != std::string::npos;
  }

  // source: the address from which the client connects.
  static std::string answerTo(const orb::Endpoint& endpoint, const std::string& request,
                              in_addr_t source = INADDR_ANY) {
    const orb_tests::RawClient client(endpoint, 0, source);
    EXPECT_TRUE(client.send(request));
    return client.receive();
  }

  const support::TemporaryDirectory directory_;
};

class Audit : public Access {};

TEST_F(Access, IsCheckedForEveryOperationAndRole) {
  const std::pair<const char*, Role> roles[] = {
      {"read", Role::kRead}, {"write", Role::kWrite}, {"operate", Role::kOperate}};
  for (const auto& [name, role] : roles) {
    const RunningAgent agent({"--access", rules(std::string("loopback ") + name + "\n")});
    for (const Operation& operation : agent::operations()) {
      EXPECT_EQ(operation.role && *operation.role != role,
                isRefused(agent, keyOf(operation.kind), operation.name))
          << operation.name << " with the role " << name;
    }
  }
}

TEST_F(Access, OfUnknownClientsIsRefusedForEveryObject) {
  const RunningAgent agent({"--access", rules("unix read\n")});
  for (const char* const key :
       {object_key::kManager, object_key::kSession, object_key::kConsole, "NoSuchObject"}) {
    for (const char* const operation : {"_is_a", "_non_existent", "_interface", "next_n", "x"}) {
      EXPECT_TRUE(isRefused(agent, key, operation)) << key << " " << operation;
    }
  }
}

TEST_F(Access, OfAReaderExcludesChangesAndTheConsole) {
  const RunningAgent agent({"--network", kBackbone, "--access", rules("loopback read\n")});
  EXPECT_GT(records(agent, {"topo"}).size(), 1U);
  const Ended label = run(agent, {"set", "user-label", "ManagedElement=1", "x"});
  EXPECT_EQ(3, label.status);
  EXPECT_EQ(kNoRole, label.err);
  const Ended testSwitch = run(agent, kOperate);
  EXPECT_EQ(3, testSwitch.status);
  EXPECT_EQ(kNoRole, testSwitch.err);
  const Ended status = run(agent, {"status"});
  EXPECT_EQ(0, status.status) << status.err;
  EXPECT_THAT(status.out, HasSubstr("the console refuses this client"));
}

TEST_F(Access, ToAReadOnlyAgentExcludesEveryChange) {
  const RunningAgent agent({"--network", kBackbone, "--read-only"});
  EXPECT_EQ(0, run(agent, {"status"}).status);
  const Ended reload = run(agent, {"module", "reload"});
  EXPECT_EQ(3, reload.status);
  EXPECT_EQ("topoctl: the agent refused: the agent is read-only (--read-only of the agent)\n",
            reload.err);
  for (const Operation& operation : agent::operations()) {
    EXPECT_EQ(operation.isChange, isRefused(agent, keyOf(operation.kind), operation.name))
        << operation.name;
  }
}

TEST_F(Access, ToConsoleAndSessionMayHaveAnEndpointOfItsOwn) {
  const RunningAgent agent({"--console-endpoint", "127.0.0.1:0"});
  const orb::Endpoint own = secondEndpointOf(agent);
  for (const Operation& operation : agent::operations()) {
    const char* const key = keyOf(operation.kind);
    EXPECT_EQ(operation.kind != ObjectKind::kNetwork, isRefused(agent, key, operation.name))
        << operation.name;
    EXPECT_FALSE(isRefusedAt(own, key, operation.name)) << operation.name;
  }
  const std::string line =
      "topoctl: the agent refused: the console and the session have another endpoint "
      "(--console-endpoint of the agent)\n";
  const auto operateAt = [](const orb::Endpoint& endpoint) {
    return runTopoctl(
        {"--agent", orb::corbaloc(endpoint, object_key::kManager), "test-switch", "off"});
  };
  EXPECT_EQ(line, operateAt(endpointOf(agent)).err);
  EXPECT_EQ(0, operateAt(own).status);
}

TEST_F(Access, FollowsTheFileAfterSighup) {
  const std::string file = rules("loopback read\n");
  RunningAgent agent({"--access", file});
  EXPECT_EQ(3, run(agent, kOperate).status);
  rules("loopback read operate\n");
  agent.process().send(SIGHUP);
  EXPECT_EQ(0, runUntil(0, agent, kOperate).status);
}

// Sends a request many times. Returns false when a request has no reply.
bool sendRequests(const orb::Endpoint& endpoint, const char* key, const char* operation) {
  const orb_tests::RawClient client(endpoint);
  for (int i = 0; i < 300; ++i) {
    if (!client.send(orb_tests::requestTo(key, operation).bytes()) || !client.answer()) {
      return false;
    }
  }
  return true;
}

TEST_F(Access, FollowsTheFileWhileRequestsRun) {
  RunningAgent agent({"--access", rules("loopback read\n")});
  std::vector<std::future<bool>> clients;
  for (const auto& [key, operation] :
       {std::pair(object_key::kConsole, "getStatus"), std::pair(object_key::kConsole, "_is_a"),
        std::pair(object_key::kSession, "getEventAccess"),
        std::pair(object_key::kManager, "getCapabilities")}) {
    clients.push_back(
        std::async(std::launch::async, sendRequests, endpointOf(agent), key, operation));
  }
  for (int i = 0; i < 50; ++i) {
    rules(i % 2 == 0 ? "loopback read operate\n" : "loopback read\n");
    agent.process().send(SIGHUP);
  }
  for (std::future<bool>& client : clients) {
    EXPECT_TRUE(client.get());
  }
  rules("loopback read operate\n");
  agent.process().send(SIGHUP);
  EXPECT_EQ(0, runUntil(0, agent, kOperate).status);
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
}

TEST_F(Access, StaysAsItWasAfterSighupWithAMalformedFile) {
  const std::string file = rules("loopback read operate\n");
  RunningAgent agent({"--access", file});
  rules("loopback all\n");
  agent.process().send(SIGHUP);
  EXPECT_EQ(0, run(agent, kOperate).status);
  const Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("the access rules stay as they were: " + file +
                                   ":1: \"all\" is not a role: read, write, operate or none"));
}

TEST_F(Access, FileIsCheckedAtTheStart) {
  const std::string file = rules("# nobody\neverybody read\n");
  const std::string problem =
      file + ":2: \"everybody\" is not subject, certificate, address, loopback or unix\n";
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--access", file, "--store", ":memory:", "--create"},
        std::vector<std::string>{"--access", file, "--check-config"}}) {
    const Ended ended = runAgent(arguments);
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("topo-agentd: " + problem, ended.err);
  }
  const std::string config = directory_.write("agent.conf", "access = \"" + file + "\"\n");
  EXPECT_EQ("topo-agentd: " + config + ":1: " + problem,
            runAgent({"--config", config, "--check-config"}).err);
}

// A client that subscribes consumers. A process has at most one.
class SubscribingClient {
 public:
  explicit SubscribingClient(const RunningAgent& agent) {
    const CORBA::Object_var manager = orb()->string_to_object(agent.reference().c_str());
    const CORBA::Object_var object = orb::objectBeside(orb(), manager.in(), object_key::kSession);
    session_ = TopoAgent::Session_I::_narrow(object.in());
  }

  CORBA::ORB_ptr orb() const { return client_->get(); }

  TopoAgent::Subscription_I_var subscribe(const std::string& consumer) const {
    const CORBA::Object_var object = orb()->string_to_object(consumer.c_str());
    const CosNotifyComm::StructuredPushConsumer_var reference =
        CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(object.in());
    return session_->subscribe(reference.in(), "");
  }

 private:
  const std::unique_ptr<orb::Orb> client_ = orb::startClient({});
  TopoAgent::Session_I_var session_;
};

const std::string kOtherHost = "corbaloc:iiop:1.2@192.0.2.1:9/Consumer";
const std::string kOtherHostRefused =
    "the consumer is at \"192.0.2.1\", which is neither the address of its client nor in a "
    "range of --push-to";

// Subscribes a consumer at an address. Returns the minor code of NO_PERMISSION, 0 for a success.
CORBA::ULong refusalToPush(const RunningAgent& agent, const std::string& address) {
  const SubscribingClient client(agent);
  try {
    client.subscribe("corbaloc:iiop:1.2@" + address + ":9/Consumer");
    return 0;
  } catch (const CORBA::NO_PERMISSION& refused) {
    return refused.minor();
  }
}

// Waits until the agent has ended the subscription. Returns false at the timeout.
bool isEnded(const TopoAgent::Subscription_I_var& subscription) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (std::chrono::steady_clock::now() < deadline) {
    try {
      subscription->ping();
    } catch (const CORBA::OBJECT_NOT_EXIST&) {
      return true;
    }
  }
  return false;
}

TEST_F(Access, ToPushIsLimitedToTheAddressOfTheClient) {
  const std::string audit = directory_.file("audit");
  RunningAgent agent({"--audit", audit});
  EXPECT_EQ(permission_minor::kPushAddress, refusalToPush(agent, "192.0.2.1"));
  EXPECT_EQ(0U, refusalToPush(agent, "127.0.0.1"));
  agent.stop(SIGTERM);
  const json line = json::parse(support::readFile(audit));
  EXPECT_EQ("subscribe", line["operation"]);
  EXPECT_EQ("refused", line["outcome"]);
  EXPECT_EQ(kOtherHostRefused, line["reason"]);
}

TEST_F(Access, ToPushDoesNotFollowAConsumerToAnotherAddress) {
  const std::string audit = directory_.file("audit");
  RunningAgent agent({"--audit", audit});
  {
    const SubscribingClient client(agent);
    const orb_tests::RawPeer consumer([&client](const std::string& request) {
      return orb_tests::forwardTo(client.orb(), kOtherHost, request);
    });
    EXPECT_TRUE(isEnded(client.subscribe(consumer.corbaloc())));
  }
  agent.stop(SIGTERM);
  const json line = json::parse(support::readFile(audit));
  EXPECT_EQ("subscribe", line["operation"]);
  EXPECT_EQ("refused", line["outcome"]);
  EXPECT_EQ(kOtherHostRefused, line["reason"]);
}

TEST_F(Access, ToPushIsWidenedByARange) {
  const RunningAgent agent({"--push-to", "192.0.2.0/24"});
  EXPECT_EQ(0U, refusalToPush(agent, "192.0.2.1"));
  EXPECT_EQ(permission_minor::kPushAddress, refusalToPush(agent, "198.51.100.1"));
}

// The lines of an audit log.
std::vector<json> linesOf(const std::string& file) {
  std::istringstream text(support::readFile(file));
  std::vector<json> lines;
  for (std::string line; std::getline(text, line);) {
    lines.push_back(json::parse(line));
  }
  return lines;
}

TEST_F(Access, OfAnUnknownClientExcludesTheIteratorsOfOthers) {
  constexpr in_addr_t kOther = INADDR_LOOPBACK + 1;
  const RunningAgent agent({"--network", kBackbone, "--access", rules("address 127.0.0.1 read\n")});
  const std::unique_ptr<orb::Orb> client = orb::startClient({});
  const CORBA::Object_var object = client->get()->string_to_object(agent.reference().c_str());
  const TopoManagementManager::TopoMgr_I_var owner =
      TopoManagementManager::TopoMgr_I::_narrow(object.in());
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  owner->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
  const std::string request =
      orb_tests::requestTo(orb::objectKeyOf(iterator.in()), "getLength").bytes();
  EXPECT_TRUE(isRefused(answerTo(endpointOf(agent), request, kOther)));
  EXPECT_FALSE(isRefused(answerTo(endpointOf(agent), request)));
}

TEST_F(Access, IsCheckedForAFragmentedRequest) {
  const RunningAgent agent({"--access", rules("loopback read\n")});
  orb_tests::Message first(1, orb_tests::Message::Type::kRequest, true);
  first.number(0).number(1).octet(1).align(4).octets(object_key::kConsole).text("deleteNode");
  first.number(0);                         // principal
  while (first.bytes().size() % 8 != 4) {  // the end of the first fragment is aligned
    first.number(0);
  }
  const orb_tests::Message last(1, orb_tests::Message::Type::kFragment, false);
  EXPECT_TRUE(isRefused(answerTo(endpointOf(agent), first.bytes() + last.bytes())));
}

TEST_F(Access, ToTheConsoleIsNotWidenedByASimilarKey) {
  const RunningAgent agent({"--console-endpoint", "127.0.0.1:0"});
  const std::string console = object_key::kConsole;
  for (const std::string& key :
       {console + '\0', console + "/", "/" + console, std::string("topoagentconsole")}) {
    const std::string answer =
        answerTo(endpointOf(agent), orb_tests::requestTo(key, "getStatus").bytes());
    EXPECT_THAT(answer, HasSubstr("IDL:omg.org/CORBA/OBJECT_NOT_EXIST:1.0")) << key;
  }
}

TEST_F(Audit, RecordsRefusedRequestsWithoutAReply) {
  const std::string audit = directory_.file("audit");
  RunningAgent agent({"--audit", audit, "--access", rules("loopback read\n")});
  const std::string oneway = orb_tests::Message(0, orb_tests::Message::Type::kRequest, false)
                                 .number(0)
                                 .number(1)
                                 .octet(0)  // no reply expected
                                 .octets(object_key::kConsole)
                                 .text("setTestSwitch")
                                 .number(0)
                                 .octet(1)
                                 .bytes();
  const std::string answer = answerTo(
      endpointOf(agent), oneway + orb_tests::requestTo(object_key::kManager, "_is_a").bytes());
  EXPECT_FALSE(isRefused(answer));
  agent.stop(SIGTERM);
  const std::vector<json> lines = linesOf(audit);
  ASSERT_EQ(1U, lines.size());
  EXPECT_EQ("setTestSwitch", lines[0]["operation"]);
  EXPECT_EQ("refused", lines[0]["outcome"]);
}

TEST_F(Audit, RecordsChangesFailuresAndRefusals) {
  const std::string audit = directory_.file("audit");
  RunningAgent agent(
      {"--network", kBackbone, "--audit", audit, "--access", rules("loopback read operate\n")});
  run(agent, {"node", "create", "core", "--name", "K\xc3\xb6rn"});
  run(agent, {"node", "rename", "none", "Kern"});
  run(agent, {"topo"});
  run(agent, {"set", "user-label", "ManagedElement=1", "x"});
  agent.stop(SIGTERM);
  const std::vector<json> lines = linesOf(audit);
  ASSERT_EQ(3U, lines.size());
  EXPECT_EQ("createNode", lines[0]["operation"]);
  EXPECT_EQ("done", lines[0]["outcome"]);
  EXPECT_EQ("\"core\"", lines[0]["target"]);
  EXPECT_EQ("renameNode", lines[1]["operation"]);
  EXPECT_EQ("failed", lines[1]["outcome"]);
  EXPECT_NE("", lines[1]["reason"]);
  EXPECT_EQ("setUserLabel", lines[2]["operation"]);
  EXPECT_EQ("refused", lines[2]["outcome"]);
  EXPECT_EQ("TopoManagement", lines[2]["object"]);
  for (const json& line : lines) {
    EXPECT_EQ("127.0.0.1", line["peer"]);
    EXPECT_EQ("tcp", line["transport"]);
    EXPECT_EQ("", line["certificate"]);
  }
}

TEST_F(Audit, RecordsSettersOfTheManager) {
  const std::string audit = directory_.file("audit");
  RunningAgent agent({"--network", kBackbone, "--audit", audit});
  const std::string name = records(agent, {"topo"})[0]["name"].back()["value"];
  const Ended ended = run(agent, {"set", "owner", "TopoSubnetwork=" + name, "NOC"});
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ(3, run(agent, {"set", "owner", "TopoSubnetwork=none", "NOC"}).status);
  agent.stop(SIGTERM);
  const std::vector<json> lines = linesOf(audit);
  ASSERT_EQ(2U, lines.size());
  for (const json& line : lines) {
    EXPECT_EQ("TopoManagement", line["object"]);
    EXPECT_EQ("setOwner", line["operation"]);
  }
  EXPECT_EQ("done", lines[0]["outcome"]);
  EXPECT_EQ("failed", lines[1]["outcome"]);
}

TEST_F(Audit, LogsAFailureAndGoesOn) {
  // The limit affects the audit log only, because no other file of the agent is as large.
  const rlim_t size = rlim_t{1} << 20;
  const std::string audit = directory_.write("audit", "");
  std::filesystem::resize_file(audit, size);
  RunningAgent agent({"--audit", audit});
  const rlimit limit{size, size};
  ASSERT_EQ(0, ::prlimit(agent.process().pid(), RLIMIT_FSIZE, &limit, nullptr));
  EXPECT_EQ("", records(agent, {"status"})["auditFailure"]);
  EXPECT_EQ(0, run(agent, {"test-switch", "on"}).status);
  EXPECT_EQ(0, run(agent, {"test-switch", "off"}).status);
  json status = records(agent, {"status"});
  for (int i = 0; i < 100 && status["auditLost"] != 2; ++i) {
    status = records(agent, {"status"});
  }
  EXPECT_EQ(2, status["auditLost"]);
  EXPECT_EQ("File too large", status["auditFailure"]);
  const std::string log = agent.stop(SIGTERM).err;
  const std::string line = "the audit log cannot be written: File too large";
  EXPECT_NE(std::string::npos, log.find(line)) << log;
  EXPECT_EQ(log.find(line), log.rfind(line)) << log;
}

TEST_F(Audit, FileThatCannotBeOpenedPreventsTheStart) {
  const Ended ended = runAgent({"--audit", "/nonexistent/audit", "--store", ":memory:", "--create",
                                "--endpoint", "127.0.0.1:0"});
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("topo-agentd: audit log /nonexistent/audit: No such file or directory\n", ended.err);
  EXPECT_EQ(ended.err, runAgent({"--audit", "/nonexistent/audit", "--check-config"}).err);
  EXPECT_EQ("topo-agentd: audit log /: Is a directory\n",
            runAgent({"--audit", "/", "--check-config"}).err);
}

}  // namespace
}  // namespace integration
