// Many concurrent clients, and abandoned iterators.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"
#include "tests/integration/Programs.h"

namespace integration {
namespace {

using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_var;
using TopoManagementManager::TopoMgr_I;
using TopoManagementManager::TopoMgr_I_var;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";

// --- Views as texts, for comparison.

std::string text(const globaldefs::NVSList_T& pairs) {
  std::string result;
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    result += std::string(pairs[i].name.in()) + "=" + pairs[i].value.in() + ",";
  }
  return result;
}

std::string text(const TopoManagementManager::Node_T& node) {
  return text(node.name) + "|" + node.nativeEMSName.in() + "|" + text(node.relatedName) + "\n";
}

std::string text(const topologicalLink::TopologicalLink_T& link) {
  return text(link.name) + "|" + link.userLabel.in() + "|" + text(link.aEndTP) + "|" +
         text(link.zEndTP) + "\n";
}

template <typename List>
std::string text(const List& list) {
  std::string result;
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    result += text(list[i]);
  }
  return result;
}

// A whole view, fetched in batches.
template <typename List, typename Iterator, typename View>
std::string fetch(const View& view, CORBA::ULong batch) {
  typename List::_var_type list;
  typename Iterator::_var_type iterator;
  view(batch, list.out(), iterator.out());
  std::string result = text(list.in());
  for (bool more = !CORBA::is_nil(iterator); more;) {
    more = iterator->next_n(batch, list.out());
    result += text(list.in());
  }
  return result;
}

globaldefs::NVSList_T subnetworkName(const TopoMgr_I_var& manager) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
  iterator->destroy();
  return nodes[0].name;
}

// The requests of a client, by number.
constexpr int kViews = 5;

std::string ask(const TopoMgr_I_var& manager, int view, const globaldefs::NVSList_T& subnetwork,
                CORBA::ULong batch) {
  using topologicalLink::TopologicalLinkIterator_I;
  using topologicalLink::TopologicalLinkList_T;
  switch (view) {
    case 0:
      return fetch<NodeList_T, NodeIterator_I>(
          [&](auto n, auto&& list, auto&& it) { manager->getTopoSubnetworkViewInfo(n, list, it); },
          batch);
    case 1:
      return fetch<NodeList_T, NodeIterator_I>(
          [&](auto n, auto&& list, auto&& it) {
            manager->getProtectSubnetworkViewInfo(n, list, it);
          },
          batch);
    case 2:
      return fetch<NodeList_T, NodeIterator_I>(
          [&](auto n, auto&& list, auto&& it) {
            manager->getViewInfoByTopoSubnetwork(subnetwork, n, list, it);
          },
          batch);
    case 3:
      return fetch<NodeList_T, NodeIterator_I>(
          [&](auto n, auto&& list, auto&& it) {
            manager->getClockSourceSubnetworkViewInfo(n, list, it);
          },
          batch);
    default:
      return fetch<TopologicalLinkList_T, TopologicalLinkIterator_I>(
          [&](auto n, auto&& list, auto&& it) {
            manager->getAllClockSourceViewlTopologicalLinks(n, list, it);
          },
          batch);
  }
}

class Load : public testing::Test {
 protected:
  TopoMgr_I_var managerOf(const RunningAgent& agent) {
    const CORBA::Object_var object = client_->get()->string_to_object(agent.reference().c_str());
    return TopoMgr_I::_narrow(object);
  }

  std::unique_ptr<orb::Orb> client_ = orb::startClient({});
};

std::chrono::seconds loadTime() {
  const char* seconds = std::getenv("TOPO_LOAD_SECONDS");
  return std::chrono::seconds(seconds != nullptr ? std::atoi(seconds) : 5);
}

TEST_F(Load, SixteenConcurrentClientsGetCorrectReplies) {
  RunningAgent agent({"--network", kBackbone});
  const TopoMgr_I_var manager = managerOf(agent);
  const globaldefs::NVSList_T subnetwork = subnetworkName(manager);
  std::vector<std::string> expected;
  for (int view = 0; view < kViews; ++view) {
    expected.push_back(ask(manager, view, subnetwork, 100000));
    ASSERT_FALSE(expected.back().empty()) << view;
  }
  const auto end = std::chrono::steady_clock::now() + loadTime();
  std::atomic<int> wrong{0};
  std::atomic<int> asked{0};
  std::vector<std::thread> clients;
  for (unsigned seed = 0; seed < 16; ++seed) {
    clients.emplace_back([&, seed] {
      std::mt19937 random(seed);
      while (std::chrono::steady_clock::now() < end) {
        if (random() % 8 == 0) {
          manager->setOwner(subnetwork, ("client " + std::to_string(seed)).c_str());
        }
        const int view = static_cast<int>(random() % kViews);
        const auto batch = static_cast<CORBA::ULong>(1 + random() % 20);
        wrong += ask(manager, view, subnetwork, batch) != expected[static_cast<std::size_t>(view)];
        ++asked;
      }
    });
  }
  for (std::thread& thread : clients) {
    thread.join();
  }
  EXPECT_EQ(0, wrong) << "of " << asked;
  const support::Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
}

TEST_F(Load, OneIteratorUsedByManyThreadsDeliversEveryRecordOnce) {
  RunningAgent agent({"--network", kBackbone});
  const TopoMgr_I_var manager = managerOf(agent);
  const std::string all = ask(manager, 0, {}, 100000);
  for (int round = 0; round < 20; ++round) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    std::mutex mutex;
    std::multiset<std::string> delivered = {text(nodes[0])};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&] {
        try {
          for (bool more = true; more;) {
            NodeList_T_var batch;
            more = iterator->next_n(2, batch.out());
            const std::lock_guard<std::mutex> lock(mutex);
            for (CORBA::ULong k = 0; k < batch->length(); ++k) {
              delivered.insert(text(batch[k]));
            }
          }
        } catch (const CORBA::OBJECT_NOT_EXIST&) {
          // Another thread has received the last batch.
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    std::multiset<std::string> expected;
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line);) {
      expected.insert(line + "\n");
    }
    ASSERT_EQ(expected, delivered);
  }
}

// --- Abandoned iterators.

std::size_t descriptors(pid_t pid) {
  const std::filesystem::directory_iterator all("/proc/" + std::to_string(pid) + "/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// Waits until the process has less resident memory: the agent returns freed memory to the system
// within five seconds after the last view.
bool becomesSmallerThan(long kib, pid_t process) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (residentKib(process) >= kib && std::chrono::steady_clock::now() < end) {
    std::this_thread::yield();
  }
  return residentKib(process) < kib;
}

TEST_F(Load, TenThousandAbandonedIteratorsAreReclaimed) {
  constexpr int kIterators = 10000;
  const support::TemporaryDirectory directory;
  support::Process agent(
      "/bin/sh", {"-c", "exec " TOPO_AGENTD " --endpoint 127.0.0.1:0 --store "
                        ":memory: --log-level 2 --iterator-timeout 2 "
                        "--max-iterators 10000 --network " +
                            kBackbone + " --ior-file " + directory.file("manager.ior") + " 2>&1"});
  std::string first;
  do {
    first = agent.readLine();
    ASSERT_NE("", first);
  } while (first.find("topo-agentd ready") == std::string::npos);
  const std::string reference = support::readFile(directory.file("manager.ior"));
  const CORBA::Object_var object =
      client_->get()->string_to_object(reference.substr(0, reference.find('\n')).c_str());
  const TopoMgr_I_var manager = TopoMgr_I::_narrow(object);
  ask(manager, 0, {}, 1000);
  const long memory = residentKib(agent.pid());
  const std::size_t files = descriptors(agent.pid());
  NodeList_T_var nodes;
  for (int i = 0; i < kIterators; ++i) {
    NodeIterator_I_var abandoned;
    manager->getTopoSubnetworkViewInfo(1, nodes.out(), abandoned.out());
  }
  std::string line;
  do {
    line = agent.readLine();
    ASSERT_FALSE(line.empty());
  } while (line.find(", 0 live") == std::string::npos);
  // The next request returns after the agent has released the last iterator.
  ask(manager, 0, {}, 1000);
  if (!kSanitized) {
    EXPECT_TRUE(becomesSmallerThan(memory + 30 * 1024, agent.pid()));
  }
  EXPECT_LE(descriptors(agent.pid()), files + 2);
  agent.send(SIGTERM);
  EXPECT_EQ(0, agent.wait().status);
}

TEST_F(Load, RefusesAViewWhenTooManyIteratorsAreOpen) {
  const RunningAgent agent({"--network", kBackbone, "--max-iterators", "2"});
  const TopoMgr_I_var manager = managerOf(agent);
  NodeList_T_var nodes;
  NodeIterator_I_var first;
  NodeIterator_I_var second;
  NodeIterator_I_var third;
  manager->getTopoSubnetworkViewInfo(1, nodes.out(), first.out());
  manager->getTopoSubnetworkViewInfo(1, nodes.out(), second.out());
  try {
    manager->getTopoSubnetworkViewInfo(1, nodes.out(), third.out());
    FAIL() << "a third iterator";
  } catch (const globaldefs::ProcessingFailureException& refused) {
    EXPECT_EQ(globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS, refused.exceptionType);
  }
  first->destroy();
  manager->getTopoSubnetworkViewInfo(1, nodes.out(), third.out());
  EXPECT_FALSE(CORBA::is_nil(third));
}

// --- Memory.

// A subnetwork with elements below it.
std::string flatNetwork(const support::TemporaryDirectory& directory, int elements) {
  nlohmann::json nodes = {{{"id", "top"}, {"name", "Top"}}};
  for (int i = 1; i <= elements; ++i) {
    const std::string number = std::to_string(i);
    nodes.push_back(
        {{"id", "NE=" + number}, {"parent", "top"}, {"name", "Element " + number}, {"type", 1}});
  }
  const nlohmann::json network = {{"format", "topo-network/1"}, {"topoNodes", nodes}};
  return directory.write("flat.json", network.dump());
}

// The agent counts an estimate for each iterator. The test requires that the estimate is within a
// factor of two of the real memory.
TEST_F(Load, IteratorsTakeNoMoreMemoryThanTheirLimit) {
  constexpr int kElements = 5000;
  constexpr long kLimitKib = 32768;
  constexpr long kToleranceKib = 4096;
  const support::TemporaryDirectory directory;
  RunningAgent agent({"--network", flatNetwork(directory, kElements), "--iterator-memory",
                      std::to_string(kLimitKib * 1024)});
  const TopoMgr_I_var manager = managerOf(agent);
  ask(manager, 0, {}, kElements + 1);
  const long memory = residentKib(agent.process().pid());
  std::vector<NodeIterator_I_var> iterators;
  std::string refusal;
  while (refusal.empty() && iterators.size() < 1000) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    try {
      manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
      iterators.push_back(iterator);
    } catch (const globaldefs::ProcessingFailureException& refused) {
      EXPECT_EQ(globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS, refused.exceptionType);
      refusal = refused.errorReason;
    }
  }
  EXPECT_NE("", refusal);
  if (!kSanitized) {
    const long grown = residentKib(agent.process().pid()) - memory;
    EXPECT_LT(grown, kLimitKib + kToleranceKib);
    EXPECT_GT(grown, kLimitKib / 2 - kToleranceKib);
  }
  iterators.front()->destroy();
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
  EXPECT_FALSE(CORBA::is_nil(iterator));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// The limit admits few of the views at the same time.
TEST_F(Load, FortyConcurrentViewsInALimitedAddressSpaceDoNotEndTheAgent) {
  const support::TemporaryDirectory directory;
  const std::string network = flatNetwork(directory, 10000);
  support::Process agent("/bin/sh",
                         {"-c", "ulimit -v 160000; exec " TOPO_AGENTD
                                " --endpoint 127.0.0.1:0 --store :memory: --network " +
                                    network + " --ior-file " + directory.file("manager.ior")});
  ASSERT_THAT(agent.readLine(), testing::HasSubstr("ready"));
  const std::string reference = support::readFile(directory.file("manager.ior"));
  const CORBA::Object_var object =
      client_->get()->string_to_object(reference.substr(0, reference.find('\n')).c_str());
  const TopoMgr_I_var manager = TopoMgr_I::_narrow(object);
  std::atomic<int> answered{0};
  std::atomic<int> refused{0};
  std::vector<std::thread> clients;
  clients.reserve(40);
  for (int i = 0; i < 40; ++i) {
    clients.emplace_back([&, batch = i % 2 == 0 ? 1U : 100000U] {
      try {
        NodeList_T_var nodes;
        NodeIterator_I_var iterator;
        manager->getTopoSubnetworkViewInfo(batch, nodes.out(), iterator.out());
        ++answered;
      } catch (const CORBA::NO_RESOURCES&) {
        ++refused;
      } catch (const globaldefs::ProcessingFailureException&) {
        ++refused;  // the limit of iterator memory is reached
      }
    });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  EXPECT_EQ(40, answered + refused);
  EXPECT_LT(0, answered);
  agent.send(SIGTERM);
  EXPECT_EQ(0, agent.wait().status);
}
#endif

}  // namespace
}  // namespace integration
