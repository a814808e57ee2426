#include "agent/store/sqlite/NetworkRows.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "agent/store/sqlite/RunStatement.h"

namespace agent {
namespace {

constexpr std::int32_t kShown = 1;

// The position after the last row of a table.
std::int64_t nextPosition(SQLite::Database& database, const std::string& table) {
  return valueOf(database, "SELECT coalesce(max(position), -1) + 1 FROM " + table);
}

// A prepared INSERT whose first value is the position after the last row of the table.
class Inserter {
 public:
  Inserter(SQLite::Database& database, const std::string& table, const char* values,
           const Cancellation& cancellation)
      : statement_(database, "INSERT INTO " + table + " VALUES " + values),
        position_(nextPosition(database, table)),
        cancellation_(cancellation) {}

  // Returns the position of the new row. Throws Cancelled.
  template <typename... Values>
  std::int64_t insert(const Values&... values) {
    cancellation_.throwIfRequested();
    run(statement_, position_, values...);
    return position_++;
  }

 private:
  SQLite::Statement statement_;
  std::int64_t position_;
  const Cancellation& cancellation_;
};

// An empty list prepares no statement, because most changes add a single node.

void writeTopoNodes(SQLite::Database& database, const Network& network,
                    const Cancellation& cancellation) {
  if (network.topoNodes.empty()) {
    return;
  }
  Inserter nodes(database, "topo_node", "(?, ?, ?, ?, ?, ?, ?, ?)", cancellation);
  SQLite::Statement attribute(database, "INSERT INTO topo_node_attribute VALUES (?, ?, ?, ?)");
  for (const NS_DOMAIN::TopoNode_T& node : network.topoNodes) {
    const std::int64_t position =
        nodes.insert(node.nodeId, node.parentId, node.nativeName, node.nodeType, node.parentType,
                     node.attribute3, node.attribute4);
    std::int64_t place = 0;
    for (const auto& [key, value] : node.extendedAttributes) {
      run(attribute, position, place++, key, value);
    }
  }
}

void writeNetworkElements(SQLite::Database& database, const Network& network,
                          const Cancellation& cancellation) {
  if (network.networkElements.empty()) {
    return;
  }
  Inserter elements(database, "network_element", "(?, ?, ?, ?)", cancellation);
  for (const NetworkElement& element : network.networkElements) {
    elements.insert(element.number, element.name, shownValue(element));
  }
}

void writeClockPositions(SQLite::Database& database, const Network& network,
                         const Cancellation& cancellation) {
  if (network.clockPositions.empty()) {
    return;
  }
  Inserter positions(database, "clock_position", "(?, ?, ?, ?, ?)", cancellation);
  for (const NS_DOMAIN::ClockPositionInfo_T& position : network.clockPositions) {
    positions.insert(position.reference, position.label, position.value1, position.value2);
  }
}

void writeClockLinks(SQLite::Database& database, const Network& network,
                     const Cancellation& cancellation) {
  if (network.clockLinks.empty()) {
    return;
  }
  Inserter links(database, "clock_link", "(?, ?, ?, ?, ?)", cancellation);
  for (const NS_DOMAIN::ClockTopoLinkInfo_T& link : network.clockLinks) {
    links.insert(link.linkId, link.nativeName, link.aEndReference, link.zEndReference);
  }
}

void writeLabels(SQLite::Database& database, const Network& network,
                 const Cancellation& cancellation) {
  if (network.objectLabels.empty()) {
    return;
  }
  Inserter labels(database, "object_label", "(?, ?, ?, ?)", cancellation);
  for (const ObjectLabel& label : network.objectLabels) {
    labels.insert(label.type, label.id, label.label);
  }
}

// Replaces the attributes of the objects of the list.
void writeAttributes(SQLite::Database& database, const Network& network,
                     const Cancellation& cancellation) {
  if (!network.objectAttributes || network.objectAttributes->empty()) {
    return;
  }
  SQLite::Statement removeOwner(database, "DELETE FROM object_owner WHERE type = ? AND id = ?");
  SQLite::Statement removeInfo(database, "DELETE FROM object_info WHERE type = ? AND id = ?");
  SQLite::Statement owner(database, "INSERT INTO object_owner VALUES (?, ?, ?)");
  SQLite::Statement info(database, "INSERT INTO object_info VALUES (?, ?, ?, ?, ?)");
  for (const ObjectAttributes& object : *network.objectAttributes) {
    cancellation.throwIfRequested();
    run(removeOwner, object.type, object.id);
    run(removeInfo, object.type, object.id);
    if (!object.owner.empty()) {
      run(owner, object.type, object.id, object.owner);
    }
    std::int64_t position = 0;
    for (const auto& [name, value] : object.info) {
      run(info, object.type, object.id, position++, name, value);
    }
  }
}

// Records that a network was loaded, and the name of the managing system unless one is stored.
constexpr const char* kSetEms =
    "INSERT INTO network VALUES (1, ?) "
    "ON CONFLICT (only) DO UPDATE SET ems = excluded.ems WHERE ems = ''";

using Columns = std::vector<SQLite::Column>;

// Calls a function with the columns of every row, in the order of the query. All rows share the
// column objects, because the construction of a column takes as long as the reading of its value.
template <typename UseColumns>
void forEachRecord(SQLite::Database& database, const char* query, UseColumns useColumns) {
  SQLite::Statement row(database, query);
  Columns columns;
  while (row.executeStep()) {
    while (columns.size() < static_cast<std::size_t>(row.getColumnCount())) {
      columns.push_back(row.getColumn(static_cast<int>(columns.size())));
    }
    useColumns(columns);
  }
}

// Collects records and passes them on in pieces.
class PieceWriter {
 public:
  explicit PieceWriter(const NetworkStore::UsePiece& use) : use_(use) {}

  void setEms(std::string ems) { piece_.ems = std::move(ems); }

  // Appends a record without content to a list, and returns the record for the caller to fill.
  template <typename Record>
  Record& add(std::vector<Record> Network::*list) {
    if (records_ == kRecordsOfPiece) {
      pass();
    }
    std::vector<Record>& records = piece_.*list;
    if (records.empty()) {
      records.reserve(kRecordsOfPiece);
    }
    ++records_;
    return records.emplace_back();
  }

  void pass() {
    use_(std::exchange(piece_, {}));
    records_ = 0;
  }

 private:
  // The records of a piece fit into the cache of a processor.
  static constexpr std::size_t kRecordsOfPiece = 512;

  const NetworkStore::UsePiece& use_;
  Network piece_;
  std::size_t records_ = 0;
};

// Reads the attributes of the nodes in step with the nodes. A failure is thrown by throwFailure()
// after the last node, so that a failure of the nodes is reported first.
class AttributeRows {
 public:
  explicit AttributeRows(SQLite::Database& database)
      : row_(database, "SELECT node, key, value FROM topo_node_attribute ORDER BY node, position") {
    step();
  }

  // Appends the attributes of the node at a position. REQUIRES: the position is greater than that
  // of the call before.
  void appendTo(NS_DOMAIN::TopoNode_T& node, std::int64_t position) {
    while (hasRow_ && row_.getColumn(0).getInt64() == position) {
      node.extendedAttributes.emplace_back(textAt(row_, 1), textAt(row_, 2));
      step();
    }
  }

  // Throws std::out_of_range for an attribute without a node. REQUIRES: appendTo() was called for
  // every node.
  void throwFailure() const {
    if (failure_) {
      std::rethrow_exception(failure_);
    }
    if (hasRow_) {
      throw std::out_of_range("an attribute without a node");
    }
  }

 private:
  void step() {
    try {
      hasRow_ = row_.executeStep();
    } catch (const SQLite::Exception&) {
      hasRow_ = false;
      failure_ = std::current_exception();
    }
  }

  SQLite::Statement row_;
  bool hasRow_ = false;
  std::exception_ptr failure_;
};

void readTopoNodes(SQLite::Database& database, PieceWriter& pieces) {
  AttributeRows attributes(database);
  forEachRecord(
      database,
      "SELECT id, parent, name, type, parent_type, param3, param4, position FROM topo_node "
      "ORDER BY position",
      [&](const Columns& row) {
        NS_DOMAIN::TopoNode_T& node = pieces.add(&Network::topoNodes);
        node.nodeId = row[0].getString();
        node.parentId = row[1].getString();
        node.nativeName = row[2].getString();
        node.nodeType = row[3].getUInt();
        node.parentType = row[4].getUInt();
        node.attribute3 = row[5].getInt();
        node.attribute4 = row[6].getInt();
        attributes.appendTo(node, row[7].getInt64());
      });
  attributes.throwFailure();
}

void readNetworkElements(SQLite::Database& database, PieceWriter& pieces) {
  forEachRecord(database, "SELECT number, name, shown FROM network_element ORDER BY position",
                [&](const Columns& row) {
                  const std::int32_t shown = row[2].getInt();
                  pieces.add(&Network::networkElements) = {row[0].getInt(), row[1].getString(),
                                                           shown != 0, shown == kShownForNode};
                });
}

void readClock(SQLite::Database& database, PieceWriter& pieces) {
  forEachRecord(database,
                "SELECT reference, label, value1, value2 FROM clock_position ORDER BY position",
                [&](const Columns& row) {
                  NS_DOMAIN::ClockPositionInfo_T& position = pieces.add(&Network::clockPositions);
                  position.reference = row[0].getString();
                  position.label = row[1].getString();
                  position.value1 = row[2].getInt();
                  position.value2 = row[3].getInt();
                });
  forEachRecord(database, "SELECT id, name, a_end, z_end FROM clock_link ORDER BY position",
                [&](const Columns& row) {
                  NS_DOMAIN::ClockTopoLinkInfo_T& link = pieces.add(&Network::clockLinks);
                  link.linkId = row[0].getString();
                  link.nativeName = row[1].getString();
                  link.aEndReference = row[2].getString();
                  link.zEndReference = row[3].getString();
                });
}

void readLabels(SQLite::Database& database, PieceWriter& pieces) {
  forEachRecord(database, "SELECT type, id, label FROM object_label ORDER BY position",
                [&](const Columns& row) {
                  pieces.add(&Network::objectLabels) = {row[0].getInt(), row[1].getString(),
                                                        row[2].getString()};
                });
}

// Estimates the number of rows from the largest position: most tables have positions from 0 without
// gaps. The size of the file limits the estimate, because a manipulated store can have any
// position.
std::size_t sizeOf(SQLite::Database& database, const std::string& table) {
  constexpr const char* kMostRows =
      "(SELECT page_count * page_size / 16 FROM pragma_page_count, "
      "pragma_page_size)";
  const std::int64_t rows =
      valueOf(database, "SELECT max(0, min(coalesce((SELECT max(position) FROM " + table +
                            "), -1) + 1, " + kMostRows + "))");
  return static_cast<std::size_t>(rows);
}

}  // namespace

std::int32_t shownValue(const NetworkElement& element) {
  if (element.shownForNode) {
    return kShownForNode;
  }
  return element.shown ? kShown : 0;
}

void writeNetwork(SQLite::Database& database, const Network& network,
                  const Cancellation& cancellation) {
  run(database, kSetEms, network.ems);
  writeTopoNodes(database, network, cancellation);
  writeNetworkElements(database, network, cancellation);
  writeClockPositions(database, network, cancellation);
  writeClockLinks(database, network, cancellation);
  writeLabels(database, network, cancellation);
  writeAttributes(database, network, cancellation);
}

std::vector<ObjectAttributes> readAttributes(SQLite::Database& database) {
  std::map<std::pair<std::int32_t, std::string>, ObjectAttributes> objects;
  const auto objectAt = [&objects](SQLite::Statement& row) -> ObjectAttributes& {
    const std::int32_t type = row.getColumn(0).getInt();
    ObjectAttributes& object = objects[{type, textAt(row, 1)}];
    object.type = type;
    object.id = textAt(row, 1);
    return object;
  };
  forEachRow(database, "SELECT type, id, owner FROM object_owner",
             [&](SQLite::Statement& row) { objectAt(row).owner = textAt(row, 2); });
  forEachRow(database, "SELECT type, id, name, value FROM object_info ORDER BY type, id, position",
             [&](SQLite::Statement& row) {
               objectAt(row).info.emplace_back(textAt(row, 2), textAt(row, 3));
             });
  std::vector<ObjectAttributes> result;
  result.reserve(objects.size());
  for (auto& entry : objects) {
    result.push_back(std::move(entry.second));
  }
  return result;
}

void readNetwork(SQLite::Database& database, const NetworkStore::UsePiece& use) {
  PieceWriter pieces(use);
  forEachRow(database, "SELECT ems FROM network",
             [&](SQLite::Statement& row) { pieces.setEms(textAt(row, 0)); });
  readTopoNodes(database, pieces);
  readNetworkElements(database, pieces);
  readClock(database, pieces);
  readLabels(database, pieces);
  pieces.pass();
}

NetworkSizes sizesOf(SQLite::Database& database) {
  return {sizeOf(database, "topo_node"), sizeOf(database, "network_element"),
          sizeOf(database, "clock_position"), sizeOf(database, "clock_link")};
}

}  // namespace agent
