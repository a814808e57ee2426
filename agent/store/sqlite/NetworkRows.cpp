#include "agent/store/sqlite/NetworkRows.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
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

// Records that a network was loaded, and the name of the managing system unless one is stored.
constexpr const char* kSetEms =
    "INSERT INTO network VALUES (1, ?) "
    "ON CONFLICT (only) DO UPDATE SET ems = excluded.ems WHERE ems = ''";

std::int32_t intAt(SQLite::Statement& row, int column) {
  return row.getColumn(column).getInt();
}

// Reserves memory for the rows of a table. Reads no index, which could be damaged.
template <typename Record>
void reserve(SQLite::Database& database, const std::string& table, std::vector<Record>& records) {
  const std::int64_t rows = valueOf(database, "SELECT count(*) FROM " + table + " NOT INDEXED");
  records.reserve(static_cast<std::size_t>(rows));
}

void readTopoNodes(SQLite::Database& database, Network& network) {
  std::vector<std::int64_t> positions;  // of the nodes, ascending
  forEachRow(database,
             "SELECT id, parent, name, type, parent_type, param3, param4, position FROM topo_node "
             "ORDER BY position",
             [&](SQLite::Statement& row) {
               positions.push_back(row.getColumn(7).getInt64());
               NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
               node.nodeId = textAt(row, 0);
               node.parentId = textAt(row, 1);
               node.nativeName = textAt(row, 2);
               node.nodeType = row.getColumn(3).getUInt();
               node.parentType = row.getColumn(4).getUInt();
               node.attribute3 = intAt(row, 5);
               node.attribute4 = intAt(row, 6);
             });
  forEachRow(database, "SELECT key, value, node FROM topo_node_attribute ORDER BY node, position",
             [&](SQLite::Statement& row) {
               const std::int64_t position = row.getColumn(2).getInt64();
               const auto node = std::lower_bound(positions.begin(), positions.end(), position);
               if (node == positions.end() || *node != position) {
                 throw std::out_of_range("an attribute without a node");
               }
               network.topoNodes[static_cast<std::size_t>(node - positions.begin())]
                   .extendedAttributes.emplace_back(textAt(row, 0), textAt(row, 1));
             });
}

void readNetworkElements(SQLite::Database& database, Network& network) {
  forEachRow(database, "SELECT number, name, shown FROM network_element ORDER BY position",
             [&](SQLite::Statement& row) {
               const std::int32_t shown = intAt(row, 2);
               network.networkElements.push_back(
                   {intAt(row, 0), textAt(row, 1), shown != 0, shown == kShownForNode});
             });
}

void readClock(SQLite::Database& database, Network& network) {
  forEachRow(database,
             "SELECT reference, label, value1, value2 FROM clock_position ORDER BY position",
             [&](SQLite::Statement& row) {
               NS_DOMAIN::ClockPositionInfo_T& position = network.clockPositions.emplace_back();
               position.reference = textAt(row, 0);
               position.label = textAt(row, 1);
               position.value1 = intAt(row, 2);
               position.value2 = intAt(row, 3);
             });
  forEachRow(database, "SELECT id, name, a_end, z_end FROM clock_link ORDER BY position",
             [&](SQLite::Statement& row) {
               NS_DOMAIN::ClockTopoLinkInfo_T& link = network.clockLinks.emplace_back();
               link.linkId = textAt(row, 0);
               link.nativeName = textAt(row, 1);
               link.aEndReference = textAt(row, 2);
               link.zEndReference = textAt(row, 3);
             });
}

void readLabels(SQLite::Database& database, Network& network) {
  forEachRow(database, "SELECT type, id, label FROM object_label ORDER BY position",
             [&](SQLite::Statement& row) {
               network.objectLabels.push_back({intAt(row, 0), textAt(row, 1), textAt(row, 2)});
             });
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
}

Network readNetwork(SQLite::Database& database) {
  Network network;
  reserve(database, "topo_node", network.topoNodes);
  reserve(database, "network_element", network.networkElements);
  reserve(database, "clock_position", network.clockPositions);
  reserve(database, "clock_link", network.clockLinks);
  forEachRow(database, "SELECT ems FROM network",
             [&](SQLite::Statement& row) { network.ems = textAt(row, 0); });
  readTopoNodes(database, network);
  readNetworkElements(database, network);
  readClock(database, network);
  readLabels(database, network);
  return network;
}

}  // namespace agent
