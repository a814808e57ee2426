// The file of a SQLite store. Part of the SQLite store.

#ifndef AGENT_STORE_SQLITE_DATABASEFILE_H
#define AGENT_STORE_SQLITE_DATABASEFILE_H

#include <memory>
#include <string>

namespace SQLite {
class Database;
}

namespace agent {

// True if the path is a file with content, false if a store can be made at the path. Opens nothing.
// Throws StoreError if the path can be used for neither.
bool hasContent(const std::string& path);

// Opens the database, or creates a file that only its owner can access. Throws StoreError, also for
// a database of another program or schema version, and SQLite::Exception.
std::unique_ptr<SQLite::Database> openDatabase(const std::string& path);

}  // namespace agent

#endif
