#include "agent/store/sqlite/SqliteStore.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <utility>
#include <variant>

#include "agent/store/sqlite/ChangeWriter.h"
#include "agent/store/sqlite/DatabaseFile.h"
#include "agent/store/sqlite/NetworkRows.h"
#include "agent/store/sqlite/RunStatement.h"
#include "agent/store/sqlite/Schema.h"
#include "agent/store/sqlite/SqliteCopy.h"
#include "agent/store/sqlite/SqliteErrors.h"

namespace agent {

bool SqliteStore::exists(const std::string& path) {
  return !path.empty() && path != kInMemory && hasContent(path);
}

bool SqliteStore::needsNetwork(const std::string& path) {
  return !exists(path) || SqliteStore(path).isNew();
}

std::uint64_t millisecondsNow() {
  using std::chrono::milliseconds;
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  const auto count = std::chrono::duration_cast<milliseconds>(sinceEpoch).count();
  return static_cast<std::uint64_t>(std::max<milliseconds::rep>(count, 0));
}

SqliteStore::SqliteStore(const std::string& path, const Clock& clock)
    : path_(path), database_(guarded(path, [&] { return openDatabase(path); })) {
  guarded(path_, [&] { prepareSchema(path_, *database_, clock); });
}

SqliteStore::~SqliteStore() = default;

void SqliteStore::check() {
  guarded(path_, [&] {
    const std::string found = database_->execAndGet("PRAGMA quick_check(1)").getString();
    if (found != "ok") {
      throw StoreError(path_, "is damaged: " + found.substr(found.rfind('\n') + 1));
    }
  });
}

bool SqliteStore::isNew() {
  return guarded(path_, [&] { return valueOf(*database_, "SELECT count(*) FROM network") == 0; });
}

void SqliteStore::load(const Network& network) {
  if (!isNew()) {
    throw StoreError(path_, "contains a network already");
  }
  guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    writeNetwork(*database_, network, Cancellation::none());
    commitChange(*database_, transaction);
  });
}

std::uint64_t SqliteStore::commit(const NetworkChange& change, const Cancellation& cancellation) {
  return guarded(path_, [&] {
    SQLite::Transaction transaction(*database_);
    std::visit(ChangeWriter(*database_, cancellation), change);
    return commitChange(*database_, transaction);
  });
}

std::uint64_t SqliteStore::lastChange() {
  return guarded(path_, [&] {
    return static_cast<std::uint64_t>(valueOf(*database_, "SELECT number FROM last_change"));
  });
}

std::vector<std::string> SqliteStore::idsWithLabel(std::int32_t type, const std::string& label) {
  return guarded(path_, [&] {
    std::vector<std::string> ids;
    forEachRow(
        *database_, "SELECT id FROM object_label WHERE type = ? AND label = ?",
        [&](SQLite::Statement& row) { ids.push_back(textAt(row, 0)); }, type, label);
    return ids;
  });
}

std::string SqliteStore::ownerOf(const ObjectKey& key) {
  return guarded(path_, [&] {
    std::string owner;
    forEachRow(
        *database_, "SELECT owner FROM object_owner WHERE type = ? AND id = ?",
        [&](SQLite::Statement& row) { owner = textAt(row, 0); }, key.type, key.id);
    return owner;
  });
}

InfoPairs SqliteStore::additionalInfoOf(const ObjectKey& key) {
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

std::vector<ObjectAttributes> SqliteStore::attributes() {
  return guarded(path_, [&] { return readAttributes(*database_); });
}

std::uint64_t SqliteStore::bytes() {
  return guarded(path_, [&] {
    const std::int64_t pages =
        valueOf(*database_, "PRAGMA page_count") - valueOf(*database_, "PRAGMA freelist_count");
    return static_cast<std::uint64_t>(pages * valueOf(*database_, "PRAGMA page_size"));
  });
}

std::unique_ptr<StoreCopy> SqliteStore::beginCopy() {
  return std::make_unique<SqliteCopy>(*database_, path_);
}

void SqliteStore::read(const UsePiece& use) {
  guarded(path_, [&] { readNetwork(*database_, use); });
}

NetworkSizes SqliteStore::sizes() {
  return guarded(path_, [&] { return sizesOf(*database_); });
}

}  // namespace agent
