// The owners in a SQLite store, which the agent stores for other programs and never reads.

#ifndef TESTS_UNIT_AGENT_SUPPORT_STOREDOWNER_H
#define TESTS_UNIT_AGENT_SUPPORT_STOREDOWNER_H

#include <SQLiteCpp/SQLiteCpp.h>

#include <string>

#include "agent/store/NetworkStore.h"
#include "tests/support/TemporaryDirectory.h"

// The owner of an object; empty without one. Reads a copy because the store locks its database.
inline std::string storedOwner(agent::NetworkStore& store, const agent::ObjectKey& key) {
  const auto copy = store.beginCopy();
  while (!copy->step()) {
  }
  const support::TemporaryDirectory directory;
  const SQLite::Database database(directory.write("copy.db", copy->read(copy->size())),
                                  SQLite::OPEN_READWRITE);
  SQLite::Statement row(database, "SELECT owner FROM object_owner WHERE type = ? AND id = ?");
  row.bind(1, key.type);
  row.bind(2, key.id);
  return row.executeStep() ? row.getColumn(0).getString() : std::string();
}

#endif
