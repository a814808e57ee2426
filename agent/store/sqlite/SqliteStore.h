// The managed network on disk: one SQLite database, held by one agent at a time.
//
// A change is durable when the call that made it has returned, and has left nothing behind when the
// process is killed before. Databases of others are recognised and never changed.
//
// Thread-safety: none; the owner serialises calls.

#ifndef AGENT_STORE_SQLITE_SQLITESTORE_H
#define AGENT_STORE_SQLITE_SQLITESTORE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "agent/base/Cancellation.h"
#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkChange.h"

namespace SQLite {
class Database;
}

namespace agent {

class StoreCopy;

// The store cannot be used. what() is one line, "PATH: REASON".
class StoreError : public std::runtime_error {
 public:
  StoreError(const std::string& path, const std::string& reason);
};

// The microseconds since 1970 by the clock of the system.
std::uint64_t microsecondsNow();

class NetworkStore {
 public:
  using Clock = std::function<std::uint64_t()>;

  // The path of a store that lives as long as its object and is never on disk.
  static constexpr const char* kInMemory = ":memory:";

  // Whether a file with something in it is at this path; false for kInMemory and for an empty path.
  // Changes nothing. Throws StoreError when what is there cannot be used as a store.
  static bool exists(const std::string& path);

  // Whether a store opened at this path would be new. Creates nothing, so that whoever then finds
  // the network to be bad leaves nothing behind. Throws StoreError, as the constructor. REQUIRES:
  // this process does not have the store open.
  static bool needsNetwork(const std::string& path);

  // Opens the store, or makes an empty one where there is no file or an empty file. A new file is
  // accessible to its owner alone; a dangling symbolic link is refused. From here to
  // the destructor nobody else can open it. Throws StoreError at once when somebody has it open,
  // when it is no database, that of another program or of another version, or not writable. The
  // clock, in microseconds since 1970, is asked once for a store that is made.
  explicit NetworkStore(const std::string& path, const Clock& clock = microsecondsNow);
  ~NetworkStore();
  NetworkStore(const NetworkStore&) = delete;
  NetworkStore& operator=(const NetworkStore&) = delete;

  // Looks for damage in the whole store, in time linear in its size. Throws StoreError when it
  // finds any. Opening and reading a store notice only the damage in what they use.
  void check();

  // No network was ever loaded.
  bool isNew();

  // Stores a network, all of it or nothing, and ends being new. Throws StoreError when a network
  // was loaded before, when two objects of the network have the same id, or when the disk fails.
  void load(const Network& network);

  // A copy of the store, which it makes in steps. Throws StoreError.
  std::unique_ptr<StoreCopy> beginCopy();

  // The stored network; an empty one when the store is new. Throws StoreError.
  Network read();

  // The first of so many numbers in a row that no earlier call has given, in this run or an earlier
  // one. They rise, and begin with the microseconds since 1970 when the store was made, so that
  // they go on rising when it is thrown away. Throws StoreError, also when there are no more of
  // them.
  std::uint64_t reserveNotificationIds(std::uint64_t count);

  // The number of the last change. Numbers of changes rise by one with each change, and by one when
  // the store is opened; they begin with the milliseconds since 1970 when the store is made. So a
  // number is never given twice, also not by a new store that replaces this store.
  std::uint64_t lastChange();

  // Commits a change as a whole or not at all, and returns its number. Throws StoreError, also if
  // an object of an addition is stored already, and Cancelled.
  std::uint64_t commit(const NetworkChange& change,
                       const Cancellation& cancellation = Cancellation::none());

  // The ids of the objects of a type that have a label.
  std::vector<std::string> idsWithLabel(std::int32_t type, const std::string& label);

  // The additional information of an object, in its order.
  InfoPairs additionalInfoOf(const ObjectKey& key);

  // The owner of an object.
  std::string ownerOf(const ObjectKey& key);

 private:
  const std::string path_;  // as given, for messages
  const std::unique_ptr<SQLite::Database> database_;
};

}  // namespace agent

#endif
