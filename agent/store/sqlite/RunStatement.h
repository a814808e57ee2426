// Runs statements with values and commits changes. Part of the SQLite store.

#ifndef AGENT_STORE_SQLITE_RUNSTATEMENT_H
#define AGENT_STORE_SQLITE_RUNSTATEMENT_H

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <cstdint>
#include <string>
#include <type_traits>

namespace agent {

// Binds a value without a copy: the value outlives the run of the statement.
template <typename Value>
void bindBorrowed(SQLite::Statement& statement, int place, const Value& value) {
  if constexpr (std::is_same_v<Value, std::string>) {
    statement.bindNoCopy(place, value);
  } else {
    statement.bind(place, value);
  }
}

// Runs a statement with values. REQUIRES: the statement is new or has been reset.
template <typename... Values>
void run(SQLite::Statement& statement, const Values&... values) {
  int place = 0;
  (bindBorrowed(statement, ++place, values), ...);
  statement.exec();
  statement.reset();
}

template <typename... Values>
void run(SQLite::Database& database, const char* text, const Values&... values) {
  SQLite::Statement statement(database, text);
  run(statement, values...);
}

// Calls a function with every row of a query, in its order.
template <typename UseRow, typename... Values>
void forEachRow(SQLite::Database& database, const char* query, UseRow useRow,
                const Values&... values) {
  SQLite::Statement row(database, query);
  SQLite::bind(row, values...);
  while (row.executeStep()) {
    useRow(row);
  }
}

// The whole text of a column: a char* would end at the first NUL of the text.
inline std::string textAt(SQLite::Statement& row, int column) {
  return row.getColumn(column).getString();
}

inline std::int64_t valueOf(SQLite::Database& database, const std::string& query) {
  return database.execAndGet(query).getInt64();
}

// Gives the transaction the next change number and commits it. Returns the number.
inline std::uint64_t commitChange(SQLite::Database& database, SQLite::Transaction& transaction) {
  const std::int64_t number =
      valueOf(database, "UPDATE last_change SET number = number + 1 RETURNING number");
  transaction.commit();
  return static_cast<std::uint64_t>(number);
}

}  // namespace agent

#endif
