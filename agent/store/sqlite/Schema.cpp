#include "agent/store/sqlite/Schema.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "agent/store/sqlite/RunStatement.h"

namespace agent {
namespace {

constexpr std::int32_t kApplicationId = 0x746f706f;  // "topo", in the header of the file
constexpr std::int32_t kSchemaVersion = 4;

// The column position is the key of a row and the order of the rows. A new row gets a position
// after the last row; gaps between positions have no meaning. In the table object_info, position
// orders the pairs of an object. The table network has one row after a network was loaded. In the
// table of elements, shown is 2 for NetworkElement::shownForNode.
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
)sql";

void createSchema(SQLite::Database& database) {
  database.exec("PRAGMA application_id = " + std::to_string(kApplicationId));
  database.exec(kSchema);
  database.exec("INSERT INTO last_change VALUES (1, 0)");
  database.exec("PRAGMA user_version = " + std::to_string(kSchemaVersion));
}

// In a restored backup, the clock makes the number higher than the numbers that were used since the
// backup was made. number + 1 makes the number higher than all stored numbers when the clock was
// set back.
void raiseLastChange(SQLite::Database& database, const SqliteStore::Clock& clock) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  const auto now = static_cast<std::int64_t>(std::min(clock(), kMost));
  run(database, "UPDATE last_change SET number = max(number + 1, ?)", now);
}

}  // namespace

void requireOwnSchema(const std::string& path, const SchemaMark& mark) {
  if (mark.applicationId != kApplicationId) {
    throw StoreError(path, "is a database of another program");
  }
  if (mark.version != kSchemaVersion) {
    throw StoreError(path, "has the schema version " + std::to_string(mark.version) +
                               ", this program reads version " + std::to_string(kSchemaVersion));
  }
}

void prepareSchema(const std::string& path, SQLite::Database& database,
                   const SqliteStore::Clock& clock) {
  database.exec("PRAGMA trusted_schema = OFF");  // triggers and views have no side effects
  database.exec("PRAGMA locking_mode = EXCLUSIVE");
  database.exec("PRAGMA synchronous = FULL");
  database.exec("PRAGMA foreign_keys = ON");
  // The schema exists before write-ahead logging is switched on, so that a file with content always
  // has the application id.
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::EXCLUSIVE);
  if (valueOf(database, "PRAGMA application_id") == 0 &&
      valueOf(database, "SELECT count(*) FROM sqlite_schema") == 0) {
    createSchema(database);
  }
  requireOwnSchema(
      path, {valueOf(database, "PRAGMA application_id"), valueOf(database, "PRAGMA user_version")});
  raiseLastChange(database, clock);
  transaction.commit();
  database.exec("PRAGMA journal_mode = WAL");
}

}  // namespace agent
