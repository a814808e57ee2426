// Faults of the disk at every call of the store: no stored change is lost, no failed change
// appears, and the store works again as soon as the disk does.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "agent/store/sqlite/SqliteStore.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/store/sqlite/FaultyFiles.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::LabelChange;
using agent::Network;
using agent::NetworkAddition;
using agent::NetworkChange;
using agent::RecordUpdate;
using agent::SqliteStore;
using agent::StoreError;

// A change, and the same change of a network in memory.
struct Step {
  NetworkChange change;
  std::function<void(Network&)> apply;
};

Step addNodes(const std::string& prefix, std::size_t count, std::size_t bytes) {
  Network more;
  for (std::size_t i = 0; i < count; ++i) {
    more.topoNodes.push_back(nodeOf(prefix + std::to_string(i), "", NS_DOMAIN::kTopoSubnetwork,
                                    std::string(bytes, 'x')));
  }
  return {NetworkAddition{more, {}}, [more](Network& network) {
            network.topoNodes.insert(network.topoNodes.end(), more.topoNodes.begin(),
                                     more.topoNodes.end());
          }};
}

Step label(const std::string& id) {
  return {LabelChange{{201, id}, "label"}, [id](Network& network) {
            network.objectLabels.push_back({201, id, "label"});
          }};
}

Step renameFirstNode(const std::string& name) {
  NS_DOMAIN::TopoNode_T node = nodeOf("first", "");
  node.nativeName = name;
  return {RecordUpdate{node},
          [name](Network& network) { network.topoNodes.front().nativeName = name; }};
}

Network startNetwork() {
  Network network;
  network.topoNodes = {nodeOf("first", "")};
  return network;
}

std::vector<Step> someChanges() {
  return {label("a"), addNodes("n", 3, 10), renameFirstNode("new"), addNodes("wide", 40, 400),
          label("b")};
}

// More pages than the log has before SQLite copies them into the database.
std::vector<Step> manyPages() {
  return {label("a"), addNodes("big", 30, 100000), label("b"), addNodes("more", 20, 100000),
          label("c")};
}

// Copies the files of a store as they are after the death of its process.
std::string copyOfFiles(const std::string& path, const std::string& copy) {
  for (const char* suffix : {"", "-wal", "-journal"}) {
    if (std::filesystem::exists(path + suffix)) {
      std::filesystem::copy_file(path + suffix, copy + suffix);
    }
  }
  return copy;
}

Network storedAt(const std::string& path) {
  SqliteStore store(path);
  store.check();
  return store.read();
}

class StoreFaults : public testing::TestWithParam<Fault> {
 protected:
  // Runs the changes with a fault at the call of this number. Returns whether a call has failed.
  bool runWithFaultAt(int number, const std::vector<Step>& steps) {
    const support::TemporaryDirectory folder;
    const std::string path = folder.file("store.db");
    auto store = std::make_unique<SqliteStore>(path);
    Network expected = startNetwork();
    store->load(expected);

    files_.failAt(GetParam(), number);
    std::vector<Network> possible = commitAll(*store, expected, steps);
    const std::string copy = copyOfFiles(path, folder.file("copy.db"));
    const bool hasFailed = files_.repair();

    EXPECT_TRUE(contains(possible, storedAt(copy)));
    EXPECT_EQ(expected, store->read());
    commitAll(*store, expected, {label("after")});
    EXPECT_EQ("after", expected.objectLabels.back().id) << "a change fails after the fault";
    EXPECT_EQ(expected, store->read());
    store.reset();
    EXPECT_EQ(expected, storedAt(path));
    return hasFailed;
  }

  // Commits the changes, and applies the accepted changes to `expected`. Returns the networks
  // that the files can have after a kill: a change that failed may be complete in the log until the
  // next change.
  static std::vector<Network> commitAll(SqliteStore& store, Network& expected,
                                        const std::vector<Step>& steps) {
    std::vector<Network> possible = {expected};
    for (const Step& step : steps) {
      Network changed = expected;
      step.apply(changed);
      try {
        store.commit(step.change);
        expected = changed;
        possible = {expected};
      } catch (const StoreError&) {
        possible.push_back(changed);
      }
    }
    return possible;
  }

  static bool contains(const std::vector<Network>& possible, const Network& network) {
    return std::find(possible.begin(), possible.end(), network) != possible.end();
  }

  // The fault at the 1st, the (1 + stride)th call and so on, until no call fails.
  template <typename Run>
  static void forEveryCall(int stride, Run run) {
    for (int number = 1; run(number); number += stride) {
      if (testing::Test::HasFailure()) {
        FAIL() << "with a fault at call " << number;
      }
    }
  }

  FaultyFiles files_;
};

// A fault at every call would take minutes.
constexpr int kStrideOfManyCalls = 97;

TEST_P(StoreFaults, LoseNoChangeAndAddNone) {
  forEveryCall(1, [this](int number) { return runWithFaultAt(number, someChanges()); });
}

TEST_P(StoreFaults, LoseNoChangeWhileTheLogIsCopied) {
  forEveryCall(kStrideOfManyCalls,
               [this](int number) { return runWithFaultAt(number, manyPages()); });
}

TEST_P(StoreFaults, LeaveAStoreThatCanBeOpened) {
  forEveryCall(1, [this](int number) {
    const support::TemporaryDirectory folder;
    const std::string path = folder.file("store.db");
    SqliteStore(path).load(startNetwork());
    files_.failAt(GetParam(), number);
    try {
      EXPECT_EQ(startNetwork(), storedAt(path));
    } catch (const StoreError&) {
      // Refused, and not damaged.
    }
    const bool hasFailed = files_.repair();
    EXPECT_EQ(startNetwork(), storedAt(path));
    return hasFailed;
  });
}

TEST_P(StoreFaults, LeaveANewStoreThatCanBeLoaded) {
  forEveryCall(1, [this](int number) {
    const support::TemporaryDirectory folder;
    const std::string path = folder.file("store.db");
    bool isLoaded = false;
    files_.failAt(GetParam(), number);
    try {
      SqliteStore store(path);
      store.load(startNetwork());
      isLoaded = true;
    } catch (const StoreError&) {
      // Loaded below.
    }
    const bool hasFailed = files_.repair();
    if (!isLoaded) {
      SqliteStore store(path);
      EXPECT_TRUE(store.isNew());
      store.load(startNetwork());
    }
    EXPECT_EQ(startNetwork(), storedAt(path));
    return hasFailed;
  });
}

std::vector<Fault> allFaults() {
  std::vector<Fault> faults;
  for (const bool lasting : {false, true}) {
    for (const Fault& fault :
         std::initializer_list<Fault>{{FileCall::kOpen, SQLITE_CANTOPEN, lasting},
                                      {FileCall::kDelete, SQLITE_IOERR_DELETE, lasting},
                                      {FileCall::kAccess, SQLITE_IOERR_ACCESS, lasting},
                                      {FileCall::kRead, SQLITE_IOERR_READ, lasting},
                                      {FileCall::kWrite, SQLITE_IOERR_WRITE, lasting},
                                      {FileCall::kWrite, SQLITE_FULL, lasting},
                                      {FileCall::kTruncate, SQLITE_IOERR_TRUNCATE, lasting},
                                      {FileCall::kSync, SQLITE_IOERR_FSYNC, lasting},
                                      {FileCall::kSize, SQLITE_IOERR_FSTAT, lasting},
                                      {FileCall::kLock, SQLITE_IOERR_LOCK, lasting}}) {
      faults.push_back(fault);
    }
  }
  return faults;
}

INSTANTIATE_TEST_SUITE_P(EveryCall, StoreFaults, testing::ValuesIn(allFaults()),
                         testing::PrintToStringParamName());

}  // namespace
