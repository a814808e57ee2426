// The tables of a SQLite store. Part of the SQLite store.

#ifndef AGENT_STORE_SQLITE_SCHEMA_H
#define AGENT_STORE_SQLITE_SCHEMA_H

#include <string>

#include "agent/store/sqlite/SqliteStore.h"

namespace agent {

// Throws StoreError for a database of another program or of another schema version.
void requireOwnSchema(const std::string& path, SQLite::Database& database);

// Takes the exclusive lock, which lasts until the database is closed. Then, in one transaction,
// makes the schema in an empty database or checks the schema, and raises the change number. Throws
// StoreError and SQLite::Exception.
void prepareSchema(const std::string& path, SQLite::Database& database,
                   const SqliteStore::Clock& clock);

}  // namespace agent

#endif
