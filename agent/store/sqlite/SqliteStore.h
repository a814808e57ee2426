// A network store in one SQLite database.

#ifndef AGENT_STORE_SQLITE_SQLITESTORE_H
#define AGENT_STORE_SQLITE_SQLITESTORE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "agent/store/NetworkStore.h"

namespace SQLite {
class Database;
}

namespace agent {

// The milliseconds since 1970 by the clock of the system.
std::uint64_t millisecondsNow();

// Holds an exclusive lock on the database from the constructor to the destructor. A database of
// another program is rejected and never changed.
//
// Thread-safety and errors: as NetworkStore. Ownership: owns the connection to the database.
class SqliteStore final : public NetworkStore {
 public:
  using Clock = std::function<std::uint64_t()>;

  // The path of a store in memory, which is lost with the object.
  static constexpr const char* kInMemory = ":memory:";

  // True if the path is a file with content; false for kInMemory and for an empty path. Changes
  // nothing. Throws StoreError if the path cannot be used for a store.
  static bool exists(const std::string& path);

  // True if a store opened at this path would be new. Creates no file, so that a caller can still
  // reject the network. Throws StoreError as the constructor. REQUIRES: the store is not open in
  // this process.
  static bool needsNetwork(const std::string& path);

  // Opens the store, or makes an empty store if the file is missing or empty. Only the user of the
  // process can access a new file. A dangling symbolic link is rejected. Throws StoreError if
  // another store object or process has the database open, and if the file is not a database, is a
  // database of another program or schema version, or is not writable. The constructor reads the
  // clock, in milliseconds since 1970, once.
  explicit SqliteStore(const std::string& path, const Clock& clock = millisecondsNow);
  ~SqliteStore() override;

  using NetworkStore::commit;
  using NetworkStore::read;

  void check() override;
  bool isNew() override;
  void load(const Network& network) override;
  void read(const UsePiece& use) override;
  NetworkSizes sizes() override;
  std::uint64_t lastChange() override;
  std::uint64_t commit(const NetworkChange& change, const Cancellation& cancellation) override;
  std::vector<std::string> idsWithLabel(std::int32_t type, const std::string& label) override;
  std::string ownerOf(const ObjectKey& key) override;
  InfoPairs additionalInfoOf(const ObjectKey& key) override;
  std::vector<ObjectAttributes> attributes() override;
  std::uint64_t bytes() override;
  std::unique_ptr<StoreCopy> beginCopy() override;

 private:
  const std::string path_;  // as given, for messages
  const std::unique_ptr<SQLite::Database> database_;
};

}  // namespace agent

#endif
