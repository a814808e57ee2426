// Stores that an earlier version of the program made.

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "agent/store/NetworkStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::NetworkStore;

// The schema of version 1, as it was.
constexpr const char* kFirstVersion = R"sql(
  PRAGMA application_id = 1953460335;
  PRAGMA user_version = 1;
  CREATE TABLE network (
    only INTEGER PRIMARY KEY CHECK (only = 1),
    ems TEXT NOT NULL
  ) STRICT;
  CREATE TABLE topo_node (
    position INTEGER PRIMARY KEY,
    id TEXT NOT NULL UNIQUE,
    parent TEXT NOT NULL,
    name TEXT NOT NULL,
    type INTEGER NOT NULL,
    parent_type INTEGER NOT NULL,
    param3 INTEGER NOT NULL,
    param4 INTEGER NOT NULL
  ) STRICT;
  CREATE TABLE topo_node_attribute (
    node INTEGER NOT NULL REFERENCES topo_node (position) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    key TEXT NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY (node, position)
  ) STRICT, WITHOUT ROWID;
  CREATE TABLE network_element (
    position INTEGER PRIMARY KEY,
    number INTEGER NOT NULL UNIQUE,
    name TEXT NOT NULL,
    shown INTEGER NOT NULL
  ) STRICT;
  CREATE TABLE clock_position (
    position INTEGER PRIMARY KEY,
    reference TEXT NOT NULL UNIQUE,
    label TEXT NOT NULL,
    value1 INTEGER NOT NULL,
    value2 INTEGER NOT NULL
  ) STRICT;
  CREATE TABLE clock_link (
    position INTEGER PRIMARY KEY,
    id TEXT NOT NULL UNIQUE,
    name TEXT NOT NULL,
    a_end TEXT NOT NULL,
    z_end TEXT NOT NULL
  ) STRICT;
  CREATE TABLE object_label (
    position INTEGER PRIMARY KEY,
    type INTEGER NOT NULL,
    id TEXT NOT NULL,
    label TEXT NOT NULL,
    UNIQUE (type, id)
  ) STRICT;
  INSERT INTO network VALUES (1, 'E');
  INSERT INTO topo_node VALUES (3, 'core', '', 'Core', 2, 2, 1, -2);
  INSERT INTO topo_node_attribute VALUES (3, 0, 'location', 'Hall4');
  INSERT INTO network_element VALUES (0, 5, 'Five', 1);
  INSERT INTO clock_position VALUES (0, 'NE=5', 'Five', 7, 8);
  INSERT INTO clock_link VALUES (0, 'k', 'SDH/k', 'NE=5', 'NE=6');
  INSERT INTO object_label VALUES (0, 201, 'k', 'Trunk');
)sql";

// What version 2 had on top, as it was.
constexpr const char* kSecondVersion = R"sql(
  PRAGMA user_version = 2;
  CREATE INDEX object_label_text ON object_label (type, label);
  CREATE TABLE object_owner (
    type INTEGER NOT NULL,
    id TEXT NOT NULL,
    owner TEXT NOT NULL,
    PRIMARY KEY (type, id)
  ) STRICT, WITHOUT ROWID;
  CREATE TABLE object_info (
    type INTEGER NOT NULL,
    id TEXT NOT NULL,
    position INTEGER NOT NULL,
    name TEXT NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY (type, id, position),
    UNIQUE (type, id, name)
  ) STRICT, WITHOUT ROWID;
  INSERT INTO object_owner VALUES (201, 'k', 'me');
  INSERT INTO object_info VALUES (201, 'k', 0, 'a', '1');
)sql";

constexpr const char* kItsNetwork =
    "ems E\nnode core||Core|2|2|1|-2|location=Hall4\nelement 5|Five|1\n"
    "position NE=5|Five|7|8\nlink k|SDH/k|NE=5|NE=6\nlabel 201|k|Trunk\n";

class StoreUpgrade : public testing::Test {
 protected:
  void makeFirstVersion(const std::string& more = "") const {
    SQLite::Database database(path_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("PRAGMA journal_mode = WAL");
    database.exec(kFirstVersion + more);
  }

  void makeSecondVersion(const std::string& more = "") const {
    makeFirstVersion(kSecondVersion + more);
  }

  // What SQLite finds wrong with the file.
  std::string damage() const {
    SQLite::Database database(path_, SQLite::OPEN_READWRITE);
    return database.execAndGet("PRAGMA integrity_check").getString();
  }

  int version() const {
    SQLite::Database database(path_, SQLite::OPEN_READWRITE);
    return database.execAndGet("PRAGMA user_version").getInt();
  }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("store.db");
  const agent::ObjectKey key_{201, "k"};
};

TEST_F(StoreUpgrade, KeepsTheNetworkOfAFirstVersion) {
  makeFirstVersion();
  EXPECT_EQ(kItsNetwork, describe(NetworkStore(path_).read()));
  EXPECT_EQ(3, version());
  EXPECT_EQ(kItsNetwork, describe(NetworkStore(path_).read()));
}

TEST_F(StoreUpgrade, KnowsThatAFirstVersionNeedsNoNetwork) {
  makeFirstVersion();
  EXPECT_FALSE(NetworkStore::needsNetwork(path_));
}

TEST_F(StoreUpgrade, KeepsOwnersAndInformationInAFirstVersion) {
  makeFirstVersion();
  {
    NetworkStore store(path_);
    EXPECT_EQ("", store.ownerOf(key_));
    store.setOwner(key_, "me");
    store.mergeAdditionalInfo(key_, {{"a", "1"}});
  }
  NetworkStore store(path_);
  EXPECT_EQ("me", store.ownerOf(key_));
  EXPECT_EQ((agent::InfoPairs{{"a", "1"}}), store.additionalInfoOf(key_));
  EXPECT_EQ((std::vector<std::string>{"k"}), store.idsWithLabel(201, "Trunk"));
}

TEST_F(StoreUpgrade, HasTheNewVersionInANewStore) {
  { const NetworkStore store(path_); }
  EXPECT_EQ(3, version());
}

TEST_F(StoreUpgrade, LeavesAFirstVersionAsItWasWhenItFails) {
  makeFirstVersion("CREATE TABLE object_info (mine);");
  try {
    const NetworkStore store(path_);
    ADD_FAILURE() << "upgraded over a table that is there";
  } catch (const agent::StoreError& error) {
    EXPECT_EQ(path_ + ": table object_info already exists", error.what());
  }
  EXPECT_EQ(1, version());
  SQLite::Database database(path_, SQLite::OPEN_READWRITE);
  EXPECT_FALSE(database.tableExists("object_owner"));
}

TEST_F(StoreUpgrade, FindsWhatAKilledProcessLeftInTheLogOfAFirstVersion) {
  const int status = statusOfChild([&] {
    SQLite::Database database(path_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec(kFirstVersion);
    database.exec("PRAGMA journal_mode = WAL; UPDATE clock_link SET name = 'late'");
    raise(SIGKILL);
  });
  ASSERT_TRUE(wasKilledBy(status, SIGKILL));
  EXPECT_EQ("late", NetworkStore(path_).read().clockLinks.front().nativeName);
}

TEST_F(StoreUpgrade, KeepsEverythingOfASecondVersion) {
  makeSecondVersion();
  for (int i = 0; i < 2; ++i) {
    NetworkStore store(path_);
    EXPECT_EQ(kItsNetwork, describe(store.read()));
    EXPECT_EQ("me", store.ownerOf(key_));
    EXPECT_EQ((agent::InfoPairs{{"a", "1"}}), store.additionalInfoOf(key_));
  }
  EXPECT_EQ(3, version());
  EXPECT_EQ("ok", damage());
}

TEST_F(StoreUpgrade, GivesEarlierVersionsNotificationIds) {
  makeFirstVersion();
  EXPECT_EQ(500U, NetworkStore(path_, [] { return 500U; }).reserveNotificationIds(7));
  EXPECT_EQ(507U, NetworkStore(path_, [] { return 900U; }).reserveNotificationIds(1));
  std::filesystem::remove(path_);
  makeSecondVersion();
  EXPECT_EQ(600U, NetworkStore(path_, [] { return 600U; }).reserveNotificationIds(1));
  EXPECT_EQ("ok", damage());
}

TEST_F(StoreUpgrade, ChangesTheNetworkOfAnEarlierVersion) {
  makeFirstVersion();
  {
    NetworkStore store(path_);
    agent::Network more;
    more.topoNodes.resize(1);
    more.topoNodes[0].nodeId = "new";
    store.add(more, {5});
    store.remove({store.read().topoNodes.front()}, {{201, "k"}}, {});
  }
  EXPECT_EQ(
      "ems E\nnode new|||0|0|0|0\nelement 5|Five|1\nposition NE=5|Five|7|8\n"
      "link k|SDH/k|NE=5|NE=6\n",
      describe(NetworkStore(path_).read()));
  EXPECT_EQ("ok", damage());
}

TEST_F(StoreUpgrade, LeavesASecondVersionAsItWasWhenItFails) {
  makeSecondVersion("CREATE TABLE notification_id (mine);");
  EXPECT_THROW(NetworkStore{path_}, agent::StoreError);
  EXPECT_EQ(2, version());
}

TEST_F(StoreUpgrade, RefusesAVersionBeforeTheFirst) {
  makeFirstVersion("PRAGMA user_version = 0;");
  try {
    const NetworkStore store(path_);
    ADD_FAILURE() << "opened";
  } catch (const agent::StoreError& error) {
    EXPECT_EQ(path_ + ": has the schema version 0, this program reads version 3", error.what());
  }
}

}  // namespace
