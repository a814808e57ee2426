#include "agent/domain/NetworkStore.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "agent/domain/StoreGuard.h"
#include "agent/domain/Text.h"

namespace agent {
namespace {

constexpr std::int32_t kApplicationId = 0x746f706f;  // "topo", in the header of the file
constexpr std::int32_t kSchemaVersion = 2;
constexpr std::int32_t kFirstSchemaVersion = 1;

// A position gives an object its place in its list and is the key by which its rows are changed;
// new objects follow the last one, and gaps mean nothing. The one row of the table network says
// that a network was loaded.
constexpr const char* kFirstSchema = R"sql(
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
)sql";

// What version 2 has on top: more that is kept of objects. Positions order the pairs of an object.
constexpr const char* kSecondSchema = R"sql(
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

std::int64_t valueOf(SQLite::Database& database, const char* query) {
  return database.execAndGet(query).getInt64();
}

void requireOurs(const std::string& path, SQLite::Database& database) {
  if (valueOf(database, "PRAGMA application_id") != kApplicationId) {
    throw StoreError(path, "is a database of another program");
  }
  const std::int64_t version = valueOf(database, "PRAGMA user_version");
  if (version < kFirstSchemaVersion || version > kSchemaVersion) {
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

std::unique_ptr<SQLite::Database> openDatabase(const std::string& path) {
  if (path.empty()) {
    throw StoreError("store", "its file name is empty");
  }
  if (!isInMemory(path) && isExistingFile(path)) {
    refuseForeign(path);
  }
  return std::make_unique<SQLite::Database>(databaseName(path),
                                            SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
}

void createSchema(SQLite::Database& database) {
  database.exec("PRAGMA application_id = " + std::to_string(kApplicationId));
  database.exec(kFirstSchema);
  database.exec("PRAGMA user_version = " + std::to_string(kFirstSchemaVersion));
}

// From any earlier version to this one.
void upgradeSchema(SQLite::Database& database) {
  if (valueOf(database, "PRAGMA user_version") == kFirstSchemaVersion) {
    database.exec(kSecondSchema);
  }
  database.exec("PRAGMA user_version = " + std::to_string(kSchemaVersion));
}

// Takes the lock, which stays for as long as the database is open, then makes, checks or upgrades
// the schema, all in one transaction. The schema is there before write-ahead logging is switched
// on, so that there is never a file that has content and not our mark.
void prepare(const std::string& path, SQLite::Database& database) {
  database.exec("PRAGMA locking_mode = EXCLUSIVE");
  database.exec("PRAGMA synchronous = FULL");
  database.exec("PRAGMA foreign_keys = ON");
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::EXCLUSIVE);
  if (valueOf(database, "PRAGMA application_id") == 0 &&
      valueOf(database, "SELECT count(*) FROM sqlite_schema") == 0) {
    createSchema(database);
  }
  requireOurs(path, database);
  upgradeSchema(database);
  transaction.commit();
  database.exec("PRAGMA journal_mode = WAL");
}

// A prepared INSERT with a position before its other values, counted from 0.
class Inserter {
 public:
  Inserter(SQLite::Database& database, const char* statement) : statement_(database, statement) {}

  template <typename... Values>
  void insert(const Values&... values) {
    SQLite::bind(statement_, position_++, values...);
    statement_.exec();
    statement_.reset();
  }

 private:
  SQLite::Statement statement_;
  std::int64_t position_ = 0;
};

void storeAttributes(SQLite::Statement& statement, std::int64_t node,
                     const std::vector<std::pair<std::string, std::string>>& attributes) {
  std::int64_t position = 0;
  for (const auto& [key, value] : attributes) {
    SQLite::bind(statement, node, position++, key, value);
    statement.exec();
    statement.reset();
  }
}

void storeTopoNodes(SQLite::Database& database, const Network& network) {
  Inserter nodes(database, "INSERT INTO topo_node VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
  SQLite::Statement attributes(database, "INSERT INTO topo_node_attribute VALUES (?, ?, ?, ?)");
  std::int64_t position = 0;
  for (const NS_DOMAIN::TopoNode_T& node : network.topoNodes) {
    nodes.insert(node.nodeId, node.parentId, node.nativeName, node.nodeType, node.parentType,
                 node.attribute3, node.attribute4);
    storeAttributes(attributes, position++, node.extendedAttributes);
  }
}

void storeNetworkElements(SQLite::Database& database, const Network& network) {
  Inserter elements(database, "INSERT INTO network_element VALUES (?, ?, ?, ?)");
  for (const NetworkElement& element : network.networkElements) {
    elements.insert(element.number, element.name, std::int32_t{element.shown});
  }
}

void storeClock(SQLite::Database& database, const Network& network) {
  Inserter positions(database, "INSERT INTO clock_position VALUES (?, ?, ?, ?, ?)");
  for (const NS_DOMAIN::ClockPositionInfo_T& position : network.clockPositions) {
    positions.insert(position.reference, position.label, position.value1, position.value2);
  }
  Inserter links(database, "INSERT INTO clock_link VALUES (?, ?, ?, ?, ?)");
  for (const NS_DOMAIN::ClockTopoLinkInfo_T& link : network.clockLinks) {
    links.insert(link.linkId, link.nativeName, link.aEndReference, link.zEndReference);
  }
}

void storeLabels(SQLite::Database& database, const Network& network) {
  Inserter labels(database, "INSERT INTO object_label VALUES (?, ?, ?, ?)");
  for (const ObjectLabel& label : network.objectLabels) {
    labels.insert(label.type, label.id, label.label);
  }
}

// Calls a function with every row of a query, in its order.
template <typename UseRow>
void forEachRow(SQLite::Database& database, const char* query, UseRow useRow) {
  SQLite::Statement row(database, query);
  while (row.executeStep()) {
    useRow(row);
  }
}

// Texts may be longer than their first NUL, which the conversion of a column minds and a char* not.
std::string textOf(SQLite::Statement& row, int column) {
  return row.getColumn(column).getString();
}

std::int32_t intOf(SQLite::Statement& row, int column) {
  return row.getColumn(column).getInt();
}

void readTopoNodes(SQLite::Database& database, Network& network) {
  std::unordered_map<std::int64_t, std::size_t> indexOf;  // by position
  forEachRow(database,
             "SELECT id, parent, name, type, parent_type, param3, param4, position FROM topo_node "
             "ORDER BY position",
             [&](SQLite::Statement& row) {
               indexOf.emplace(row.getColumn(7).getInt64(), network.topoNodes.size());
               NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
               node.nodeId = textOf(row, 0);
               node.parentId = textOf(row, 1);
               node.nativeName = textOf(row, 2);
               node.nodeType = row.getColumn(3).getUInt();
               node.parentType = row.getColumn(4).getUInt();
               node.attribute3 = intOf(row, 5);
               node.attribute4 = intOf(row, 6);
             });
  forEachRow(database, "SELECT key, value, node FROM topo_node_attribute ORDER BY node, position",
             [&](SQLite::Statement& row) {
               NS_DOMAIN::TopoNode_T& node =
                   network.topoNodes[indexOf.at(row.getColumn(2).getInt64())];
               node.extendedAttributes.emplace_back(textOf(row, 0), textOf(row, 1));
             });
}

void readNetworkElements(SQLite::Database& database, Network& network) {
  forEachRow(
      database, "SELECT number, name, shown FROM network_element ORDER BY position",
      [&](SQLite::Statement& row) {
        network.networkElements.push_back({intOf(row, 0), textOf(row, 1), intOf(row, 2) != 0});
      });
}

void readClock(SQLite::Database& database, Network& network) {
  forEachRow(database,
             "SELECT reference, label, value1, value2 FROM clock_position ORDER BY position",
             [&](SQLite::Statement& row) {
               NS_DOMAIN::ClockPositionInfo_T& position = network.clockPositions.emplace_back();
               position.reference = textOf(row, 0);
               position.label = textOf(row, 1);
               position.value1 = intOf(row, 2);
               position.value2 = intOf(row, 3);
             });
  forEachRow(database, "SELECT id, name, a_end, z_end FROM clock_link ORDER BY position",
             [&](SQLite::Statement& row) {
               NS_DOMAIN::ClockTopoLinkInfo_T& link = network.clockLinks.emplace_back();
               link.linkId = textOf(row, 0);
               link.nativeName = textOf(row, 1);
               link.aEndReference = textOf(row, 2);
               link.zEndReference = textOf(row, 3);
             });
}

void readLabels(SQLite::Database& database, Network& network) {
  forEachRow(database, "SELECT type, id, label FROM object_label ORDER BY position",
             [&](SQLite::Statement& row) {
               network.objectLabels.push_back({intOf(row, 0), textOf(row, 1), textOf(row, 2)});
             });
}

}  // namespace

StoreError::StoreError(const std::string& path, const std::string& reason)
    : std::runtime_error(printable(path, 4096) + ": " + printable(reason)) {}

bool NetworkStore::needsNetwork(const std::string& path) {
  const bool exists = !path.empty() && !isInMemory(path) && isExistingFile(path);
  return !exists || NetworkStore(path).isNew();
}

NetworkStore::NetworkStore(const std::string& path)
    : path_(path), database_(guarded(path, [&] { return openDatabase(path); })) {
  guarded(path_, [&] { prepare(path_, *database_); });
}

NetworkStore::~NetworkStore() = default;

bool NetworkStore::isNew() {
  return guarded(path_, [&] { return valueOf(*database_, "SELECT count(*) FROM network") == 0; });
}

void NetworkStore::load(const Network& network) {
  if (!isNew()) {
    throw StoreError(path_, "holds a network already");
  }
  guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    Inserter(*database_, "INSERT INTO network VALUES (? + 1, ?)").insert(network.ems);
    storeTopoNodes(*database_, network);
    storeNetworkElements(*database_, network);
    storeClock(*database_, network);
    storeLabels(*database_, network);
    transaction.commit();
  });
}

Network NetworkStore::read() {
  return guarded(path_, [&] {
    Network network;
    forEachRow(*database_, "SELECT ems FROM network",
               [&](SQLite::Statement& row) { network.ems = textOf(row, 0); });
    readTopoNodes(*database_, network);
    readNetworkElements(*database_, network);
    readClock(*database_, network);
    readLabels(*database_, network);
    return network;
  });
}

}  // namespace agent
