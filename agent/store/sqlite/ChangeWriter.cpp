#include "agent/store/sqlite/ChangeWriter.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "agent/store/sqlite/NetworkRows.h"
#include "agent/store/sqlite/RunStatement.h"

namespace agent {
namespace {

constexpr const char* kSetLabel =
    "INSERT INTO object_label (type, id, label) VALUES (?, ?, ?) "
    "ON CONFLICT (type, id) DO UPDATE SET label = excluded.label";
constexpr const char* kRemoveLabel = "DELETE FROM object_label WHERE type = ? AND id = ?";

constexpr const char* kSetOwner =
    "INSERT INTO object_owner (type, id, owner) VALUES (?, ?, ?) "
    "ON CONFLICT (type, id) DO UPDATE SET owner = excluded.owner";
constexpr const char* kRemoveOwner = "DELETE FROM object_owner WHERE type = ? AND id = ?";

constexpr const char* kSetInfo =
    "INSERT INTO object_info (type, id, position, name, value) VALUES (?1, ?2, "
    "(SELECT coalesce(max(position), -1) + 1 FROM object_info WHERE type = ?1 AND id = ?2), ?3, ?4)"
    " ON CONFLICT (type, id, name) DO UPDATE SET value = excluded.value";
constexpr const char* kRemoveInfo =
    "DELETE FROM object_info WHERE type = ? AND id = ? AND name = ?";
constexpr const char* kRemoveAllInfo = "DELETE FROM object_info WHERE type = ? AND id = ?";

const char* renameStatement(RecordList list) {
  switch (list) {
    case RecordList::kTopoNodes:
      return "UPDATE topo_node SET name = ? WHERE id = ?";
    case RecordList::kNetworkElements:
      return "UPDATE network_element SET name = ? WHERE number = CAST(? AS INTEGER)";
    case RecordList::kClockPositions:
      return "UPDATE clock_position SET label = ? WHERE reference = ?";
    default:
      return "UPDATE clock_link SET name = ? WHERE id = ?";
  }
}

const char* removeStatement(RecordList list) {
  switch (list) {
    case RecordList::kTopoNodes:
      return "DELETE FROM topo_node WHERE id = ?";
    case RecordList::kNetworkElements:
      return "DELETE FROM network_element WHERE number = CAST(? AS INTEGER)";
    case RecordList::kClockPositions:
      return "DELETE FROM clock_position WHERE reference = ?";
    default:
      return "DELETE FROM clock_link WHERE id = ?";
  }
}

void update(SQLite::Database& database, const NS_DOMAIN::TopoNode_T& node) {
  run(database,
      "UPDATE topo_node SET parent = ?, name = ?, type = ?, parent_type = ?, param3 = ?, "
      "param4 = ? WHERE id = ?",
      node.parentId, node.nativeName, node.nodeType, node.parentType, node.attribute3,
      node.attribute4, node.nodeId);
  run(database,
      "DELETE FROM topo_node_attribute "
      "WHERE node = (SELECT position FROM topo_node WHERE id = ?)",
      node.nodeId);
  SQLite::Statement insert(database,
                           "INSERT INTO topo_node_attribute "
                           "SELECT position, ?, ?, ? FROM topo_node WHERE id = ?");
  std::int64_t place = 0;
  for (const auto& [key, value] : node.extendedAttributes) {
    run(insert, place++, key, value, node.nodeId);
  }
}

void update(SQLite::Database& database, const NetworkElement& element) {
  run(database, "UPDATE network_element SET name = ?, shown = ? WHERE number = ?", element.name,
      shownValue(element), element.number);
}

void update(SQLite::Database& database, const NS_DOMAIN::ClockPositionInfo_T& position) {
  run(database, "UPDATE clock_position SET label = ?, value1 = ?, value2 = ? WHERE reference = ?",
      position.label, position.value1, position.value2, position.reference);
}

void update(SQLite::Database& database, const NS_DOMAIN::ClockTopoLinkInfo_T& link) {
  run(database, "UPDATE clock_link SET name = ?, a_end = ?, z_end = ? WHERE id = ?",
      link.nativeName, link.aEndReference, link.zEndReference, link.linkId);
}

void setShown(SQLite::Database& database, const std::vector<std::int32_t>& numbers,
              std::int32_t shown) {
  SQLite::Statement statement(database, "UPDATE network_element SET shown = ? WHERE number = ?");
  for (const std::int32_t number : numbers) {
    run(statement, shown, number);
  }
}

void removeNodes(SQLite::Database& database, const std::vector<NS_DOMAIN::TopoNode_T>& nodes) {
  SQLite::Statement statement(database, removeStatement(RecordList::kTopoNodes));
  for (const NS_DOMAIN::TopoNode_T& node : nodes) {
    run(statement, node.nodeId);
  }
}

// Stores a text under a key, or removes the stored text if the new text is empty.
void setText(SQLite::Database& database, const char* set, const char* remove, const ObjectKey& key,
             const std::string& text) {
  if (text.empty()) {
    run(database, remove, key.type, key.id);
  } else {
    run(database, set, key.type, key.id, text);
  }
}

void removeAttributes(SQLite::Database& database, const std::vector<ObjectKey>& objects) {
  for (const char* const text : {kRemoveLabel, kRemoveOwner, kRemoveAllInfo}) {
    SQLite::Statement statement(database, text);
    for (const ObjectKey& object : objects) {
      run(statement, object.type, object.id);
    }
  }
}

}  // namespace

void ChangeWriter::operator()(const NetworkAddition& change) const {
  writeNetwork(database_, change.network, cancellation_);
  setShown(database_, change.shownElements, kShownForNode);
}

void ChangeWriter::operator()(const NetworkRemoval& change) const {
  removeNodes(database_, change.nodes);
  removeAttributes(database_, change.objects);
  setShown(database_, change.hiddenElements, 0);
}

void ChangeWriter::operator()(const NetworkRenaming& change) const {
  for (const NamedRecord& record : change.records) {
    run(database_, renameStatement(record.list), change.name, record.id);
  }
}

void ChangeWriter::operator()(const NetworkReplacement& change) const {
  removeAttributes(database_, change.objects);
  for (const char* const table :
       {"topo_node", "network_element", "clock_position", "clock_link", "object_label"}) {
    database_.exec(std::string("DELETE FROM ") + table);
  }
  if (change.network.objectAttributes) {
    database_.exec("DELETE FROM object_owner");
    database_.exec("DELETE FROM object_info");
  }
  writeNetwork(database_, change.network, cancellation_);
}

void ChangeWriter::operator()(const RecordRemoval& change) const {
  run(database_, removeStatement(change.record.list), change.record.id);
  removeAttributes(database_, change.objects);
}

void ChangeWriter::operator()(const RecordUpdate& change) const {
  std::visit([this](const auto& record) { update(database_, record); }, change.record);
}

void ChangeWriter::operator()(const LabelChange& change) const {
  setText(database_, kSetLabel, kRemoveLabel, change.key, change.label);
}

void ChangeWriter::operator()(const OwnerChange& change) const {
  setText(database_, kSetOwner, kRemoveOwner, change.key, change.owner);
}

void ChangeWriter::operator()(const InfoChange& change) const {
  SQLite::Statement set(database_, kSetInfo);
  SQLite::Statement remove(database_, kRemoveInfo);
  for (const auto& [name, value] : change.pairs) {
    if (value.empty()) {
      run(remove, change.key.type, change.key.id, name);
    } else {
      run(set, change.key.type, change.key.id, name, value);
    }
  }
}

void ChangeWriter::operator()(const AttributeRemoval& change) const {
  removeAttributes(database_, {change.key});
}

}  // namespace agent
