// Reading a store on another thread.

#include "agent/store/StoreReading.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/store/sqlite/SqliteStore.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::Network;
using agent::NetworkStore;
using agent::SqliteStore;
using agent::StoreError;
using agent::StoreReading;

constexpr int kRecords = 600;  // of each list: several pieces

Network longNetwork() {
  Network network = wideNetwork(kRecords);
  network.ems = "EMS";
  for (int i = 0; i < kRecords; ++i) {
    const std::string text = std::to_string(i);
    if (i % 7 == 0) {
      network.topoNodes[static_cast<std::size_t>(i)].extendedAttributes = {{"a", text}, {"", "b"}};
    }
    network.networkElements.push_back({i, "element " + text, i % 2 == 0, i % 4 == 0});
    auto& position = network.clockPositions.emplace_back();
    position.reference = "position " + text;
    position.value1 = i;
    auto& link = network.clockLinks.emplace_back();
    link.linkId = "link " + text;
    link.aEndReference = position.reference;
    network.objectLabels.push_back({i, "object " + text, "label"});
  }
  return network;
}

void append(const Network& piece, Network& network) {
  const auto join = [](const auto& more, auto& list) {
    list.insert(list.end(), more.begin(), more.end());
  };
  network.ems += piece.ems;
  join(piece.topoNodes, network.topoNodes);
  join(piece.networkElements, network.networkElements);
  join(piece.clockPositions, network.clockPositions);
  join(piece.clockLinks, network.clockLinks);
  join(piece.objectLabels, network.objectLabels);
}

// A network, or the reason why it cannot be used.
using Answer = std::pair<Network, std::string>;

template <typename Reading>
Answer answerOf(const std::string& path, Reading reading) {
  Answer answer;
  try {
    SqliteStore store(path);
    reading(store, answer.first);
  } catch (const StoreError& failure) {
    answer = {{}, failure.what()};
  }
  return answer;
}

// Reads on this thread. The reason of a failed reading is that of the check.
Answer plainAnswer(const std::string& path, bool check) {
  return answerOf(path, [check](SqliteStore& store, Network& network) {
    try {
      network = store.read();
    } catch (const StoreError&) {
      if (check) {
        store.check();
      }
      throw;
    }
    if (check) {
      store.check();
    }
  });
}

Answer answerOfThread(const std::string& path, bool check) {
  return answerOf(path, [check](SqliteStore& store, Network& network) {
    StoreReading reading(store, check);
    while (const std::optional<Network> piece = reading.next()) {
      append(*piece, network);
    }
    reading.finish();
  });
}

class StoreReadingTest : public testing::Test {
 protected:
  StoreReadingTest() { SqliteStore(path_).load(network_); }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("store.db");
  const Network network_ = longNetwork();
};

TEST_F(StoreReadingTest, PassesTheNetworkInPieces) {
  SqliteStore store(path_);
  StoreReading reading(store, true);
  Network network;
  int pieces = 0;
  while (const std::optional<Network> piece = reading.next()) {
    EXPECT_TRUE(piece->topoNodes.empty() ||
                network.topoNodes.size() + network.networkElements.size() < kRecords);
    append(*piece, network);
    ++pieces;
  }
  reading.finish();
  EXPECT_EQ(network_, network);
  EXPECT_EQ(network_, store.read());
  EXPECT_LT(5, pieces);
  EXPECT_FALSE(reading.next());
}

TEST_F(StoreReadingTest, EstimatesTheLengthsOfTheLists) {
  SqliteStore store(path_);
  const agent::NetworkSizes sizes = StoreReading(store, false).sizes();
  for (const std::size_t size : {sizes.nodes, sizes.elements, sizes.positions, sizes.links}) {
    EXPECT_EQ(static_cast<std::size_t>(kRecords), size);
  }
  const agent::NetworkSizes none = SqliteStore(SqliteStore::kInMemory).sizes();
  EXPECT_EQ(0U, none.nodes + none.elements + none.positions + none.links);
}

// Damages every third page, one page in each round.
TEST_F(StoreReadingTest, ReportsDamageAsReadingOnThisThreadDoes) {
  constexpr std::streamoff kPageBytes = 4096;
  const std::string damaged = directory_.file("damaged.db");
  const auto size = static_cast<std::streamoff>(std::filesystem::file_size(path_));
  int failures = 0;
  for (std::streamoff page = kPageBytes; page < size; page += 3 * kPageBytes) {
    const bool check = page / kPageBytes % 2 == 0;
    std::vector<Answer> answers;
    for (const auto& answer : {plainAnswer, answerOfThread}) {
      std::filesystem::copy_file(path_, damaged, std::filesystem::copy_options::overwrite_existing);
      std::fstream(damaged, std::ios::in | std::ios::out | std::ios::binary).seekp(page)
          << std::string(kPageBytes, '\xff');
      answers.push_back(answer(damaged, check));
    }
    EXPECT_EQ(answers.front().second, answers.back().second) << "page " << page / kPageBytes;
    EXPECT_EQ(answers.front().first, answers.back().first) << "page " << page / kPageBytes;
    failures += answers.front().second.empty() ? 0 : 1;
  }
  EXPECT_LT(10, failures);
}

TEST_F(StoreReadingTest, RejectsAnAttributeWithoutANode) {
  const std::string expected = path_ + ": has attributes of a node that is not there";
  const auto execute = [this](const std::string& statement) {
    SQLite::Database(path_, SQLite::OPEN_READWRITE).exec(statement);
  };
  execute("DELETE FROM topo_node WHERE position = 5");
  for (const std::string position : {"-1", "5", "1000000"}) {
    EXPECT_EQ("", plainAnswer(path_, true).second) << position;
    execute("INSERT INTO topo_node_attribute VALUES (" + position + ", 0, 'stray', '')");
    EXPECT_EQ(expected, plainAnswer(path_, true).second) << position;
    EXPECT_EQ(expected, answerOfThread(path_, false).second) << position;
    execute("DELETE FROM topo_node_attribute WHERE key = 'stray'");
  }
}

// A store that returns pieces forever.
class EndlessStore final : public NetworkStore {
 public:
  using NetworkStore::read;

  int passed() const { return passed_; }
  bool isChecked() const { return isChecked_; }

  void check() override { isChecked_ = true; }
  bool isNew() override { return false; }
  void load(const Network&) override {}
  void read(const UsePiece& use) override {
    for (;; ++passed_) {
      use({});
    }
  }
  agent::NetworkSizes sizes() override { return {}; }
  std::uint64_t lastChange() override { return 0; }
  std::uint64_t commit(const agent::NetworkChange&, const agent::Cancellation&) override {
    return 0;
  }
  std::vector<std::string> idsWithLabel(std::int32_t, const std::string&) override { return {}; }
  std::string ownerOf(const agent::ObjectKey&) override { return ""; }
  agent::InfoPairs additionalInfoOf(const agent::ObjectKey&) override { return {}; }
  std::vector<agent::ObjectAttributes> attributes() override { return {}; }
  std::uint64_t bytes() override { return 0; }
  std::unique_ptr<agent::StoreCopy> beginCopy() override { return nullptr; }

 private:
  std::atomic<int> passed_{0};
  std::atomic<bool> isChecked_{false};
};

TEST(StoreReadingOfAnEndlessStore, EndsWithItsOwner) {
  constexpr int kTaken = 100;
  EndlessStore store;
  {
    StoreReading reading(store, true);
    for (int i = 0; i < kTaken; ++i) {
      EXPECT_TRUE(reading.next());
    }
  }
  EXPECT_LE(kTaken, store.passed() + 1);
  EXPECT_GE(kTaken + static_cast<int>(StoreReading::kMostPieces), store.passed());
  EXPECT_FALSE(store.isChecked());
}

}  // namespace
