// An agent whose disk, memory or clock fails while it serves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/integration/InjectedFaults.h"
#include "tests/integration/Listeners.h"
#include "tests/support/EnvironmentVariable.h"

namespace integration {
namespace {

using globaldefs::ProcessingFailureException;
using testing::HasSubstr;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T_var;
using TopoManagementManager::TopoMgr_I_var;

// The names of nodes by their ids.
using Nodes = std::map<std::string, std::string>;

Nodes nodesOf(const TopoMgr_I_var& manager) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(1000000, nodes.out(), iterator.out());
  Nodes result;
  for (CORBA::ULong i = 0; i < nodes->length(); ++i) {
    result[nodes[i].name[1].value.in()] = nodes[i].nativeEMSName;
  }
  return result;
}

// Returns the type of the exception that refuses a request, or -1 after a success.
template <typename Request>
int refusalOf(Request request) {
  try {
    request();
    return -1;
  } catch (const ProcessingFailureException& failure) {
    return failure.exceptionType;
  }
}

globaldefs::NVSList_T nameOfNode(const std::string& id) {
  globaldefs::NVSList_T name;
  name.length(2);
  name[0].name = "EMS";
  name[0].value = "E";
  name[1].name = "TopoSubnetwork";
  name[1].value = id.c_str();
  return name;
}

// An agent with a store, and a client that changes its network.
struct ChangedAgent {
  explicit ChangedAgent(const std::string& store, const std::vector<std::string>& arguments = {},
                        const Programs& programs = ownPrograms())
      : agent(joined(arguments), store, "127.0.0.1:0", programs) {}

  void create(const std::string& id, const std::string& name = "") {
    console->createNode(subnetworkNode(id, "", name));
  }

  Nodes nodes() { return nodesOf(manager); }

  // Expects that the agent refuses changes of every kind, and serves the network as it was.
  void expectRefusedChanges() {
    const Nodes before = nodes();
    const std::string& id = before.begin()->first;
    const globaldefs::NVSList_T name = nameOfNode(id);
    const std::string text(100000, 'x');
    const int internalError = globaldefs::EXCPT_INTERNAL_ERROR;
    EXPECT_EQ(internalError, refusalOf([&] { create("refused", text); }));
    EXPECT_EQ(internalError, refusalOf([&] { console->renameNode(id.c_str(), text.c_str()); }));
    EXPECT_EQ(internalError, refusalOf([&] { manager->setOwner(name, text.c_str()); }));
    EXPECT_EQ(before, nodes());
  }

  static std::vector<std::string> joined(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--ems-name", "E", "--module", TOPO_MODULE});
    return arguments;
  }

  Client client;
  RunningAgent agent;
  const TopoAgent::Console_I_var console = client.console(agent);
  const TopoMgr_I_var manager = client.manager(agent);
};

// --- Limits of the system.

// Sets the largest size to which a process can write a file.
void limitFiles(pid_t process, rlim_t bytes) {
  const rlimit limit{bytes, RLIM_INFINITY};
  ASSERT_EQ(0, prlimit(process, RLIMIT_FSIZE, &limit, nullptr));
}

TEST(FilesThatCannotGrow, RefuseChangesUntilTheyCan) {
  const support::TemporaryDirectory directory;
  const std::string store = directory.file("store.db");
  Nodes expected = {{"before", ""}, {"after", ""}};
  {
    ChangedAgent changed(store);
    const pid_t process = changed.agent.process().pid();
    changed.create("before");
    limitFiles(process, std::filesystem::file_size(store + "-wal"));
    changed.expectRefusedChanges();
    limitFiles(process, RLIM_INFINITY);
    changed.create("after");
    EXPECT_EQ(expected, changed.nodes());
    const support::Ended ended = changed.agent.stop(SIGTERM);
    EXPECT_EQ(0, ended.status);
    EXPECT_THAT(ended.err, HasSubstr(store + ": disk I/O error"));
  }
  ChangedAgent restarted(store);
  EXPECT_EQ(expected, restarted.nodes());
}

// --- Injected faults.

// The file with the faults of a faulty_agent. The environment of the agent has the path of the
// file.
class Faults {
 public:
  Faults() : faults_(mapInjectedFaults(directory_.file("faults").c_str())) {
    if (faults_ == nullptr) {
      throw std::runtime_error("no file of faults");
    }
  }

  InjectedFaults* operator->() const { return faults_; }

 private:
  const support::TemporaryDirectory directory_;
  const support::EnvironmentVariable variable_{
      kInjectedFaultsVariable,
      directory_.write("faults", std::string(sizeof(InjectedFaults), '\0'))};
  InjectedFaults* const faults_;
};

class FaultyAgent : public testing::Test {
 protected:
  void start(const std::vector<std::string>& arguments = {}) {
    changed_ =
        std::make_unique<ChangedAgent>(store_, arguments, Programs{TOPO_FAULTY_AGENT, TOPOCTL});
  }

  void expectCleanStopAndNodes(const Nodes& expected) {
    EXPECT_EQ(0, stop().status);
    ChangedAgent restarted(store_);
    EXPECT_EQ(expected, restarted.nodes());
  }

  support::Ended stop() {
    const support::Ended ended = changed_->agent.stop(SIGTERM);
    changed_.reset();
    return ended;
  }

  const support::TemporaryDirectory directory_;
  const std::string store_ = directory_.file("store.db");
  Faults faults_;
  std::unique_ptr<ChangedAgent> changed_;
};

class FaultyDisk : public FaultyAgent, public testing::WithParamInterface<int> {};

TEST_P(FaultyDisk, RefusesChangesUntilItIsRepaired) {
  start();
  changed_->create("before");
  faults_->diskError = GetParam();
  changed_->expectRefusedChanges();
  changed_->expectRefusedChanges();
  EXPECT_EQ(
      static_cast<int>(globaldefs::EXCPT_INTERNAL_ERROR), refusalOf([this] {
        const CORBA::ULongLong backup = changed_->console->beginBackup();
        while (!TopoAgent::BackupPart_T_var(changed_->console->continueBackup(backup))->isLast) {
        }
      }));
  faults_->diskError = 0;
  changed_->create("after");
  const Nodes expected = {{"before", ""}, {"after", ""}};
  EXPECT_EQ(expected, changed_->nodes());
  expectCleanStopAndNodes(expected);
}

INSTANTIATE_TEST_SUITE_P(EveryError, FaultyDisk, testing::Values(ENOSPC, EROFS, EIO, EDQUOT),
                         [](const auto& error) {
                           return std::string(error.param == ENOSPC   ? "Full"
                                              : error.param == EROFS  ? "ReadOnly"
                                              : error.param == EDQUOT ? "OverQuota"
                                                                      : "Broken");
                         });

class FaultyMemory : public FaultyAgent {
 protected:
  // Makes a request many times, each time with a failure of a different allocation of the agent.
  // `most` limits the number of requests, with equal distances between the allocations; 0: every
  // allocation. The request gets the number of the allocation. Returns the number of failed
  // requests.
  template <typename Request>
  int failEachAllocation(Request request, long most = 0) {
    const long count = allocationsOf([&] { request(0); });
    const long stride = most == 0 ? 1 : count / most + 1;
    int failures = 0;
    for (long number = 1; number <= count && !HasFailure(); number += stride) {
      SCOPED_TRACE("allocation " + std::to_string(number) + " of " + std::to_string(count));
      connect();
      faults_->failingAllocation = number;
      const std::string outcome = outcomeOf([&] { request(number); });
      faults_->failingAllocation = 0;
      EXPECT_THAT(outcome, testing::AnyOf("", "internal error", "NO_MEMORY", "NO_RESOURCES",
                                          "COMM_FAILURE"));
      failures += outcome.empty() ? 0 : 1;
    }
    return failures;
  }

  // Returns the number of allocations of the agent during a request that succeeds.
  template <typename Request>
  long allocationsOf(Request request) {
    constexpr long kMany = 1000000000;
    connect();
    faults_->failingAllocation = kMany;
    EXPECT_EQ("", outcomeOf(request));
    return kMany - faults_->failingAllocation.exchange(0);
  }

  // Connects to the agent again. The agent closes a connection when it cannot receive a request,
  // and the client may notice only with the next request. An agent that has ended is started again,
  // as the service manager does.
  void connect() {
    if (serves() || serves()) {
      return;
    }
    changed_.reset();
    start();
    ++ends_;
    EXPECT_TRUE(serves());
  }

  bool serves() {
    return outcomeOf([this] { changed_->manager->_non_existent(); }).empty();
  }

  // Returns the exception of a request; "" after a success.
  template <typename Request>
  static std::string outcomeOf(Request request) {
    try {
      request();
      return "";
    } catch (const ProcessingFailureException& failure) {
      return failure.exceptionType == globaldefs::EXCPT_INTERNAL_ERROR
                 ? "internal error"
                 : std::string("refused: ") + failure.errorReason.in();
    } catch (const CORBA::SystemException& failure) {
      return failure._name();
    }
  }

  int ends_ = 0;  // how often the agent has ended
};

TEST_F(FaultyMemory, FailsARequestAndChangesNothingOrAll) {
  start();
  const std::string name = "a name that needs memory";
  Nodes expected;
  std::vector<std::string> unknown;
  const int failures = failEachAllocation([&](long number) {
    const std::string id = "a node with a long id " + std::to_string(number);
    try {
      changed_->create(id, name);
      expected[id] = name;
    } catch (const CORBA::SystemException& failure) {
      if (failure.completed() != CORBA::COMPLETED_NO) {
        unknown.push_back(id);
      }
      throw;
    }
  });
  EXPECT_LT(3, failures);
  EXPECT_EQ(0, ends_);
  const Nodes seen = changed_->nodes();
  for (const std::string& id : unknown) {
    if (seen.count(id) != 0) {
      expected[id] = name;
    }
  }
  EXPECT_EQ(expected, seen);
  expectCleanStopAndNodes(expected);
}

TEST_F(FaultyMemory, FailsAViewOrEndsTheAgentAndLosesNothing) {
  constexpr long kFaults = 10;
  start();
  Nodes expected;
  for (int i = 0; i < 20; ++i) {
    const std::string id = "node " + std::to_string(i);
    changed_->create(id, id);
    expected[id] = id;
  }
  const auto view = [&](long) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    changed_->manager->getTopoSubnetworkViewInfo(5, nodes.out(), iterator.out());
    NodeList_T_var more;
    iterator->next_n(10, more.out());
    EXPECT_EQ(10U, more->length());
    iterator->destroy();
  };
  EXPECT_LT(3, failEachAllocation(view, kFaults));
  connect();
  EXPECT_EQ(expected, changed_->nodes());
  expectCleanStopAndNodes(expected);
}

// The exit status of a stop without memory is not checked.
TEST_F(FaultyMemory, LosesNoChangeInAStop) {
  Nodes expected;
  for (long number = 1; number < 60; number += 15) {
    const std::string id = std::to_string(number);
    start();
    changed_->create(id);
    expected[id] = "";
    faults_->failingAllocation = number;
    stop();
    faults_->failingAllocation = 0;
  }
  start();
  EXPECT_EQ(expected, changed_->nodes());
}

class FaultyClock : public FaultyAgent {
 protected:
  static constexpr long kDay = 24L * 60 * 60;

  NodeIterator_I_var openIterator() {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    changed_->manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    return iterator;
  }

  CORBA::ULong iterators() {
    return TopoAgent::Status_T_var(changed_->console->getStatus())->iterators;
  }
};

TEST_F(FaultyClock, EndsNoIteratorAndNoSubscription) {
  constexpr std::chrono::milliseconds kReclaimInterval{250};
  start();
  DirectListener listener(changed_->client, changed_->client.session(changed_->agent));
  std::size_t changes = 0;
  for (const char* const id : {"a", "b", "c"}) {
    changed_->create(id);
    ++changes;
  }
  ASSERT_EQ(changes, listener.inbox().waitForCount(changes).size());
  const NodeIterator_I_var iterator = openIterator();
  for (const long step : {kDay, -kDay}) {
    faults_->clockStep = step;
    const auto end = std::chrono::steady_clock::now() + 3 * kReclaimInterval;
    while (std::chrono::steady_clock::now() < end) {
      EXPECT_EQ(1U, iterators());
    }
    changed_->console->renameNode("a", std::to_string(step).c_str());
    ++changes;
    const std::vector<Heard> heard = listener.inbox().waitForCount(changes);
    ASSERT_EQ(changes, heard.size());
    EXPECT_LT(heard[changes - 2].id, heard[changes - 1].id);
    listener.subscription()->ping();
    NodeList_T_var more;
    iterator->next_n(1, more.out());
    EXPECT_EQ(1U, more->length());
  }
}

TEST_F(FaultyClock, DoesNotProlongTheTimeoutOfAnIterator) {
  start({"--iterator-timeout", "1"});
  changed_->create("a");
  changed_->create("b");
  const NodeIterator_I_var iterator = openIterator();
  faults_->clockStep = -kDay;
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (iterators() != 0 && std::chrono::steady_clock::now() < end) {
    changed_->nodes();
  }
  EXPECT_EQ(0U, iterators());
  EXPECT_EQ(0, stop().status);
}

}  // namespace
}  // namespace integration
