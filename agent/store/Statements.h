// Running statements with values. Part of the store.

#ifndef AGENT_STORE_STATEMENTS_H
#define AGENT_STORE_STATEMENTS_H

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace agent {

// The statement is new or has been reset.
template <typename... Values>
void run(SQLite::Statement& statement, const Values&... values) {
  SQLite::bind(statement, values...);
  statement.exec();
  statement.reset();
}

template <typename... Values>
void run(SQLite::Database& database, const char* text, const Values&... values) {
  SQLite::Statement statement(database, text);
  run(statement, values...);
}

}  // namespace agent

#endif
