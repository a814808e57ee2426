// The store in SQLite: durability, rejected files, and the state after a killed process.

#include "agent/store/sqlite/SqliteStore.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "agent/model/NetworkModel.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/DamagedStore.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/Unprivileged.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::InfoChange;
using agent::NetworkAddition;
using agent::OwnerChange;
using agent::SqliteStore;
using agent::StoreError;

// The reason why a store cannot be opened; empty for a store that opens.
std::string refusalOfStore(const std::string& path) {
  try {
    const SqliteStore store(path);
  } catch (const StoreError& error) {
    return error.what();
  }
  return {};
}

std::string refusalOfQuestion(const std::string& path) {
  try {
    SqliteStore::needsNetwork(path);
  } catch (const StoreError& error) {
    return error.what();
  }
  return {};
}

void makeDatabase(const std::string& path, const std::string& statements) {
  SQLite::Database database(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
  database.exec(statements);
}

// Checks for a lock of the file in a child process, which does not inherit the locks of its parent.
bool isLockedForOthers(const std::string& path) {
  const int status = statusOfChild([&] {
    struct flock lock {};
    lock.l_type = F_WRLCK;  // of the whole file
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
    _exit(file >= 0 && fcntl(file, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK ? 1 : 0);
  });
  return WIFEXITED(status) && WEXITSTATUS(status) == 1;
}

std::size_t filesIn(const support::TemporaryDirectory& directory) {
  const std::filesystem::directory_iterator files(directory.path());
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

class SqliteStoreTest : public testing::Test {
 protected:
  // Expects that the constructor and needsNetwork() fail, and that the directory is unchanged.
  void expectRefused(const std::string& path, const std::string& reason) {
    const std::size_t before = filesIn(directory_);
    EXPECT_EQ(path + ": " + reason, refusalOfStore(path));
    EXPECT_EQ(path + ": " + reason, refusalOfQuestion(path));
    EXPECT_EQ(before, filesIn(directory_));
  }

  void expectRefusedUntouched(const std::string& path, const std::string& reason) {
    const std::string before = support::readFile(path);
    expectRefused(path, reason);
    EXPECT_EQ(before, support::readFile(path));
  }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("store.db");
};

TEST_F(SqliteStoreTest, StoresEveryFieldInMemory) {
  SqliteStore store(SqliteStore::kInMemory);
  EXPECT_TRUE(store.isNew());
  store.load(sampleNetwork());
  EXPECT_EQ(sampleNetwork(), store.read());
  EXPECT_TRUE(SqliteStore(":memory:").isNew());
  EXPECT_TRUE(SqliteStore::needsNetwork(":memory:"));
}

TEST_F(SqliteStoreTest, StartsOnAnEmptyFile) {
  directory_.write("store.db", "");
  EXPECT_TRUE(SqliteStore::needsNetwork(path_));
  EXPECT_TRUE(SqliteStore(path_).isNew());
}

TEST_F(SqliteStoreTest, UsesThePathLiterally) {
  for (const char* name : {"file:a?mode=memory", "b%20c#d", ":memory:"}) {
    const std::string path = directory_.file(name);
    { SqliteStore(path).load(sampleNetwork()); }
    EXPECT_TRUE(std::filesystem::exists(path)) << name;
    EXPECT_FALSE(SqliteStore::needsNetwork(path)) << name;
  }
}

TEST_F(SqliteStoreTest, ReportsAMissingFileWithoutCreatingIt) {
  EXPECT_TRUE(SqliteStore::needsNetwork(path_));
  EXPECT_EQ(0U, filesIn(directory_));
}

TEST_F(SqliteStoreTest, ReportsWhetherAnExistingStoreNeedsANetwork) {
  { SqliteStore store(path_); }
  EXPECT_TRUE(SqliteStore::needsNetwork(path_));
  { SqliteStore(path_).load(sampleNetwork()); }
  EXPECT_FALSE(SqliteStore::needsNetwork(path_));
}

TEST_F(SqliteStoreTest, RejectsToLoadASecondNetwork) {
  SqliteStore store(path_);
  store.load(sampleNetwork());
  try {
    store.load(wideNetwork(2));
    ADD_FAILURE() << "loaded twice";
  } catch (const StoreError& error) {
    EXPECT_EQ(path_ + ": contains a network already", error.what());
  }
  EXPECT_EQ(sampleNetwork(), store.read());
}

TEST_F(SqliteStoreTest, StaysNewWhenALoadFails) {
  agent::Network network = wideNetwork(3);
  network.topoNodes.push_back(network.topoNodes.front());
  SqliteStore store(path_);
  try {
    store.load(network);
    ADD_FAILURE() << "stored a duplicate id";
  } catch (const StoreError& error) {
    EXPECT_EQ(path_ + ": UNIQUE constraint failed: topo_node.id", error.what());
  }
  EXPECT_TRUE(store.isNew());
  EXPECT_EQ(agent::Network(), store.read());
  store.load(sampleNetwork());
  EXPECT_EQ(sampleNetwork(), store.read());
}

// The kernel kills the process in the middle of the transaction, when the log exceeds the file size
// limit.
TEST_F(SqliteStoreTest, StaysNewWhenTheProcessIsKilledInTheMiddleOfALoad) {
  const int status = statusOfChild([&] {
    SqliteStore store(path_);
    const rlimit none{0, 0};
    const rlimit smallFiles{262144, 262144};
    setrlimit(RLIMIT_CORE, &none);
    setrlimit(RLIMIT_FSIZE, &smallFiles);
    store.load(wideNetwork(20000));
  });
  ASSERT_TRUE(wasKilledBy(status, SIGXFSZ));
  ASSERT_TRUE(std::filesystem::exists(path_ + "-wal"));
  EXPECT_TRUE(SqliteStore::needsNetwork(path_));
  SqliteStore store(path_);
  EXPECT_EQ(agent::Network(), store.read());
  store.load(sampleNetwork());
  EXPECT_EQ(sampleNetwork(), store.read());
}

TEST_F(SqliteStoreTest, KeepsALoadWhenTheProcessIsKilled) {
  const int status = statusOfChild([&] {
    SqliteStore store(path_);
    store.load(sampleNetwork());
    raise(SIGKILL);
  });
  ASSERT_TRUE(wasKilledBy(status, SIGKILL));
  ASSERT_NE(0U, std::filesystem::file_size(path_ + "-wal"));
  EXPECT_FALSE(SqliteStore::needsNetwork(path_));
  EXPECT_EQ(sampleNetwork(), SqliteStore(path_).read());
}

TEST_F(SqliteStoreTest, IsOneFileAfterItWasClosed) {
  { SqliteStore(path_).load(sampleNetwork()); }
  EXPECT_EQ(1U, filesIn(directory_));
}

TEST_F(SqliteStoreTest, IsLockedAgainstOtherProcesses) {
  std::array<int, 2> opened{};
  std::array<int, 2> finish{};
  ASSERT_EQ(0, pipe(opened.data()));
  ASSERT_EQ(0, pipe(finish.data()));
  const pid_t child = fork();
  if (child == 0) {
    close(finish[1]);
    const SqliteStore store(path_);
    char byte = 'x';
    const bool told = write(opened[1], &byte, 1) == 1;
    _exit(told && read(finish[0], &byte, 1) == 0 ? 0 : 1);
  }
  close(opened[1]);
  close(finish[0]);
  char byte = 0;
  EXPECT_EQ(1, read(opened[0], &byte, 1));
  expectRefused(path_, "is in use by another process");
  close(finish[1]);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, status);
  EXPECT_EQ("", refusalOfStore(path_));
}

TEST_F(SqliteStoreTest, IsLockedAgainstASecondStoreOfThisProcess) {
  SqliteStore store(path_);
  expectRefused(path_, "is in use by another process");
  EXPECT_TRUE(isLockedForOthers(path_));
  store.load(sampleNetwork());
  EXPECT_EQ(sampleNetwork(), store.read());
}

TEST_F(SqliteStoreTest, RejectsADatabaseOfAnotherProgram) {
  makeDatabase(path_, "CREATE TABLE music (title); INSERT INTO music VALUES ('Largo')");
  expectRefusedUntouched(path_, "is a database of another program");
  makeDatabase(path_, "PRAGMA application_id = 42");
  expectRefusedUntouched(path_, "is a database of another program");
}

TEST_F(SqliteStoreTest, NeverTouchesTheLogOfAnotherProgram) {
  const int status = statusOfChild([&] {
    SQLite::Database database(path_, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("PRAGMA journal_mode = WAL; CREATE TABLE music (title)");
    raise(SIGKILL);
  });
  ASSERT_TRUE(wasKilledBy(status, SIGKILL));
  const std::string log = support::readFile(path_ + "-wal");
  ASSERT_NE("", log);
  expectRefusedUntouched(path_, "is a database of another program");
  EXPECT_EQ(log, support::readFile(path_ + "-wal"));
}

TEST_F(SqliteStoreTest, RejectsEveryOtherSchemaVersion) {
  { SqliteStore(path_).load(sampleNetwork()); }
  for (const std::string version : {"0", "3", "5"}) {
    makeDatabase(path_, "PRAGMA journal_mode = DELETE; PRAGMA user_version = " + version);
    expectRefusedUntouched(path_,
                           "has the schema version " + version + ", this program reads version 4");
  }
}

TEST_F(SqliteStoreTest, RejectsAFileThatIsNotADatabase) {
  directory_.write("store.db", std::string(10000, 'x'));
  expectRefusedUntouched(path_, "is not a database");
  directory_.write("store.db", "hello");
  expectRefusedUntouched(path_, "is not a database");
}

TEST_F(SqliteStoreTest, RejectsADirectory) {
  expectRefused(directory_.path(), "Is a directory");
}

TEST_F(SqliteStoreTest, RejectsAMissingFolder) {
  expectRefused(directory_.file("none/store.db"), "its folder does not exist");
}

TEST_F(SqliteStoreTest, RejectsADevice) {
  expectRefused("/dev/null", "is not a regular file");
}

TEST_F(SqliteStoreTest, RejectsAnEmptyPath) {
  EXPECT_EQ("store: its file name is empty", refusalOfStore(""));
}

TEST_F(SqliteStoreTest, RejectsAReadOnlyFile) {
  { SqliteStore(path_).load(sampleNetwork()); }
  ASSERT_EQ(0, chmod(path_.c_str(), 0444));
  const Unprivileged unprivileged(directory_.path());
  if (!unprivileged.isInForce()) {
    GTEST_SKIP() << "cannot give up the privileges of root here";
  }
  expectRefusedUntouched(path_, "Permission denied");
}

TEST_F(SqliteStoreTest, ExistsOnceAFileHasContent) {
  EXPECT_FALSE(SqliteStore::exists(path_));
  directory_.write("store.db", "");
  EXPECT_FALSE(SqliteStore::exists(path_));
  { const SqliteStore store(path_); }
  EXPECT_TRUE(SqliteStore::exists(path_));
  EXPECT_FALSE(SqliteStore::exists(SqliteStore::kInMemory));
  EXPECT_FALSE(SqliteStore::exists(""));
}

TEST_F(SqliteStoreTest, CreatesFilesForTheirOwnerOnly) {
  SqliteStore store(path_);
  store.load(sampleNetwork());
  for (const std::string& file : {path_, path_ + "-wal"}) {
    EXPECT_EQ(0600, static_cast<int>(std::filesystem::status(file).permissions())) << file;
  }
}

TEST_F(SqliteStoreTest, KeepsThePermissionsOfAnExistingFile) {
  directory_.write("store.db", "");
  std::filesystem::permissions(path_, static_cast<std::filesystem::perms>(0640));
  const SqliteStore store(path_);
  EXPECT_EQ(0640, static_cast<int>(std::filesystem::status(path_).permissions()));
}

TEST_F(SqliteStoreTest, RejectsADanglingSymbolicLink) {
  std::filesystem::create_symlink(directory_.file("target"), path_);
  EXPECT_EQ(path_ + ": is a symbolic link to a file that does not exist", refusalOfStore(path_));
  EXPECT_FALSE(std::filesystem::exists(directory_.file("target")));
}

TEST_F(SqliteStoreTest, RejectsAReadOnlyFolder) {
  const std::string folder = directory_.file("folder");
  ASSERT_EQ(0, mkdir(folder.c_str(), 0555));
  const Unprivileged unprivileged(directory_.path());
  if (!unprivileged.isInForce()) {
    GTEST_SKIP() << "cannot give up the privileges of root here";
  }
  EXPECT_EQ(folder + "/store.db: Permission denied", refusalOfStore(folder + "/store.db"));
}

TEST_F(SqliteStoreTest, RejectsAStoreWithoutTables) {
  { SqliteStore(path_).load(sampleNetwork()); }
  makeDatabase(path_, "DROP TABLE network");
  EXPECT_EQ(path_ + ": no such table: network", refusalOfQuestion(path_));
}

TEST_F(SqliteStoreTest, ReportsEveryFailureInOneLine) {
  EXPECT_EQ(directory_.path().string() + "/a\\x0ab/c: its folder does not exist",
            refusalOfStore(directory_.file("a\nb/c")));
}

TEST_F(SqliteStoreTest, KeepsAWriteAheadLog) {
  { SqliteStore store(path_); }
  SQLite::Database database(path_, SQLite::OPEN_READONLY);
  EXPECT_EQ("wal", database.execAndGet("PRAGMA journal_mode").getString());
}

// --- Changes of the network.

TEST_F(SqliteStoreTest, AddsANetworkAsAWholeOrNotAtAll) {
  SqliteStore store(path_);
  store.load(sampleNetwork());
  agent::Network more = wideNetwork(2);
  more.clockLinks.resize(1);
  more.clockLinks[0].linkId = "z";
  try {
    store.commit(NetworkAddition{more, {7}});
    ADD_FAILURE() << "stored a duplicate id";
  } catch (const StoreError& error) {
    EXPECT_EQ(path_ + ": UNIQUE constraint failed: clock_link.id", error.what());
  }
  EXPECT_EQ(sampleNetwork(), store.read());
}

TEST_F(SqliteStoreTest, RemovesNodesAndTheAttributesOfTheirObjects) {
  agent::Network network = sampleNetwork();
  {
    SqliteStore store(path_);
    store.load(network);
    store.commit(OwnerChange{{201, "z"}, "me"});
    store.commit(InfoChange{{201, "z"}, {{"a", "1"}}});
    store.commit(agent::NetworkRemoval{
        {network.topoNodes[3], network.topoNodes[1]}, {{201, "z"}, {1, "none"}}, {6}});
  }
  network.topoNodes = {network.topoNodes[0], network.topoNodes[2]};
  network.networkElements[2].shown = false;
  network.objectLabels.erase(network.objectLabels.begin());
  EXPECT_EQ(network, SqliteStore(path_).read());
  SQLite::Database database(path_, SQLite::OPEN_READWRITE);
  EXPECT_EQ(3, database.execAndGet("SELECT count(*) FROM topo_node_attribute").getInt());
  EXPECT_EQ("ok", database.execAndGet("PRAGMA integrity_check").getString());
}

// --- Change numbers.

TEST_F(SqliteStoreTest, NeverRepeatsAChangeNumberAfterAKill) {
  const int status = statusOfChild([&] {
    SqliteStore store(path_, [] { return 1000U; });
    store.commit(OwnerChange{{201, "z"}, "me"});
    raise(SIGKILL);
  });
  ASSERT_TRUE(wasKilledBy(status, SIGKILL));
  EXPECT_EQ(1002U, SqliteStore(path_, [] { return 0U; }).lastChange());
}

TEST_F(SqliteStoreTest, RejectsAChangeAfterTheLastNumber) {
  { SqliteStore store(path_); }
  makeDatabase(path_, "UPDATE last_change SET number = 9223372036854775806");
  SqliteStore store(path_);
  EXPECT_THROW(store.load(sampleNetwork()), StoreError);
  EXPECT_TRUE(store.isNew());
}

std::string damageOf(const std::string& path) {
  try {
    SqliteStore(path).check();
  } catch (const StoreError& error) {
    return error.what();
  }
  return {};
}

TEST_F(SqliteStoreTest, FindsNoDamageInAnIntactStore) {
  SqliteStore(path_).load(sampleNetwork());
  EXPECT_EQ("", damageOf(path_));
  EXPECT_EQ("", damageOf(SqliteStore::kInMemory));
}

TEST_F(SqliteStoreTest, FindsDamageOutsideOfTheDataThatIsRead) {
  SqliteStore(path_).load(sampleNetwork());
  support::damageStore(path_);
  EXPECT_EQ(sampleNetwork(), SqliteStore(path_).read());
  const std::string damage = damageOf(path_);
  const std::string expected = path_ + ": is damaged: ";
  EXPECT_EQ(expected, damage.substr(0, expected.size()));
  EXPECT_EQ(std::string::npos, damage.find("\\x0a"));
}

TEST_F(SqliteStoreTest, ReportsDamageInTheDataThatIsRead) {
  SqliteStore(path_).load(sampleNetwork());
  support::damageStore(path_);
  SqliteStore store(path_);
  try {
    store.commit(NetworkAddition{wideNetwork(3), {}});
    ADD_FAILURE() << "the damage is unnoticed";
  } catch (const StoreError& error) {
    EXPECT_EQ(path_ + ": is damaged", std::string(error.what()));
  }
}

// The file has a trigger that reads data outside the tables of the store.
TEST_F(SqliteStoreTest, DoesNotTrustTheSchemaOfItsFile) {
  SqliteStore(path_).load(sampleNetwork());
  makeDatabase(path_,
               "CREATE TRIGGER other AFTER UPDATE ON last_change "
               "BEGIN SELECT * FROM pragma_user_version; END");
  EXPECT_THROW(SqliteStore{path_}, StoreError);
}

}  // namespace
