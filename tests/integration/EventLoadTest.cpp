// Events under load: bursts, slow and dead subscribers, and reloads of the module.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <optional>
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

// Repeats a step on its own thread until end() is called. Thread-safety: one thread.
class Repeating {
 public:
  explicit Repeating(const std::function<void()>& step)
      : thread_([this, step] {
          while (going_) {
            step();
            ++times_;
          }
        }) {}

  ~Repeating() { end(); }

  Repeating(const Repeating&) = delete;
  Repeating& operator=(const Repeating&) = delete;

  // Ends and joins the thread. Returns the number of executed steps.
  int end() {
    going_ = false;
    if (thread_.joinable()) {
      thread_.join();
    }
    return times_;
  }

 private:
  std::atomic<bool> going_{true};
  std::atomic<int> times_{0};
  std::thread thread_;
};

// --- Bursts.

void rename(const TopoAgent::Console_I_var& console, int times) {
  for (int i = 1; i <= times; ++i) {
    console->renameNode("core", std::to_string(i).c_str());
  }
}

// Parses a line of "topoctl watch". Returns no value unless the line is a notification or a gap.
std::optional<Heard> readLine(const json& line) {
  Heard heard;
  if (line["event"] == "lost") {
    heard.type = layout::kEventsLost;
    heard.firstLost = idIn(line, "firstLostId");
    heard.lastLost = idIn(line, "lastLostId");
    heard.lostCount = line["lostCount"];
  } else if (line.contains("notificationId")) {
    heard.id = idIn(line, "notificationId");
  } else {
    return std::nullopt;
  }
  return heard;
}

// The id of the only notification of the change that is `changes` changes after the change of `id`.
std::uint64_t idAfter(std::uint64_t id, std::uint64_t changes) {
  return ((id >> 20) + changes) << 20 | 1;
}

class EventBurst : public testing::Test {
 protected:
  // Creates and renames "core", and waits until each subscriber has received both notifications.
  // Then stops one topoctl and kills the other.
  void stopOneAndKillOne() {
    ASSERT_EQ("watching", json::parse(stopped_.readLine())["event"]);
    ASSERT_EQ("watching", json::parse(killed_.readLine())["event"]);
    console_->createNode(subnetworkNode("core", "", "0"));
    console_->renameNode("core", "heard");
    ASSERT_EQ("creation", json::parse(stopped_.readLine())["event"]);
    ASSERT_EQ("change", json::parse(stopped_.readLine())["event"]);
    created_ = healthy_.inbox().waitForCount(2)[0].id;
    stopped_.send(SIGSTOP);
    killed_.send(SIGKILL);
  }

  // Expects a creation and 1 + `renames` changes, without a gap between the ids.
  void expectAllReceived(int renames) {
    const std::size_t expected = static_cast<std::size_t>(renames) + 2;
    const std::vector<Heard> heard = healthy_.inbox().waitForCount(expected);
    ASSERT_EQ(expected, heard.size());
    for (std::size_t i = 2; i < heard.size(); ++i) {
      ASSERT_EQ(std::to_string(i - 1), heard[i].name);
      ASSERT_EQ(idAfter(created_, i), heard[i].id);
    }
  }

  const support::TemporaryDirectory directory_;
  Client client_;
  RunningAgent agent_{{"--ems-name", "E"}, directory_.file("store.db")};
  const TopoAgent::Console_I_var console_ = client_.console(agent_);
  DirectListener healthy_{client_, client_.session(agent_)};
  support::Process stopped_{TOPOCTL, watchArguments(agent_)};
  support::Process killed_{TOPOCTL, watchArguments(agent_)};
  std::uint64_t created_ = 0;
};

TEST_F(EventBurst, ReachesAHealthySubscriberAndReportsAGapToAStoppedOne) {
  constexpr int kRenames = kSanitized ? 20000 : 100000;
  stopOneAndKillOne();
  const long memory = residentKib(agent_.process().pid());
  const TopoMgr_I_var manager = client_.manager(agent_);
  std::atomic<int> wrong{0};
  std::chrono::steady_clock::duration longest{0};
  Repeating queries([&] {
    const auto begin = std::chrono::steady_clock::now();
    wrong += nodesSeen(manager) != 1;
    longest = std::max(longest, std::chrono::steady_clock::now() - begin);
  });
  rename(console_, kRenames);
  EXPECT_LT(10, queries.end());
  EXPECT_EQ(0, wrong);
  EXPECT_GT(std::chrono::seconds(10), longest);
  expectAllReceived(kRenames);
  if (!kSanitized) {
    EXPECT_LT(residentKib(agent_.process().pid()), memory + 64 * 1024);
  }

  stopped_.send(SIGCONT);
  console_->renameNode("core", "end");
  IdAccount account(idAfter(created_, 1));
  while (account.last() != idAfter(created_, kRenames + 2)) {
    if (const auto heard = readLine(json::parse(stopped_.readLine()))) {
      account.add(*heard);
    }
  }
  EXPECT_EQ(kRenames + 1U, account.total());
  EXPECT_LT(0U, account.lost());
  stopped_.send(SIGTERM);
  EXPECT_EQ(0, stopped_.wait().status);
  EXPECT_LE(1U, TopoAgent::Status_T_var(console_->getStatus())->subscribersDropped);
  const support::Ended ended = agent_.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_THAT(ended.err, testing::HasSubstr("is dropped: "));
}

TEST(QueueOfASlowSubscriber, OverflowsAndReportsAGap) {
  constexpr int kRenames = 50;
  constexpr std::size_t kQueue = 5;
  Client client;
  RunningAgent agent({"--ems-name", "E", "--queue", std::to_string(kQueue)});
  const TopoAgent::Console_I_var console = client.console(agent);
  DirectListener slow(client, client.session(agent));
  console->createNode(subnetworkNode("core", "", "0"));
  const std::uint64_t created = slow.inbox().waitForCount(1)[0].id;
  slow.inbox().hold();
  rename(console, kRenames);
  waitForNotifications(console, kRenames + 1);
  slow.inbox().release();
  const std::vector<Heard> heard = slow.inbox().waitUntil(
      [&](const std::vector<Heard>& all) { return all.back().id == idAfter(created, kRenames); });
  IdAccount account(0);
  for (const Heard& event : heard) {
    account.add(event);
  }
  EXPECT_EQ(kRenames + 1U, account.total());
  EXPECT_LE(kRenames - kQueue - 2, account.lost());
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
}

// --- Reloads.

// Calls the manager until end() is called. Counts replies and clean rejections, and collects the
// texts of all other results.
class Caller {
 public:
  Caller(Client& client, const RunningAgent& agent)
      : manager_(client.manager(agent)), repeating_([this] { call(); }) {}

  void end() { repeating_.end(); }

  int replies() const { return replies_; }
  int rejections() const { return rejections_; }
  const Texts& wrong() const { return wrong_; }  // REQUIRES: end() was called

 private:
  void call() {
    try {
      callOnce();
      ++replies_;
    } catch (const CORBA::TRANSIENT&) {
      ++rejections_;
    } catch (const globaldefs::ProcessingFailureException& failure) {
      wrong_.emplace_back(failure.errorReason.in());
    } catch (const CORBA::SystemException& failure) {
      wrong_.push_back(orb::describe(failure));
    }
  }

  void expect(CORBA::ULong wanted, CORBA::ULong nodes) {
    if (wanted != nodes) {
      wrong_.push_back(std::to_string(nodes) + " nodes");
    }
  }

  void callOnce() {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    manager_->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    expect(1, nodes->length());
    manager_->setOwner(nodes[0].name, std::to_string(replies_).c_str());
    try {
      NodeList_T_var more;
      iterator->next_n(1000, more.out());
      expect(2, more->length());
    } catch (const CORBA::OBJECT_NOT_EXIST&) {
      ++rejections_;  // the module was unloaded
    } catch (const CORBA::OBJ_ADAPTER&) {
      ++rejections_;  // the POA of the iterators was being destroyed
    }
  }

  const TopoMgr_I_var manager_;
  std::atomic<int> replies_{0};
  std::atomic<int> rejections_{0};
  Texts wrong_;
  Repeating repeating_;
};

// Reloads the module while four clients call the manager.
void reloadUnderLoad(Client& client, const RunningAgent& agent, int reloads) {
  std::vector<std::unique_ptr<Caller>> clients;
  for (int i = 0; i < 4; ++i) {
    clients.push_back(std::make_unique<Caller>(client, agent));
  }
  const TopoAgent::Console_I_var console = client.console(agent);
  for (int i = 0; i < reloads; ++i) {
    console->reloadModule();
  }
  int replies = 0;
  int rejections = 0;
  for (const auto& caller : clients) {
    caller->end();
    EXPECT_THAT(caller->wrong(), testing::IsEmpty());
    replies += caller->replies();
    rejections += caller->rejections();
  }
  EXPECT_LT(0, replies);
  EXPECT_LT(0, rejections);
}

// A "topoctl watch" whose output is read continuously on another thread, so that topoctl never
// blocks in writing. Thread-safety: one thread.
class Watched {
 public:
  explicit Watched(const RunningAgent& agent)
      : process_(TOPOCTL, watchArguments(agent)),
        watching_(json::parse(process_.readLine())),
        reader_([this] { read(); }) {}

  ~Watched() {
    if (reader_.joinable()) {
      process_.send(SIGTERM);
      reader_.join();
    }
  }

  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

  // Waits for the change of the name to "end". Expects that the lines before are changes to 1, 2, 3
  // and so on. Returns the number of these lines.
  int expectRenames() {
    reader_.join();
    int renames = 0;
    for (const json& line : lines_) {
      if (!isEnd(line)) {
        EXPECT_EQ(std::to_string(++renames), newName(line)) << line;
      }
    }
    EXPECT_EQ("watching", watching_["event"]);
    process_.send(SIGTERM);
    EXPECT_EQ(0, process_.wait().status);
    return renames;
  }

 private:
  void read() {
    for (std::string line = process_.readLine(); !line.empty(); line = process_.readLine()) {
      lines_.push_back(json::parse(line));
      if (isEnd(lines_.back())) {
        return;
      }
    }
  }

  static std::string newName(const json& line) {
    return line.value("event", "") == "change" ? line["attributes"][0]["value"] : json("none");
  }

  static bool isEnd(const json& line) { return newName(line) == "end"; }

  support::Process process_;
  const json watching_;
  std::vector<json> lines_;
  std::thread reader_;
};

// Expects changes of the name to 1, 2, 3 and so on, and a subscription that is still valid.
void expectRenames(DirectListener& listener, int renames) {
  const auto expected = static_cast<std::size_t>(renames);
  const std::vector<Heard> heard = listener.inbox().waitForCount(expected);
  ASSERT_EQ(expected, heard.size());
  for (std::size_t i = 0; i < heard.size(); ++i) {
    ASSERT_EQ(std::to_string(i + 1), heard[i].name);
  }
  listener.subscription()->ping();
}

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
  Watched one(agent);
  Watched two(agent);
  int name = 0;
  Repeating renaming([&] { console->renameNode("a", std::to_string(++name).c_str()); });
  reloadUnderLoad(client, agent, kReloads);
  const int renames = renaming.end();
  expectRenames(first, renames);
  expectRenames(second, renames);
  console->renameNode("a", "end");
  EXPECT_EQ(renames, one.expectRenames());
  EXPECT_EQ(renames, two.expectRenames());
  const TopoAgent::Status_T_var status = console->getStatus();
  EXPECT_EQ(kReloads + 1U, status->moduleLoads);
  EXPECT_EQ(TopoAgent::MS_LOADED, status->moduleState);
  EXPECT_EQ(3U, status->subscriptions);
  EXPECT_EQ(2U, status->receivers.length());  // both topoctl processes have unsubscribed
  EXPECT_EQ(3U, nodesSeen(client.manager(agent)));
  const support::Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
}

void import(const RunningAgent& agent, const std::string& prefix, int nodes) {
  json network = {{"format", "topo-network/1"}, {"topoNodes", json::array()}};
  for (int i = 0; i < nodes; ++i) {
    network["topoNodes"].push_back({{"id", prefix + std::to_string(i)}});
  }
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("network.json", network.dump());
  const support::Ended ended = runTopoctl({"--ior-file", agent.iorFile(), "import", file});
  ASSERT_EQ(0, ended.status) << ended.err;
}

// Ids follow each other up to a gap. A gap without a number is for the events that the module has
// not handled.
void expectAllOrAGap(const std::vector<Heard>& heard, std::size_t nodes) {
  ASSERT_FALSE(heard.empty());
  for (std::size_t i = 1; i < heard.size() && heard[i].type != layout::kEventsLost; ++i) {
    ASSERT_EQ(heard[i - 1].id + 1, heard[i].id);
  }
  if (heard.back().type == layout::kEventsLost) {
    EXPECT_EQ(0U, heard.back().lostCount);
    EXPECT_GT(nodes, heard.size() - 1);
  } else {
    EXPECT_EQ(nodes, heard.size());
  }
}

TEST(ModuleReloadUnderLoad, AndStopAreInTimeRightAfterAnImport) {
  using Clock = std::chrono::steady_clock;
  constexpr int kNodes = kSanitized ? 2500 : 5000;
  Client client;
  RunningAgent agent({"--ems-name", "E", "--queue", "100000"});
  DirectListener listener(client, client.session(agent));
  const TopoAgent::Console_I_var console = client.console(agent);
  import(agent, "a", kNodes);
  const auto reload = Clock::now();
  console->reloadModule();
  EXPECT_LT(Clock::now() - reload, std::chrono::seconds(5));
  console->createNode(subnetworkNode("after", "", ""));
  std::vector<Heard> heard = listener.inbox().waitUntil(
      [](const std::vector<Heard>& all) { return all.back().object == "TopoSubnetwork=after"; });
  heard.pop_back();
  expectAllOrAGap(heard, kNodes);
  import(agent, "b", kNodes);
  const auto stop = Clock::now();
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
  EXPECT_LT(Clock::now() - stop, std::chrono::seconds(10));
}

// A reload rejects the first call of topoctl, or ends its iterator.
TEST(ModuleReloadUnderLoad, DoesNotDisturbTopoctl) {
  Client client;
  RunningAgent agent({"--ems-name", "E"});
  import(agent, "a", 50);
  const TopoAgent::Console_I_var console = client.console(agent);
  std::atomic<bool> reloaded{false};
  const auto reloads = std::async(std::launch::async, [&] {
    console->reloadModule();
    console->reloadModule();
    reloaded = true;
  });
  while (!reloaded) {
    const support::Ended ended =
        runTopoctl({"--ior-file", agent.iorFile(), "topo", "--how-many", "1"});
    ASSERT_EQ(0, ended.status) << ended.err;
  }
}

// Writes the content of `source` into the existing file `target`, as cp does.
void overwrite(const std::string& target, const std::string& source) {
  std::ofstream(target, std::ios::binary | std::ios::trunc) << support::readFile(source);
}

// The reason of the failed reload; empty after a successful reload.
std::string reasonAgainstReload(TopoAgent::Console_I_ptr console) {
  try {
    console->reloadModule();
    return "";
  } catch (const globaldefs::ProcessingFailureException& failure) {
    return failure.errorReason.in();
  }
}

// Copies the module to the file and returns the file.
std::string copyOfModule(const std::string& file) {
  std::filesystem::copy_file(TOPO_MODULE, file);
  return file;
}

// An agent, and a client of it, with a module file that a test replaces.
struct AgentWithOwnModule {
  std::size_t nodesSeen() { return integration::nodesSeen(client.manager(agent)); }
  std::string reasonAgainstReload() { return integration::reasonAgainstReload(console.in()); }

  void expectCleanStop() {
    const support::Ended ended = agent.stop(SIGTERM);
    EXPECT_EQ(0, ended.status) << ended.err;
  }

  const support::TemporaryDirectory directory;
  const std::string module = copyOfModule(directory.file("module.so"));
  Client client;
  RunningAgent agent{{"--ems-name", "E", "--module", module}};
  const TopoAgent::Console_I_var console = client.console(agent);
};

TEST(ModuleFile, MayBeOverwrittenWhileTheModuleServes) {
  AgentWithOwnModule served;
  served.directory.write("module.so", std::string(100000, 'x'));
  served.console->createNode(subnetworkNode("a", "", ""));
  EXPECT_EQ(1U, served.nodesSeen());
  EXPECT_EQ("module " + served.module + ": invalid ELF header", served.reasonAgainstReload());
  overwrite(served.module, TOPO_IDL);
  EXPECT_THAT(served.reasonAgainstReload(), testing::HasSubstr("it has no "));
  EXPECT_EQ(1U, served.nodesSeen());
  TopoAgent::Status_T_var status = served.console->getStatus();
  EXPECT_EQ(TopoAgent::MS_LOADED, status->moduleState);
  EXPECT_EQ(1U, status->moduleLoads);
  overwrite(served.module, TOPO_MODULE);
  EXPECT_EQ("", served.reasonAgainstReload());
  status = served.console->getStatus();
  EXPECT_EQ(2U, status->moduleLoads);
  EXPECT_EQ(1U, served.nodesSeen());
  served.expectCleanStop();
}

TEST(ModuleReloadUnderLoad, CanBeRepeatedAfterAFailure) {
  AgentWithOwnModule served;
  DirectListener listener(served.client, served.client.session(served.agent));
  const std::string prefix = "module " + served.module + ": ";
  overwrite(served.module, TOPO_REFUSING_MODULE);
  EXPECT_THAT(served.reasonAgainstReload(), testing::HasSubstr(prefix + "its init returned -1"));
  EXPECT_EQ(TopoAgent::MS_MISSING,
            TopoAgent::Status_T_var(served.console->getStatus())->moduleState);
  const CORBA::Object_var manager =
      served.client.object(served.agent.endpoint(), object_key::kManager);
  EXPECT_THROW(manager->_non_existent(), CORBA::TRANSIENT);
  const support::Ended topo = runTopoctl({"--ior-file", served.agent.iorFile(), "topo"});
  EXPECT_EQ(2, topo.status);
  EXPECT_THAT(topo.err, testing::HasSubstr(" has no module loaded (" + prefix));
  served.console->createNode(subnetworkNode("meanwhile", "", ""));
  overwrite(served.module, TOPO_MODULE);
  served.console->reloadModule();
  EXPECT_EQ(1U, served.nodesSeen());
  served.console->createNode(subnetworkNode("after", "", ""));
  const std::vector<Heard> heard = listener.inbox().waitForCount(2);
  EXPECT_EQ(layout::kEventsLost, heard[0].type);
  EXPECT_EQ(heard[0].lastLost, heard[0].firstLost);
  EXPECT_EQ(0U, heard[0].lostCount);
  EXPECT_EQ("TopoSubnetwork=after", heard[1].object);
  EXPECT_LT(heard[0].lastLost, heard[1].id);
  served.expectCleanStop();
}

}  // namespace
}  // namespace integration
