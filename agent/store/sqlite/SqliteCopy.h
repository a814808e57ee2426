// A consistent copy of a store, made while the store is used.

#ifndef AGENT_STORE_SQLITE_SQLITECOPY_H
#define AGENT_STORE_SQLITE_SQLITECOPY_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace SQLite {
class Backup;
class Database;
}  // namespace SQLite

namespace agent {

// Copies the store in steps to a file that has no name, so that nothing of it stays behind whatever
// happens. A change of the store between two steps is in the copy too. The complete copy is what
// the store was after the last step, and can be read once, from its beginning to its end.
//
// All functions throw StoreError when the disk fails. Borrows the store's database, which must
// outlive the copy. Thread-safety: none; construction, steps and destruction take turns with
// everything else that uses the store.
class StoreCopy {
 public:
  // The file is in the folder of the store, or among the temporary files for a store in memory.
  StoreCopy(SQLite::Database& store, std::string storePath);
  ~StoreCopy();
  StoreCopy(const StoreCopy&) = delete;
  StoreCopy& operator=(const StoreCopy&) = delete;

  // Copies about a megabyte. True when the copy is complete; false asks for another step.
  bool step();

  // REQUIRES for all of these: the copy is complete.
  std::uint64_t size() const { return size_; }
  std::uint64_t bytesLeft() const { return size_ - read_; }
  std::string read(std::size_t mostBytes);

 private:
  void openFile(const std::string& pattern);
  void complete();

  const std::string storePath_;  // for messages
  int file_ = -1;
  std::unique_ptr<SQLite::Database> copy_;  // null when the copy is complete
  std::unique_ptr<SQLite::Backup> backup_;  // the same
  std::uint64_t size_ = 0;
  std::uint64_t read_ = 0;
};

}  // namespace agent

#endif
