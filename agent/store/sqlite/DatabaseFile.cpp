#include "agent/store/sqlite/DatabaseFile.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "agent/store/sqlite/Schema.h"
#include "agent/store/sqlite/SqliteStore.h"

namespace agent {
namespace {

bool isInMemory(const std::string& path) {
  return path == SqliteStore::kInMemory;
}

// SQLite gives no special meaning to an absolute path.
std::string databaseName(const std::string& path) {
  return isInMemory(path) ? path : std::filesystem::absolute(path).string();
}

[[noreturn]] void throwSystemError(const std::string& path, int systemError) {
  throw StoreError(path, std::generic_category().message(systemError));
}

// Escapes a path for a URI.
std::string uriPath(const std::string& path) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string escaped;
  for (const char character : path) {
    if (character == '%' || character == '?' || character == '#') {
      const auto value = static_cast<unsigned char>(character);
      escaped += {'%', kDigits[value >> 4], kDigits[value & 0xf]};
    } else {
      escaped += character;
    }
  }
  return escaped;
}

std::int64_t bigEndian(const unsigned char* bytes) {
  return std::int64_t{bytes[0]} << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

// Reads the header of the file. The header is valid at every moment, but after a kill the rest of
// the file may be incomplete without the log or the journal beside it, which is not read.
SchemaMark markOf(const std::string& path, SQLite::Database& database) {
  constexpr std::string_view kMagic("SQLite format 3\0", 16);
  constexpr std::size_t kVersionOffset = 60;
  constexpr std::size_t kApplicationIdOffset = 68;
  constexpr int kHeaderBytes = 100;
  sqlite3_file* file = nullptr;
  database.check(
      sqlite3_file_control(database.getHandle(), "main", SQLITE_FCNTL_FILE_POINTER, &file));
  unsigned char header[kHeaderBytes] = {};
  const int code = file->pMethods->xRead(file, header, kHeaderBytes, 0);
  if (code != SQLITE_OK && code != SQLITE_IOERR_SHORT_READ) {
    throw SQLite::Exception(sqlite3_errstr(code), code);
  }
  if (code != SQLITE_OK || std::memcmp(header, kMagic.data(), kMagic.size()) != 0) {
    throw StoreError(path, "is not a database");
  }
  return {bigEndian(&header[kApplicationIdOffset]), bigEndian(&header[kVersionOffset])};
}

// Opens the file as immutable: a normal open would already recover the journal of another program.
// The file is not read with plain system calls because closing a descriptor of the file drops all
// locks that this process has on the file; SQLite avoids that.
void requireOwnDatabase(const std::string& path) {
  const std::string uri = "file:" + uriPath(databaseName(path)) + "?mode=ro&immutable=1";
  SQLite::Database database(uri, SQLite::OPEN_READONLY | SQLite::OPEN_URI);
  requireOwnSchema(path, markOf(path, database));
}

// SQLite itself would make the file readable for everybody. Journals get the permissions of the
// file.
void createPrivateFile(const std::string& path) {
  const int file = ::open(databaseName(path).c_str(),
                          O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (file < 0 && errno == EEXIST) {
    throw StoreError(path, "is a symbolic link to a file that does not exist");
  }
  if (file < 0) {
    throwSystemError(path, errno);
  }
  ::close(file);
}

void prepareFile(const std::string& path) {
  if (hasContent(path)) {
    requireOwnDatabase(path);
  } else if (!std::filesystem::exists(databaseName(path))) {
    createPrivateFile(path);
  }
}

}  // namespace

bool hasContent(const std::string& path) {
  const std::filesystem::path file = databaseName(path);
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (std::filesystem::is_directory(status)) {
    throwSystemError(path, EISDIR);
  }
  if (!std::filesystem::exists(status)) {
    if (error && error != std::errc::no_such_file_or_directory) {
      throwSystemError(path, error.value());
    }
    if (!std::filesystem::is_directory(file.parent_path(), error)) {
      throw StoreError(path, "its folder does not exist");
    }
    return false;
  }
  if (!std::filesystem::is_regular_file(status)) {
    throw StoreError(path, "is not a regular file");
  }
  if (::faccessat(AT_FDCWD, file.c_str(), R_OK | W_OK, AT_EACCESS) != 0) {
    throwSystemError(path, errno);
  }
  return std::filesystem::file_size(file) != 0;
}

std::unique_ptr<SQLite::Database> openDatabase(const std::string& path) {
  if (path.empty()) {
    throw StoreError("store", "its file name is empty");
  }
  if (!isInMemory(path)) {
    prepareFile(path);
  }
  // The owner of the store serialises the calls, so SQLite needs no mutex of its own.
  return std::make_unique<SQLite::Database>(
      databaseName(path), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | SQLite::OPEN_NOMUTEX);
}

}  // namespace agent
