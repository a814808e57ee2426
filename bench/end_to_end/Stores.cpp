// Measures the start of the agent and the loading of a network beside SQLite alone, in turns.
//
//   bench_stores WARM_UPS ROUNDS CASE=FILE...
//
// CASE is one of
//   start    starting topo-agentd on the store FILE until it has answered a call
//   read     reading every value of the store FILE with SQLite
//   import   loading the network file FILE into a new store
//   insert   inserting the rows of the store FILE into a new database with SQLite, with the same
//            tables and the same durability
// All numbers are seconds. New files are made in the folder of FILE, and removed.

#include <sqlite3.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "agent/OpenNetwork.h"
#include "bench/end_to_end/Client.h"
#include "bench/end_to_end/Rounds.h"
#include "tests/integration/Programs.h"

namespace bench {
namespace {

using Value = std::variant<std::int64_t, std::string>;
using Rows = std::vector<std::vector<Value>>;
using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

void require(bool condition, sqlite3* database) {
  if (!condition) {
    throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database));
  }
}

Database opened(const std::string& file) {
  sqlite3* database = nullptr;
  const int result = sqlite3_open(file.c_str(), &database);
  Database owned(database, sqlite3_close);
  require(result == SQLITE_OK, database);
  return owned;
}

Statement prepared(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr);
  require(result == SQLITE_OK, database);
  return {statement, sqlite3_finalize};
}

void execute(sqlite3* database, const std::string& sql) {
  require(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, database);
}

Value valueAt(sqlite3_stmt* row, int column) {
  if (sqlite3_column_type(row, column) == SQLITE_INTEGER) {
    return std::int64_t{sqlite3_column_int64(row, column)};
  }
  const unsigned char* const text = sqlite3_column_text(row, column);
  const auto length = static_cast<std::size_t>(sqlite3_column_bytes(row, column));
  return text == nullptr ? std::string() : std::string(text, text + length);
}

// Calls visit(row) for each row of the result.
template <typename Visit>
void forEachRow(sqlite3* database, const std::string& sql, const Visit& visit) {
  const Statement statement = prepared(database, sql);
  int result = sqlite3_step(statement.get());
  for (; result == SQLITE_ROW; result = sqlite3_step(statement.get())) {
    visit(statement.get());
  }
  require(result == SQLITE_DONE, database);
}

Rows rowsOf(sqlite3* database, const std::string& sql) {
  Rows rows;
  forEachRow(database, sql, [&](sqlite3_stmt* row) {
    std::vector<Value>& values = rows.emplace_back();
    for (int i = 0; i < sqlite3_column_count(row); ++i) {
      values.push_back(valueAt(row, i));
    }
  });
  return rows;
}

std::vector<std::string> textsOf(sqlite3* database, const std::string& sql) {
  std::vector<std::string> texts;
  for (const std::vector<Value>& row : rowsOf(database, sql)) {
    texts.push_back(std::get<std::string>(row.at(0)));
  }
  return texts;
}

std::vector<std::string> tablesOf(sqlite3* database) {
  return textsOf(database,
                 "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%'");
}

// --- Start and read.

Measurement startOfAgent(const std::string& store) {
  const std::shared_ptr<orb::Orb> orb = orb::startClient(generousOptions());
  return [orb, store] {
    std::unique_ptr<integration::RunningAgent> agent;
    const double seconds = secondsOf([&] {
      agent = std::make_unique<integration::RunningAgent>(std::vector<std::string>(), store);
      common::CapabilityList_T_var capabilities;
      narrowed<TopoManagementManager::TopoMgr_I>(orb->get(), agent->reference())
          ->getCapabilities(capabilities.out());
    });
    agent->stop(SIGTERM);
    return seconds;
  };
}

// Reads every value as SQLite has it, without a copy.
void readAll(const std::string& store) {
  const Database database = opened(store);
  std::size_t bytes = 0;
  for (const std::string& table : tablesOf(database.get())) {
    forEachRow(database.get(), "SELECT * FROM " + table, [&bytes](sqlite3_stmt* row) {
      for (int i = 0; i < sqlite3_column_count(row); ++i) {
        bytes += sqlite3_column_type(row, i) == SQLITE_INTEGER
                     ? static_cast<std::size_t>(sqlite3_column_int64(row, i) & 1)
                     : std::string_view(reinterpret_cast<const char*>(sqlite3_column_text(row, i)))
                           .size();
      }
    });
  }
  if (bytes == 0) {
    throw std::runtime_error(store + " is empty");
  }
}

// --- Import and insert.

// A new file beside `file`, removed at the end with its journals.
class NewFile {
 public:
  explicit NewFile(const std::string& file) : path_(file + ".new") { remove(); }
  ~NewFile() { remove(); }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  void remove() {
    for (const char* end : {"", "-wal", "-shm", "-journal"}) {
      std::filesystem::remove(path_ + end);
    }
  }

  const std::string path_;
};

double importSeconds(const std::string& network) {
  const NewFile file(network);
  agent::Options options;
  options.network = network;
  options.store = file.path();
  return secondsOf([&options] {
    std::unique_ptr<agent::NetworkStore> store;
    agent::openNetwork(options, store);
  });
}

struct Content {
  std::vector<std::string> schema;
  std::map<std::string, Rows> tables;
};

Content contentOf(const std::string& store) {
  const Database database = opened(store);
  Content content;
  content.schema = textsOf(database.get(), "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL");
  for (const std::string& table : tablesOf(database.get())) {
    content.tables[table] = rowsOf(database.get(), "SELECT * FROM " + table);
  }
  return content;
}

void bind(sqlite3_stmt* statement, int index, const Value& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) {
    sqlite3_bind_text(statement, index, text->data(), static_cast<int>(text->size()),
                      SQLITE_STATIC);
  } else {
    sqlite3_bind_int64(statement, index, std::get<std::int64_t>(value));
  }
}

void insertRows(sqlite3* database, const std::string& table, const Rows& rows) {
  if (rows.empty()) {
    return;
  }
  std::string places = "?";
  for (std::size_t i = 1; i < rows.front().size(); ++i) {
    places += ",?";
  }
  const Statement statement =
      prepared(database, "INSERT INTO " + table + " VALUES (" + places + ")");
  for (const std::vector<Value>& row : rows) {
    int index = 0;
    for (const Value& value : row) {
      bind(statement.get(), ++index, value);
    }
    require(sqlite3_step(statement.get()) == SQLITE_DONE, database);
    sqlite3_reset(statement.get());
  }
}

double insertSeconds(const std::string& store, const Content& content) {
  const NewFile file(store);
  return secondsOf([&] {
    const Database database = opened(file.path());
    for (const char* pragma : {"locking_mode = EXCLUSIVE", "synchronous = FULL",
                               "foreign_keys = ON", "journal_mode = WAL"}) {
      execute(database.get(), std::string("PRAGMA ") + pragma);
    }
    execute(database.get(), "BEGIN");
    for (const std::string& statement : content.schema) {
      execute(database.get(), statement);
    }
    for (const auto& [table, rows] : content.tables) {
      insertRows(database.get(), table, rows);
    }
    execute(database.get(), "COMMIT");
  });
}

Measurement measurementOf(const std::string& argument) {
  const std::size_t end = std::min(argument.find('='), argument.size());
  const std::string name = argument.substr(0, end);
  const std::string file = argument.substr(std::min(end + 1, argument.size()));
  if (name == "start") {
    return startOfAgent(file);
  }
  if (name == "read") {
    return [file] { return secondsOf([&file] { readAll(file); }); };
  }
  if (name == "import") {
    return [file] { return importSeconds(file); };
  }
  if (name == "insert") {
    return [file, content = contentOf(file)] { return insertSeconds(file, content); };
  }
  throw std::invalid_argument("there is no case " + argument);
}

}  // namespace
}  // namespace bench

int main(int argc, char* argv[]) {
  return bench::measureInTurns(argc, argv, bench::measurementOf);
}
