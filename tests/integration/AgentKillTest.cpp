// SIGKILL at random moments while clients change the network. After the restart the store has every
// acknowledged change. A change whose reply the kill prevented may be there, and no other change
// is.

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <list>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/integration/Listeners.h"
#include "tests/property/Random.h"

namespace integration {
namespace {

using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T_var;

// The names of nodes by their ids.
using Nodes = std::map<std::string, std::string>;

Nodes nodesOf(Client& client, const RunningAgent& agent) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  client.manager(agent)->getTopoSubnetworkViewInfo(1000000, nodes.out(), iterator.out());
  Nodes result;
  for (CORBA::ULong i = 0; i < nodes->length(); ++i) {
    result[nodes[i].name[1].value.in()] = nodes[i].nativeEMSName;
  }
  return result;
}

// The result of SQLite's checks of a store with its log. The checks run on a copy, because opening
// a database recovers the log of a killed process.
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

// A client that changes its own nodes, one change at a time, and keeps the acknowledged state of
// the nodes. Thread-safety: one thread at a time.
class Changer {
 public:
  Changer(std::string prefix, unsigned seed) : prefix_(std::move(prefix)), engine_(seed) {}

  // Changes nodes until the agent does not answer.
  void changeUntilKilled(const TopoAgent::Console_I_var& console) {
    try {
      for (;;) {
        changeOne(console);
      }
    } catch (const CORBA::SystemException&) {
      // The agent was killed.
    } catch (const globaldefs::ProcessingFailureException& failure) {
      ADD_FAILURE() << failure.errorReason.in();
    }
  }

  // Call after a restart. Adds the nodes of this client to `expected`. The change without a reply
  // is expected if `seen` has the change.
  void addExpected(const Nodes& seen, Nodes& expected) {
    if (pending_) {
      const auto found = seen.find(pending_->id);
      const bool isDone = pending_->name ? found != seen.end() && found->second == *pending_->name
                                         : found == seen.end();
      if (isDone) {
        acknowledge();
      }
      pending_.reset();
    }
    expected.insert(nodes_.begin(), nodes_.end());
  }

  int changes() const { return changes_; }

 private:
  // A change whose reply is missing: the new name of the node, or its deletion.
  struct Pending {
    std::string id;
    std::optional<std::string> name;
  };

  void changeOne(const TopoAgent::Console_I_var& console) {
    const int kind = number(0, 9);
    const std::string name = "name " + std::to_string(++changes_);
    if (kind < 4 || nodes_.empty()) {
      pending_ = Pending{prefix_ + std::to_string(changes_), name};
      console->createNode(subnetworkNode(pending_->id, "", name));
    } else if (kind < 7) {
      pending_ = Pending{anyNode(), name};
      console->renameNode(pending_->id.c_str(), name.c_str());
    } else {
      pending_ = Pending{anyNode(), std::nullopt};
      console->deleteNode(pending_->id.c_str());
    }
    acknowledge();
    pending_.reset();
  }

  void acknowledge() {
    if (pending_->name) {
      nodes_[pending_->id] = *pending_->name;
    } else {
      nodes_.erase(pending_->id);
    }
  }

  std::string anyNode() {
    return std::next(nodes_.begin(), number(0, static_cast<int>(nodes_.size()) - 1))->first;
  }

  int number(int first, int last) {
    return std::uniform_int_distribution<int>(first, last)(engine_);
  }

  const std::string prefix_;
  std::mt19937 engine_;
  Nodes nodes_;
  std::optional<Pending> pending_;
  int changes_ = 0;
};

class AgentKill : public testing::Test {
 protected:
  static constexpr int kClients = 3;

  AgentKill() {
    for (int i = 0; i < kClients; ++i) {
      changers_.emplace_back(std::string(1, static_cast<char>('a' + i)),
                             static_cast<unsigned>(random_.number(0, 1 << 30)));
    }
  }

  // The environment variable TOPO_TEST_KILLS sets the number of kills.
  static int chosenKills() {
    const char* const given = std::getenv("TOPO_TEST_KILLS");
    return given != nullptr ? std::stoi(given) : kSanitized ? 10 : 100;
  }

  // The moment of a kill is random in time, so that a kill may hit each step of a change.
  void waitForARandomMoment(int longestMicroseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(random_.number(0, longestMicroseconds)));
  }

  // Kills an agent that is starting.
  void killAStart() {
    support::Process starting(TOPO_AGENTD,
                              {"--endpoint", "127.0.0.1:0", "--store", store_, "--create"});
    waitForARandomMoment(100000);
    starting.send(SIGKILL);
    starting.wait();
  }

  void killUnderLoad() {
    RunningAgent agent({"--ems-name", "E"}, store_);
    expectAcknowledgedChanges(agent);
    DirectListener listener(client_, client_.session(agent));
    const TopoAgent::Console_I_var console = client_.console(agent);
    std::vector<std::thread> threads;
    for (Changer& changer : changers_) {
      threads.emplace_back([&] { changer.changeUntilKilled(console); });
    }
    waitForARandomMoment(200000);
    agent.process().send(SIGKILL);
    for (std::thread& thread : threads) {
      thread.join();
    }
    agent.process().wait();
    expectRisingIds(listener.inbox().all());
  }

  void expectAcknowledgedChanges(const RunningAgent& agent) {
    const Nodes seen = nodesOf(client_, agent);
    Nodes expected;
    for (Changer& changer : changers_) {
      changer.addExpected(seen, expected);
    }
    EXPECT_TRUE(expected == seen) << firstDifference(expected, seen);
  }

  void expectRisingIds(const std::vector<Heard>& all) {
    for (const Heard& heard : all) {
      ASSERT_LT(lastId_, heard.id);
      lastId_ = heard.id;
    }
  }

  static std::string firstDifference(const Nodes& expected, const Nodes& seen) {
    for (const auto& [id, name] : expected) {
      const auto found = seen.find(id);
      if (found == seen.end() || found->second != name) {
        return id + " has not the acknowledged name " + name;
      }
    }
    for (const auto& [id, name] : seen) {
      if (expected.count(id) == 0) {
        return id + " was not created or was deleted, but has the name " + name;
      }
    }
    return "";
  }

  int changes() const {
    int all = 0;
    for (const Changer& changer : changers_) {
      all += changer.changes();
    }
    return all;
  }

  const int kills_ = chosenKills();
  Random random_;
  const support::TemporaryDirectory directory_;
  const std::string store_ = directory_.file("store.db");
  Client client_;
  std::list<Changer> changers_;
  std::uint64_t lastId_ = 0;
};

TEST_F(AgentKill, AtRandomMomentsLosesNoAcknowledgedChangeAndAddsNone) {
  for (int kill = 0; kill < kills_; ++kill) {
    SCOPED_TRACE("kill " + std::to_string(kill) + " of seed " + std::to_string(random_.seed()));
    if (random_.number(0, 9) == 0) {
      killAStart();
    } else {
      killUnderLoad();
    }
    EXPECT_EQ("ok", integrityOf(store_));
    ASSERT_FALSE(HasFailure());
  }
  EXPECT_LT(kills_, changes());
  RunningAgent agent({"--ems-name", "E"}, store_);
  expectAcknowledgedChanges(agent);
  DirectListener listener(client_, client_.session(agent));
  client_.console(agent)->createNode(subnetworkNode("last", "", ""));
  expectRisingIds(listener.inbox().waitForCount(1));
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
  EXPECT_EQ("ok", integrityOf(store_));
}

}  // namespace
}  // namespace integration
