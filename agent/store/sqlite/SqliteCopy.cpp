#include "agent/store/sqlite/SqliteCopy.h"

#include <SQLiteCpp/Backup.h>
#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "agent/store/sqlite/SqliteErrors.h"
#include "agent/store/sqlite/SqliteStore.h"

namespace agent {
namespace {

constexpr int kPagesOfStep = 256;

// The write and read versions in the header of a database: 1 is a rollback journal, 2 a write-ahead
// log. A copy consists of one file without a log.
constexpr off_t kVersionsOffset = 18;
constexpr char kJournalVersions[] = {1, 1};

std::string patternFor(const std::string& storePath) {
  const std::filesystem::path beside = storePath == SqliteStore::kInMemory
                                           ? std::filesystem::temp_directory_path() / "topo-agentd"
                                           : std::filesystem::absolute(storePath);
  return beside.string() + "-backup-XXXXXX";
}

}  // namespace

SqliteCopy::SqliteCopy(SQLite::Database& store, std::string storePath)
    : storePath_(std::move(storePath)) {
  try {
    guarded(storePath_, [&] {
      openFile(patternFor(storePath_));
      copy_->exec("PRAGMA journal_mode = OFF");
      copy_->exec("PRAGMA synchronous = OFF");
      backup_ = std::make_unique<SQLite::Backup>(*copy_, store);
    });
  } catch (...) {
    copy_.reset();
    ::close(file_);
    throw;
  }
}

SqliteCopy::~SqliteCopy() {
  backup_.reset();
  copy_.reset();
  ::close(file_);
}

// The name is needed only until the database is open.
void SqliteCopy::openFile(const std::string& pattern) {
  std::string name = pattern;
  file_ = ::mkostemp(name.data(), O_CLOEXEC);
  if (file_ < 0) {
    throw StoreError(name, std::generic_category().message(errno));
  }
  try {
    copy_ = std::make_unique<SQLite::Database>(name, SQLite::OPEN_READWRITE);
  } catch (...) {
    ::unlink(name.c_str());
    throw;
  }
  ::unlink(name.c_str());
}

bool SqliteCopy::step() {
  return guarded(storePath_, [&] {
    if (backup_ && backup_->executeStep(kPagesOfStep) == SQLITE_DONE) {
      complete();
    }
    return backup_ == nullptr;
  });
}

void SqliteCopy::complete() {
  backup_.reset();
  copy_.reset();
  struct stat status {};
  const bool isWritten = ::pwrite(file_, kJournalVersions, sizeof kJournalVersions,
                                  kVersionsOffset) == sizeof kJournalVersions;
  if (!isWritten || ::fstat(file_, &status) != 0) {
    throw StoreError(storePath_, "its copy: " + std::generic_category().message(errno));
  }
  size_ = static_cast<std::uint64_t>(status.st_size);
}

std::string SqliteCopy::read(std::size_t maxBytes) {
  std::string bytes(std::min<std::uint64_t>(maxBytes, bytesLeft()), '\0');
  const ssize_t count = ::pread(file_, bytes.data(), bytes.size(), static_cast<off_t>(read_));
  if (count < 0 || (count == 0 && !bytes.empty())) {
    throw StoreError(storePath_, "its copy: " + std::generic_category().message(errno));
  }
  bytes.resize(static_cast<std::size_t>(count));
  read_ += bytes.size();
  return bytes;
}

}  // namespace agent
