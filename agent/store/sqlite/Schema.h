// The tables of a SQLite store. Part of the SQLite store.

#ifndef AGENT_STORE_SQLITE_SCHEMA_H
#define AGENT_STORE_SQLITE_SCHEMA_H

#include <cstdint>
#include <string>

#include "agent/store/sqlite/SqliteStore.h"

namespace agent {

// The numbers in the header of a database file that identify the program and the schema.
struct SchemaMark {
  std::int64_t applicationId;
  std::int64_t version;
};

// Throws StoreError for the mark of another program or of another schema version.
void requireOwnSchema(const std::string& path, const SchemaMark& mark);

// Takes the exclusive lock, which lasts until the database is closed. Then, in one transaction,
// makes the schema in an empty database or checks the schema, and raises the change number. Throws
// StoreError and SQLite::Exception.
void prepareSchema(const std::string& path, SQLite::Database& database,
                   const SqliteStore::Clock& clock);

}  // namespace agent

#endif
