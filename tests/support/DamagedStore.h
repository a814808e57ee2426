// Damages a store. Such a store can be opened.

#ifndef TESTS_SUPPORT_DAMAGEDSTORE_H
#define TESTS_SUPPORT_DAMAGEDSTORE_H

#include <fstream>
#include <string>

#include <SQLiteCpp/SQLiteCpp.h>

namespace support {

// Overwrites the root page of a table or an index. Without a name, of the index of topology node
// ids; only changes read that index, so the store can be read. REQUIRES: the store is closed.
inline void damageStore(const std::string& path,
                        const std::string& name = "sqlite_autoindex_topo_node_1") {
  long long page = 0;
  long long pageBytes = 0;
  {
    const SQLite::Database database(path, SQLite::OPEN_READWRITE);
    SQLite::Statement root(database, "SELECT rootpage FROM sqlite_schema WHERE name = ?");
    root.bind(1, name);
    SQLite::Statement size(database, "PRAGMA page_size");
    root.executeStep();
    size.executeStep();
    page = root.getColumn(0).getInt64();
    pageBytes = size.getColumn(0).getInt64();
  }
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp((page - 1) * pageBytes);
  file << std::string(static_cast<std::size_t>(pageBytes), '\xff');
}

}  // namespace support

#endif
