// The lists of a network as rows of the database. Part of the SQLite store.

#ifndef AGENT_STORE_SQLITE_NETWORKROWS_H
#define AGENT_STORE_SQLITE_NETWORKROWS_H

#include <cstdint>
#include <vector>

#include "agent/base/Cancellation.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkSource.h"
#include "agent/store/NetworkStore.h"

namespace SQLite {
class Database;
}

namespace agent {

// The value of the column `shown` for NetworkElement::shownForNode.
constexpr std::int32_t kShownForNode = 2;

// The value of the column shown of an element.
std::int32_t shownValue(const NetworkElement& element);

// Appends the rows of a network; the store is no longer new. REQUIRES: a transaction. Throws
// SQLite::Exception and Cancelled.
void writeNetwork(SQLite::Database& database, const Network& network,
                  const Cancellation& cancellation);

// As NetworkStore::read(), but throws SQLite::Exception, and std::out_of_range for an attribute
// without a node.
void readNetwork(SQLite::Database& database, const NetworkStore::UsePiece& use);

// As NetworkStore::sizes(), but throws SQLite::Exception.
NetworkSizes sizesOf(SQLite::Database& database);

// The objects that have an owner or additional information, in the order of their keys. Throws
// SQLite::Exception.
std::vector<ObjectAttributes> readAttributes(SQLite::Database& database);

}  // namespace agent

#endif
