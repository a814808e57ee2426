// Writes changes of the network to the database. Part of the SQLite store.

#ifndef AGENT_STORE_SQLITE_CHANGEWRITER_H
#define AGENT_STORE_SQLITE_CHANGEWRITER_H

#include "agent/base/Cancellation.h"
#include "agent/network/NetworkChange.h"

namespace SQLite {
class Database;
}

namespace agent {

// A visitor of NetworkChange.
//
// Thread-safety: one thread. Ownership: borrows the database and the cancellation. Errors: throws
// SQLite::Exception and Cancelled. REQUIRES: a transaction, which the caller commits.
class ChangeWriter {
 public:
  ChangeWriter(SQLite::Database& database, const Cancellation& cancellation)
      : database_(database), cancellation_(cancellation) {}

  void operator()(const NetworkAddition& change) const;
  void operator()(const NetworkRemoval& change) const;
  void operator()(const NetworkRenaming& change) const;
  void operator()(const NetworkReplacement& change) const;
  void operator()(const RecordRemoval& change) const;
  void operator()(const RecordUpdate& change) const;
  void operator()(const LabelChange& change) const;
  void operator()(const OwnerChange& change) const;
  void operator()(const InfoChange& change) const;
  void operator()(const AttributeRemoval& change) const;

 private:
  SQLite::Database& database_;
  const Cancellation& cancellation_;
};

}  // namespace agent

#endif
