#include "agent/store/sqlite/SqliteStore.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "agent/base/Text.h"
#include "agent/store/sqlite/ChangeWriter.h"
#include "agent/store/sqlite/NetworkRows.h"
#include "agent/store/sqlite/RunStatement.h"
#include "agent/store/sqlite/SqliteCopy.h"
#include "agent/store/sqlite/SqliteErrors.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

constexpr std::int32_t kApplicationId = 0x746f706f;  // "topo", in the header of the file
constexpr std::int32_t kSchemaVersion = 4;

// A position gives an object its place in its list and is the key by which its rows are changed;
// new objects follow the last one, and gaps mean nothing. The positions of the table object_info
// order the pairs of an object. The one row of the table network says that a network was loaded.
// The column shown of an element may be 2, for an element that is shown because of a node that it
// got at run time.
constexpr const char* kSchema = R"sql(
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
  CREATE TABLE last_change (
    only INTEGER PRIMARY KEY CHECK (only = 1),
    number INTEGER NOT NULL
  ) STRICT;
  CREATE TABLE notification_id (
    only INTEGER PRIMARY KEY CHECK (only = 1),
    next INTEGER NOT NULL
  ) STRICT;
)sql";

bool isInMemory(const std::string& path) {
  return path == NetworkStore::kInMemory;
}

// With the path made absolute nothing in it can mean anything special to SQLite.
std::string databaseName(const std::string& path) {
  return isInMemory(path) ? path : std::filesystem::absolute(path).string();
}

[[noreturn]] void refuse(const std::string& path, int systemError) {
  throw StoreError(path, std::generic_category().message(systemError));
}

// True for a file with something in it, false where a store can be made. Touches nothing.
bool isExistingFile(const std::string& path) {
  const std::filesystem::path file = databaseName(path);
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (std::filesystem::is_directory(status)) {
    refuse(path, EISDIR);
  }
  if (!std::filesystem::exists(status)) {
    if (error && error != std::errc::no_such_file_or_directory) {
      refuse(path, error.value());
    }
    if (!std::filesystem::is_directory(file.parent_path(), error)) {
      throw StoreError(path, "its folder does not exist");
    }
    return false;
  }
  if (!std::filesystem::is_regular_file(status)) {
    throw StoreError(path, "is not a regular file");
  }
  if (::faccessat(AT_FDCWD, file.c_str(), R_OK | W_OK, AT_EACCESS) != 0) {
    refuse(path, errno);
  }
  return std::filesystem::file_size(file) != 0;
}

void requireOurs(const std::string& path, SQLite::Database& database) {
  if (valueOf(database, "PRAGMA application_id") != kApplicationId) {
    throw StoreError(path, "is a database of another program");
  }
  const std::int64_t version = valueOf(database, "PRAGMA user_version");
  if (version != kSchemaVersion) {
    throw StoreError(path, "has the schema version " + std::to_string(version) +
                               ", this program reads version " + std::to_string(kSchemaVersion));
  }
}

// A file name as a part of a URI.
std::string uriPath(const std::string& path) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string escaped;
  for (const char character : path) {
    if (character == '%' || character == '?' || character == '#') {
      const auto value = static_cast<unsigned char>(character);
      escaped += {'%', kDigits[value >> 4], kDigits[value & 0xf]};
    } else {
      escaped += character;
    }
  }
  return escaped;
}

// Looks at the file alone, as if nobody could change it: opening it in the usual way would already
// recover what its owner left in a journal beside it. Not read with calls of our own because
// closing a file drops the locks that this process has on it; SQLite knows how to avoid that.
void refuseForeign(const std::string& path) {
  const std::string uri = "file:" + uriPath(databaseName(path)) + "?mode=ro&immutable=1";
  SQLite::Database database(uri, SQLite::OPEN_READONLY | SQLite::OPEN_URI);
  requireOurs(path, database);
}

// SQLite would make the file readable for everybody; its journals get the permissions of the file.
void createPrivateFile(const std::string& path) {
  const int file = ::open(databaseName(path).c_str(),
                          O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (file < 0 && errno == EEXIST) {
    throw StoreError(path, "is a symbolic link to a file that does not exist");
  }
  if (file < 0) {
    refuse(path, errno);
  }
  ::close(file);
}

void prepareFile(const std::string& path) {
  if (isExistingFile(path)) {
    refuseForeign(path);
  } else if (!std::filesystem::exists(databaseName(path))) {
    createPrivateFile(path);
  }
}

std::unique_ptr<SQLite::Database> openDatabase(const std::string& path) {
  if (path.empty()) {
    throw StoreError("store", "its file name is empty");
  }
  if (!isInMemory(path)) {
    prepareFile(path);
  }
  return std::make_unique<SQLite::Database>(databaseName(path),
                                            SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
}

void createSchema(SQLite::Database& database, const NetworkStore::Clock& clock) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  constexpr std::uint64_t kMicroseconds = 1000;  // of a millisecond
  database.exec("PRAGMA application_id = " + std::to_string(kApplicationId));
  database.exec(kSchema);
  const auto now = static_cast<std::int64_t>(std::min(clock(), kMost));
  run(database, "INSERT INTO notification_id VALUES (1, ?)", now);
  run(database, "INSERT INTO last_change VALUES (1, ?)",
      now / static_cast<std::int64_t>(kMicroseconds));
  database.exec("PRAGMA user_version = " + std::to_string(kSchemaVersion));
}

// A schema that somebody else has written into the file can do nothing but compute. Takes the lock,
// which stays for as long as the database is open, then makes or checks the schema and raises the
// change number, all in one transaction. The schema is there before write-ahead logging is switched
// on, so that there is never a file that has content and not our mark.
void prepare(const std::string& path, SQLite::Database& database,
             const NetworkStore::Clock& clock) {
  database.exec("PRAGMA trusted_schema = OFF");
  database.exec("PRAGMA locking_mode = EXCLUSIVE");
  database.exec("PRAGMA synchronous = FULL");
  database.exec("PRAGMA foreign_keys = ON");
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::EXCLUSIVE);
  if (valueOf(database, "PRAGMA application_id") == 0 &&
      valueOf(database, "SELECT count(*) FROM sqlite_schema") == 0) {
    createSchema(database, clock);
  }
  requireOurs(path, database);
  commitChange(database, transaction);
  database.exec("PRAGMA journal_mode = WAL");
}

}  // namespace

StoreError::StoreError(const std::string& path, const std::string& reason)
    : std::runtime_error(printable(path, 4096) + ": " + printable(reason)) {}

bool NetworkStore::exists(const std::string& path) {
  return !path.empty() && !isInMemory(path) && isExistingFile(path);
}

bool NetworkStore::needsNetwork(const std::string& path) {
  return !exists(path) || NetworkStore(path).isNew();
}

std::uint64_t microsecondsNow() {
  using std::chrono::microseconds;
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  const auto count = std::chrono::duration_cast<microseconds>(sinceEpoch).count();
  return static_cast<std::uint64_t>(std::max<microseconds::rep>(count, 0));
}

NetworkStore::NetworkStore(const std::string& path, const Clock& clock)
    : path_(path), database_(guarded(path, [&] { return openDatabase(path); })) {
  guarded(path_, [&] { prepare(path_, *database_, clock); });
}

NetworkStore::~NetworkStore() = default;

void NetworkStore::check() {
  guarded(path_, [&] {
    const std::string found = database_->execAndGet("PRAGMA quick_check(1)").getString();
    if (found != "ok") {
      throw StoreError(path_, "is damaged: " + found.substr(found.rfind('\n') + 1));
    }
  });
}

bool NetworkStore::isNew() {
  return guarded(path_, [&] { return valueOf(*database_, "SELECT count(*) FROM network") == 0; });
}

void NetworkStore::load(const Network& network) {
  if (!isNew()) {
    throw StoreError(path_, "holds a network already");
  }
  guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    writeNetwork(*database_, network, Cancellation::none());
    commitChange(*database_, transaction);
  });
}

std::uint64_t NetworkStore::commit(const NetworkChange& change, const Cancellation& cancellation) {
  return guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    std::visit(ChangeWriter(*database_, cancellation), change);
    return commitChange(*database_, transaction);
  });
}

std::uint64_t NetworkStore::reserveNotificationIds(std::uint64_t count) {
  return guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    const std::int64_t first = valueOf(*database_, "SELECT next FROM notification_id");
    constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (first < 0 || count > kMost - static_cast<std::uint64_t>(first)) {
      throw StoreError(path_, "has no " + std::to_string(count) + " notification ids left");
    }
    run(*database_, "UPDATE notification_id SET next = ?",
        first + static_cast<std::int64_t>(count));
    transaction.commit();
    return static_cast<std::uint64_t>(first);
  });
}

std::uint64_t NetworkStore::lastChange() {
  return guarded(path_, [&] {
    return static_cast<std::uint64_t>(valueOf(*database_, "SELECT number FROM last_change"));
  });
}

std::vector<std::string> NetworkStore::idsWithLabel(std::int32_t type, const std::string& label) {
  return guarded(path_, [&] {
    std::vector<std::string> ids;
    forEachRow(
        *database_, "SELECT id FROM object_label WHERE type = ? AND label = ?",
        [&](SQLite::Statement& row) { ids.push_back(textAt(row, 0)); }, type, label);
    return ids;
  });
}

InfoPairs NetworkStore::additionalInfoOf(const ObjectKey& key) {
  return guarded(path_, [&] {
    InfoPairs pairs;
    forEachRow(
        *database_,
        "SELECT name, value FROM object_info WHERE type = ? AND id = ? ORDER BY position",
        [&](SQLite::Statement& row) { pairs.emplace_back(textAt(row, 0), textAt(row, 1)); },
        key.type, key.id);
    return pairs;
  });
}

std::string NetworkStore::ownerOf(const ObjectKey& key) {
  return guarded(path_, [&] {
    std::string owner;
    forEachRow(
        *database_, "SELECT owner FROM object_owner WHERE type = ? AND id = ?",
        [&](SQLite::Statement& row) { owner = textAt(row, 0); }, key.type, key.id);
    return owner;
  });
}

std::unique_ptr<StoreCopy> NetworkStore::beginCopy() {
  return std::make_unique<StoreCopy>(*database_, path_);
}

Network NetworkStore::read() {
  return guarded(path_, [&] { return readNetwork(*database_); });
}

}  // namespace agent
