// A copy of a SQLite store.

#ifndef AGENT_STORE_SQLITE_SQLITECOPY_H
#define AGENT_STORE_SQLITE_SQLITECOPY_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "agent/store/StoreCopy.h"

namespace SQLite {
class Backup;
class Database;
}  // namespace SQLite

namespace agent {

// Copies the pages of the database to an unlinked temporary file.
//
// Thread-safety and errors: as StoreCopy. Ownership: borrows the database, which outlives the copy.
class SqliteCopy final : public StoreCopy {
 public:
  // The file is in the folder of the store; for a store in memory, in the folder of temporary
  // files. Throws StoreError.
  SqliteCopy(SQLite::Database& store, std::string storePath);
  ~SqliteCopy() override;

  bool step() override;
  std::uint64_t size() const override { return size_; }
  std::uint64_t bytesLeft() const override { return size_ - read_; }
  std::string read(std::size_t maxBytes) override;

 private:
  void openFile(const std::string& pattern);
  void complete();

  const std::string storePath_;  // for messages
  int file_ = -1;
  std::unique_ptr<SQLite::Database> copy_;  // null when the copy is complete
  std::unique_ptr<SQLite::Backup> backup_;  // null when the copy is complete
  std::uint64_t size_ = 0;
  std::uint64_t read_ = 0;
};

}  // namespace agent

#endif
