// Translates exceptions of SQLite to StoreError. Part of the SQLite store.

#ifndef AGENT_STORE_SQLITE_SQLITEERRORS_H
#define AGENT_STORE_SQLITE_SQLITEERRORS_H

#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

#include <stdexcept>
#include <string>

#include "agent/store/NetworkStore.h"

namespace agent {

inline std::string describe(const SQLite::Exception& error) {
  switch (error.getErrorCode()) {
    case SQLITE_BUSY:
      return "is in use by another process";
    case SQLITE_CORRUPT:
      return "is damaged";
    case SQLITE_NOTADB:
      return "is not a database";
    case SQLITE_READONLY:
      return "is not writable";
    default:
      return error.what();
  }
}

// Runs work and translates every exception of SQLite that it throws.
template <typename Work>
auto guarded(const std::string& path, Work work) -> decltype(work()) {
  try {
    return work();
  } catch (const SQLite::Exception& error) {
    throw StoreError(path, describe(error));
  } catch (const std::out_of_range&) {
    throw StoreError(path, "has attributes of a node that is not there");
  }
}

}  // namespace agent

#endif
