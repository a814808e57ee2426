// Events under load: bursts, slow and dead subscribers, kills, and reloads of the module.

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <mutex>
#include <set>
#include <thread>

#include "idl/NotificationLayout.h"
#include "idl/ObjectKeys.h"
#include "tests/integration/Listeners.h"

namespace integration {
namespace {

using nlohmann::json;
using Texts = std::vector<std::string>;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T_var;
using TopoManagementManager::TopoMgr_I_var;

namespace layout = notification_layout;

std::vector<std::string> watchArguments(const RunningAgent& agent) {
  return {"--ior-file", agent.iorFile(), "--format", "json", "watch"};
}

CORBA::ULong nodesSeen(const TopoMgr_I_var& manager) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(1000000, nodes.out(), iterator.out());
  return nodes->length();
}

std::uint64_t idIn(const json& line, const char* name) {
  return std::stoull(line[name].get<std::string>());
}

// --- A burst.

TEST(EventBurst, ReachesTheHealthyAndTellsTheStoppedWhatItLost) {
  constexpr int kRenames = kSanitized ? 20000 : 100000;
  Client client;
  const support::TemporaryDirectory directory;
  RunningAgent agent({"--ems-name", "E"}, directory.file("store.db"));
  const TopoAgent::Console_I_var console = client.console(agent);
  DirectListener healthy(client, client.session(agent));
  console->createNode(subnetworkNode("core", "", "0"));
  const std::uint64_t created = healthy.inbox().waitForCount(1)[0].id;
  support::Process stopped(TOPOCTL, watchArguments(agent));
  support::Process killed(TOPOCTL, watchArguments(agent));
  ASSERT_EQ("watching", json::parse(stopped.readLine())["event"]);
  ASSERT_EQ("watching", json::parse(killed.readLine())["event"]);
  console->renameNode("core", "heard");
  const json heardLine = json::parse(stopped.readLine());
  ASSERT_EQ("change", heardLine["event"]);
  healthy.inbox().waitForCount(2);
  const long memory = residentKib(agent.process().pid());

  stopped.send(SIGSTOP);
  killed.send(SIGKILL);
  std::atomic<bool> renaming{true};
  std::atomic<int> wrong{0};
  std::atomic<int> asked{0};
  std::thread queries([&] {
    const TopoMgr_I_var manager = client.manager(agent);
    while (renaming) {
      wrong += nodesSeen(manager) != 1;
      ++asked;
    }
  });
  for (int i = 1; i <= kRenames; ++i) {
    console->renameNode("core", std::to_string(i).c_str());
  }
  renaming = false;
  queries.join();
  EXPECT_EQ(0, wrong);
  EXPECT_LT(10, asked);

  // The creation, the first renaming, and every other one.
  const std::size_t expected = std::size_t{kRenames} + 2;
  const std::vector<Heard> heard = healthy.inbox().waitForCount(expected);
  ASSERT_EQ(expected, heard.size());
  for (std::size_t i = 2; i < heard.size(); ++i) {
    ASSERT_EQ(std::to_string(i - 1), heard[i].name);
    ASSERT_EQ(created + i, heard[i].id);
  }
  if (!kSanitized) {
    EXPECT_LT(residentKib(agent.process().pid()), memory + 64 * 1024);
  }

  stopped.send(SIGCONT);
  console->renameNode("core", "end");
  // Every id is heard or told as lost, once.
  std::uint64_t next = created + 2;
  std::uint64_t lost = 0;
  for (bool ended = false; !ended;) {
    const json line = json::parse(stopped.readLine());
    if (line["event"] == "lost") {
      EXPECT_EQ(next, idIn(line, "firstLostId"));
      next = idIn(line, "lastLostId") + 1;
      EXPECT_EQ(next - idIn(line, "firstLostId"), line["lostCount"]);
      lost += line["lostCount"].get<std::uint64_t>();
    } else if (line.contains("notificationId")) {
      EXPECT_EQ(next, idIn(line, "notificationId"));
      ++next;
    }
    ended = next == created + expected + 1;
  }
  EXPECT_LT(0U, lost);
  stopped.send(SIGTERM);
  EXPECT_EQ(0, stopped.wait().status);
  const TopoAgent::Status_T_var status = console->getStatus();
  EXPECT_LE(1U, status->subscribersDropped);
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
}

TEST(EventBurst, OverflowsTheQueueOfOneWhoIsSlowAndIsToldToIt) {
  constexpr int kRenames = 50;
  constexpr std::size_t kQueue = 5;
  Client client;
  RunningAgent agent({"--ems-name", "E", "--queue", std::to_string(kQueue)});
  const TopoAgent::Console_I_var console = client.console(agent);
  DirectListener slow(client, client.session(agent));
  console->createNode(subnetworkNode("core", "", "0"));
  const std::uint64_t created = slow.inbox().waitForCount(1)[0].id;
  slow.inbox().hold();
  for (int i = 1; i <= kRenames; ++i) {
    console->renameNode("core", std::to_string(i).c_str());
  }
  waitForNotifications(console, kRenames + 1);
  slow.inbox().release();
  const std::vector<Heard> heard = slow.inbox().waitUntil(
      [&](const std::vector<Heard>& all) { return all.back().id == created + kRenames; });
  std::uint64_t next = created;
  std::uint64_t lost = 0;
  for (const Heard& event : heard) {
    if (event.type == layout::kEventsLost) {
      EXPECT_EQ(next, event.firstLost);
      next = event.lastLost + 1;
      EXPECT_EQ(next - event.firstLost, event.lostCount);
      lost += event.lostCount;
    } else {
      EXPECT_EQ(next, event.id);
      ++next;
    }
  }
  EXPECT_LE(kRenames - kQueue - 2, lost);
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
}

// --- Kills.

// What SQLite says of a store, and of the log that a kill has left beside it: of a copy, which the
// check may recover.
std::string integrityOf(const std::string& store) {
  const support::TemporaryDirectory directory;
  for (const char* suffix : {"", "-wal"}) {
    if (std::filesystem::exists(store + suffix)) {
      std::filesystem::copy_file(store + suffix, directory.file(std::string("copy") + suffix));
    }
  }
  SQLite::Database database(directory.file("copy"), SQLite::OPEN_READWRITE);
  SQLite::Statement keys(database, "PRAGMA foreign_key_check");
  return keys.executeStep() ? "a foreign key leads nowhere"
                            : database.execAndGet("PRAGMA integrity_check").getString();
}

std::set<std::string> nodesOf(const RunningAgent& agent) {
  std::set<std::string> ids;
  for (const json& node : records(agent, {"topo"})) {
    ids.insert(node["name"][1]["value"]);
  }
  return ids;
}

TEST(AgentKill, InTheMiddleOfCreatesLosesNoneThatWasAcknowledged) {
  constexpr int kRounds = 10;
  constexpr int kCreates = kSanitized ? 1000 : 10000;
  Client client;
  const support::TemporaryDirectory directory;
  const std::string store = directory.file("store.db");
  std::mutex mutex;
  std::set<std::string> acknowledged;  // guarded by mutex
  std::uint64_t lastId = 0;
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    RunningAgent agent({"--ems-name", "E"}, store);
    const std::set<std::string> present = nodesOf(agent);
    for (const std::string& id : acknowledged) {
      ASSERT_EQ(1U, present.count(id)) << id;
    }
    DirectListener listener(client, client.session(agent));
    // Killed at a different place of the creates in every round.
    const int killAfter = kCreates / (kRounds + 1) * (round + 1);
    std::atomic<int> made{0};
    const auto create = [&](int thread) {
      const TopoAgent::Console_I_var console = client.console(agent);
      try {
        for (int i = 0; i < kCreates; ++i) {
          const std::string id =
              std::to_string(round) + "/" + std::to_string(thread) + "/" + std::to_string(i);
          console->createNode(subnetworkNode(id, "", id));
          {
            const std::lock_guard<std::mutex> lock(mutex);
            acknowledged.insert(id);
          }
          if (++made == killAfter) {
            agent.process().send(SIGKILL);
          }
        }
      } catch (const CORBA::SystemException&) {
        // It is gone.
      }
    };
    std::vector<std::thread> creators;
    for (int thread = 0; thread < 2; ++thread) {
      creators.emplace_back(create, thread);
    }
    for (std::thread& creator : creators) {
      creator.join();
    }
    agent.process().wait();
    EXPECT_LE(killAfter, made);
    EXPECT_EQ("ok", integrityOf(store));
    for (const Heard& heard : listener.inbox().all()) {
      ASSERT_LT(lastId, heard.id);
      lastId = heard.id;
    }
  }
  {
    RunningAgent agent({"--ems-name", "E"}, store);
    const std::set<std::string> present = nodesOf(agent);
    for (const std::string& id : acknowledged) {
      ASSERT_EQ(1U, present.count(id)) << id;
    }
    DirectListener listener(client, client.session(agent));
    client.console(agent)->createNode(subnetworkNode("last", "", ""));
    EXPECT_LT(lastId, listener.inbox().waitForCount(1)[0].id);
    EXPECT_EQ(0, agent.stop(SIGTERM).status);
  }
  EXPECT_EQ("ok", integrityOf(store));
}

// --- Reloads.

// Asks until it is told to end; notes what is neither an answer nor a clean refusal.
class Asking {
 public:
  Asking(Client& client, const RunningAgent& agent)
      : manager_(client.manager(agent)), thread_([this] { ask(); }) {}

  ~Asking() { end(); }

  Asking(const Asking&) = delete;
  Asking& operator=(const Asking&) = delete;

  void end() {
    asking_ = false;
    if (thread_.joinable()) {
      thread_.join();
    }
  }

  int answers() const { return answers_; }
  int refusals() const { return refusals_; }
  const Texts& wrong() const { return wrong_; }  // once the thread has ended

 private:
  void ask() {
    while (asking_) {
      try {
        askOnce();
        ++answers_;
      } catch (const CORBA::TRANSIENT&) {
        ++refusals_;
      } catch (const globaldefs::ProcessingFailureException& failure) {
        wrong_.emplace_back(failure.errorReason.in());
      } catch (const CORBA::SystemException& failure) {
        wrong_.push_back(orb::describe(failure));
      }
    }
  }

  void expect(CORBA::ULong wanted, CORBA::ULong nodes) {
    if (wanted != nodes) {
      wrong_.push_back(std::to_string(nodes) + " nodes");
    }
  }

  void askOnce() {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    manager_->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    expect(1, nodes->length());
    manager_->setOwner(nodes[0].name, std::to_string(answers_).c_str());
    try {
      NodeList_T_var more;
      iterator->next_n(1000, more.out());
      expect(2, more->length());
    } catch (const CORBA::OBJECT_NOT_EXIST&) {
      ++refusals_;  // it went with the module
    } catch (const CORBA::OBJ_ADAPTER&) {
      ++refusals_;  // its POA was just going
    }
  }

  const TopoMgr_I_var manager_;
  std::atomic<bool> asking_{true};
  std::atomic<int> answers_{0};
  std::atomic<int> refusals_{0};
  Texts wrong_;
  std::thread thread_;
};

TEST(ModuleReloadUnderLoad, LosesNoNotificationAndNoSubscriber) {
  constexpr int kReloads = 100;
  Client client;
  RunningAgent agent({"--ems-name", "E"});
  const TopoAgent::Console_I_var console = client.console(agent);
  for (const char* id : {"a", "b", "c"}) {
    console->createNode(subnetworkNode(id, "", id));
  }
  waitForNotifications(console, 3);
  DirectListener first(client, client.session(agent));
  DirectListener second(client, client.session(agent));
  std::atomic<bool> renaming{true};
  int renames = 0;
  std::thread renamer([&] {
    while (renaming) {
      console->renameNode("a", std::to_string(++renames).c_str());
    }
  });
  int answers = 0;
  int refusals = 0;
  {
    std::vector<std::unique_ptr<Asking>> clients;
    for (int i = 0; i < 4; ++i) {
      clients.push_back(std::make_unique<Asking>(client, agent));
    }
    for (int i = 0; i < kReloads; ++i) {
      console->reloadModule();
    }
    for (const auto& asking : clients) {
      asking->end();
      EXPECT_THAT(asking->wrong(), testing::IsEmpty());
      answers += asking->answers();
      refusals += asking->refusals();
    }
  }
  renaming = false;
  renamer.join();
  EXPECT_LT(0, answers);
  EXPECT_LT(0, refusals);
  for (DirectListener* listener : {&first, &second}) {
    const std::vector<Heard> heard =
        listener->inbox().waitForCount(static_cast<std::size_t>(renames));
    ASSERT_EQ(static_cast<std::size_t>(renames), heard.size());
    for (std::size_t i = 0; i < heard.size(); ++i) {
      ASSERT_EQ(std::to_string(i + 1), heard[i].name);
    }
    listener->subscription()->ping();
  }
  const TopoAgent::Status_T_var status = console->getStatus();
  EXPECT_EQ(kReloads + 1U, status->moduleLoads);
  EXPECT_EQ(TopoAgent::MS_LOADED, status->moduleState);
  EXPECT_EQ(3U, status->subscriptions);
  EXPECT_EQ(2U, status->receivers.length());
  EXPECT_EQ(3U, nodesSeen(client.manager(agent)));
  const support::Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
}

TEST(ModuleReloadUnderLoad, ThatFailsLeavesAnAgentThatCanBeReloaded) {
  Client client;
  const support::TemporaryDirectory directory;
  const std::string module = directory.file("module.so");
  std::filesystem::copy_file(TOPO_MODULE, module);
  RunningAgent agent({"--ems-name", "E", "--module", module});
  const TopoAgent::Console_I_var console = client.console(agent);
  std::filesystem::rename(module, module + ".away");
  try {
    console->reloadModule();
    FAIL() << "reloaded what is not there";
  } catch (const globaldefs::ProcessingFailureException& failure) {
    EXPECT_THAT(failure.errorReason.in(), testing::HasSubstr("no such file"));
  }
  EXPECT_EQ(TopoAgent::MS_MISSING, TopoAgent::Status_T_var(console->getStatus())->moduleState);
  const CORBA::Object_var manager = client.object(agent.endpoint(), object_key::kManager);
  EXPECT_THROW(manager->_non_existent(), CORBA::TRANSIENT);
  console->createNode(subnetworkNode("meanwhile", "", ""));
  std::filesystem::rename(module + ".away", module);
  console->reloadModule();
  EXPECT_EQ(1U, nodesSeen(client.manager(agent)));
  const support::Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status) << ended.err;
}

}  // namespace
}  // namespace integration
