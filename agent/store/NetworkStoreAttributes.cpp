// What the store keeps of objects beside the network itself.

#include "agent/store/NetworkStore.h"
#include "agent/store/Statements.h"
#include "agent/store/StoreGuard.h"

namespace agent {
namespace {

// Stores a text under a key, or removes what is stored when the text is empty.
std::uint64_t setText(SQLite::Database& database, const char* set, const char* remove,
                      const ObjectKey& key, const std::string& text) {
  SQLite::Transaction transaction(database);
  if (text.empty()) {
    run(database, remove, key.type, key.id);
  } else {
    run(database, set, key.type, key.id, text);
  }
  return commitChange(database, transaction);
}

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

void mergeInfo(SQLite::Database& database, const ObjectKey& key, const InfoPairs& changes) {
  SQLite::Statement set(database, kSetInfo);
  SQLite::Statement remove(database, kRemoveInfo);
  for (const auto& [name, value] : changes) {
    if (value.empty()) {
      run(remove, key.type, key.id, name);
    } else {
      run(set, key.type, key.id, name, value);
    }
  }
}

InfoPairs infoOf(SQLite::Database& database, const ObjectKey& key) {
  SQLite::Statement row(
      database, "SELECT name, value FROM object_info WHERE type = ? AND id = ? ORDER BY position");
  SQLite::bind(row, key.type, key.id);
  InfoPairs pairs;
  while (row.executeStep()) {
    pairs.emplace_back(row.getColumn(0).getString(), row.getColumn(1).getString());
  }
  return pairs;
}

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

}  // namespace

std::uint64_t NetworkStore::setUserLabel(const ObjectKey& key, const std::string& label) {
  return guarded(path_, [&] { return setText(*database_, kSetLabel, kRemoveLabel, key, label); });
}

std::uint64_t NetworkStore::setOwner(const ObjectKey& key, const std::string& owner) {
  return guarded(path_, [&] { return setText(*database_, kSetOwner, kRemoveOwner, key, owner); });
}

std::string NetworkStore::ownerOf(const ObjectKey& key) {
  return guarded(path_, [&] {
    SQLite::Statement row(*database_, "SELECT owner FROM object_owner WHERE type = ? AND id = ?");
    SQLite::bind(row, key.type, key.id);
    return row.executeStep() ? row.getColumn(0).getString() : std::string();
  });
}

std::vector<std::string> NetworkStore::idsWithLabel(std::int32_t type, const std::string& label) {
  return guarded(path_, [&] {
    SQLite::Statement row(*database_, "SELECT id FROM object_label WHERE type = ? AND label = ?");
    SQLite::bind(row, type, label);
    std::vector<std::string> ids;
    while (row.executeStep()) {
      ids.push_back(row.getColumn(0).getString());
    }
    return ids;
  });
}

std::uint64_t NetworkStore::mergeAdditionalInfo(
    const ObjectKey& key, const InfoPairs& changes,
    const std::function<void(const InfoPairs&)>& accept) {
  return guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    mergeInfo(*database_, key, changes);
    if (accept) {
      accept(infoOf(*database_, key));
    }
    return commitChange(*database_, transaction);
  });
}

InfoPairs NetworkStore::additionalInfoOf(const ObjectKey& key) {
  return guarded(path_, [&] { return infoOf(*database_, key); });
}

std::uint64_t NetworkStore::removeAttributes(const ObjectKey& key) {
  return guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    for (const char* statement : {kRemoveLabel, kRemoveOwner, kRemoveAllInfo}) {
      run(*database_, statement, key.type, key.id);
    }
    return commitChange(*database_, transaction);
  });
}

std::uint64_t NetworkStore::rename(const std::vector<NamedRecord>& records,
                                   const std::string& name) {
  return guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    for (const NamedRecord& record : records) {
      run(*database_, renameStatement(record.list), name, record.id);
    }
    return commitChange(*database_, transaction);
  });
}

}  // namespace agent
