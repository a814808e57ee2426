#include "topoevent/NodeLabelCache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ProcessorTime.h"

namespace {

using Texts = std::vector<std::string>;

constexpr int kThreads = 4;

// Runs a function on several threads at once. Returns the number of true results.
int timesTrue(const std::function<bool()>& attempt) {
  std::atomic<int> ready{0};
  std::atomic<int> successes{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      ++ready;
      while (ready < kThreads) {
        std::this_thread::yield();
      }
      successes += attempt() ? 1 : 0;
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return successes;
}

class TopoNodeLabelCache : public ::testing::Test {
 protected:
  topo::NodeLabelCache cache_;
};

TEST_F(TopoNodeLabelCache, IsEmptyAtFirst) {
  EXPECT_EQ(cache_.identifiers(), Texts{});
  EXPECT_EQ(cache_.labels(), Texts{});
}

TEST_F(TopoNodeLabelCache, KeepsIdentifiersAndLabelsInStep) {
  cache_.append("b", "B");
  cache_.append("a", "A");
  EXPECT_EQ(cache_.identifiers(), (Texts{"b", "a"}));
  EXPECT_EQ(cache_.labels(), (Texts{"B", "A"}));
}

TEST_F(TopoNodeLabelCache, KeepsDuplicates) {
  cache_.append("a", "A");
  cache_.append("a", "A");
  EXPECT_EQ(cache_.identifiers(), (Texts{"a", "a"}));
  EXPECT_EQ(cache_.labels(), (Texts{"A", "A"}));
}

TEST_F(TopoNodeLabelCache, ReturnsFalseForTheStoredLabel) {
  cache_.append("a", "A");
  EXPECT_FALSE(cache_.storeChange("a", "A"));
}

TEST_F(TopoNodeLabelCache, StoresANewLabel) {
  cache_.append("a", "A");
  cache_.append("b", "B");
  EXPECT_TRUE(cache_.storeChange("b", "C"));
  EXPECT_EQ(cache_.labels(), (Texts{"A", "C"}));
  EXPECT_FALSE(cache_.storeChange("b", "C"));
}

TEST_F(TopoNodeLabelCache, StoresAnEmptyLabelToo) {
  cache_.append("a", "A");
  EXPECT_TRUE(cache_.storeChange("a", ""));
  EXPECT_EQ(cache_.labels(), Texts{""});
  EXPECT_FALSE(cache_.storeChange("a", ""));
}

TEST_F(TopoNodeLabelCache, AddsNoUnknownNode) {
  cache_.append("a", "A");
  EXPECT_TRUE(cache_.storeChange("b", "B"));
  EXPECT_TRUE(cache_.storeChange("b", "B"));
  EXPECT_EQ(cache_.identifiers(), Texts{"a"});
  EXPECT_EQ(cache_.labels(), Texts{"A"});
}

TEST_F(TopoNodeLabelCache, CountsTheFirstOfSeveralEntries) {
  cache_.append("a", "A");
  cache_.append("a", "B");
  EXPECT_FALSE(cache_.storeChange("a", "A"));
  EXPECT_TRUE(cache_.storeChange("a", "B"));
  EXPECT_EQ(cache_.labels(), (Texts{"B", "B"}));
  EXPECT_TRUE(cache_.storeChange("a", "C"));
  EXPECT_EQ(cache_.labels(), (Texts{"C", "B"}));
}

TEST_F(TopoNodeLabelCache, ComparesBytes) {
  cache_.append("a", "A");
  cache_.append(std::string("a\0b", 3), "B");
  EXPECT_TRUE(cache_.storeChange("A", "A"));
  EXPECT_FALSE(cache_.storeChange(std::string("a\0b", 3), "B"));
  EXPECT_TRUE(cache_.storeChange("a", "a"));
  EXPECT_TRUE(cache_.storeChange("a", "a "));
}

TEST_F(TopoNodeLabelCache, TakesABurstOfChangesOfManyNodes) {
  constexpr int kNodes = 100000;
  for (int i = 0; i < kNodes; ++i) {
    cache_.append("a topology node " + std::to_string(i), "old");
  }
  const std::chrono::nanoseconds begin = support::processorTime();
  for (int i = 0; i < kNodes; ++i) {
    ASSERT_TRUE(cache_.storeChange("a topology node " + std::to_string(i), "new"));
  }
  // With a linear search, this would be 5,000,000,000 comparisons.
  EXPECT_LT(support::processorTime() - begin, std::chrono::seconds(5));
  EXPECT_EQ(cache_.labels(), Texts(kNodes, "new"));
}

TEST_F(TopoNodeLabelCache, ReportsANewLabelToOneOfSeveralThreads) {
  cache_.append("a", "");
  for (int round = 1; round < 200; ++round) {
    const std::string label = std::to_string(round);
    ASSERT_EQ(timesTrue([&] { return cache_.storeChange("a", label); }), 1);
  }
}

TEST_F(TopoNodeLabelCache, ReportsEachNewLabelToOneOfSeveralThreads) {
  constexpr int kNodes = 20000;
  Texts identifiers;
  for (int i = 0; i < kNodes; ++i) {
    identifiers.push_back(std::to_string(i));
    cache_.append(identifiers.back(), "old");
  }
  std::atomic<int> changes{0};
  timesTrue([&] {
    for (const std::string& identifier : identifiers) {
      changes += cache_.storeChange(identifier, "new") ? 1 : 0;
    }
    return true;
  });
  EXPECT_EQ(changes, kNodes);
}

TEST_F(TopoNodeLabelCache, CanGrowOnSeveralThreads) {
  constexpr int kNodes = 5000;
  timesTrue([&] {
    for (int i = 0; i < kNodes; ++i) {
      cache_.append("node " + std::to_string(i), "label " + std::to_string(i));
    }
    return true;
  });
  EXPECT_EQ(cache_.identifiers().size(), std::size_t{kThreads} * kNodes);
  EXPECT_EQ(cache_.labels().size(), std::size_t{kThreads} * kNodes);
}

TEST_F(TopoNodeLabelCache, CanGrowDuringLookups) {
  cache_.append("a", "0");
  std::thread growing([this] {
    for (int i = 0; i < 2000; ++i) {
      cache_.append("node " + std::to_string(i), "");
    }
  });
  for (int i = 1; i < 2000; ++i) {
    ASSERT_TRUE(cache_.storeChange("a", std::to_string(i)));
  }
  growing.join();
  EXPECT_EQ(cache_.identifiers().size(), 2001U);
  EXPECT_EQ(cache_.labels().size(), 2001U);
}

// --- The last label.

class TopoLastReportedLabel : public ::testing::Test {
 protected:
  topo::LastReportedLabel last_;
};

TEST_F(TopoLastReportedLabel, IsEmptyAtFirst) {
  EXPECT_FALSE(last_.storeChange(""));
  EXPECT_TRUE(last_.storeChange("a"));
}

TEST_F(TopoLastReportedLabel, StoresTheLastLabelOnly) {
  EXPECT_TRUE(last_.storeChange("a"));
  EXPECT_FALSE(last_.storeChange("a"));
  EXPECT_TRUE(last_.storeChange("b"));
  EXPECT_TRUE(last_.storeChange("a"));
}

TEST_F(TopoLastReportedLabel, ReportsANewLabelToOneOfSeveralThreads) {
  for (int round = 1; round < 200; ++round) {
    const std::string label = std::to_string(round);
    ASSERT_EQ(timesTrue([&] { return last_.storeChange(label); }), 1);
  }
}

}  // namespace
