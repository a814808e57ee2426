#include "tests/unit/agent/store/sqlite/FaultyFiles.h"

#include <sqlite3.h>

#include <cstddef>
#include <ostream>

void PrintTo(const Fault& fault, std::ostream* out) {
  constexpr const char* kCalls[] = {"Open",     "Delete", "Access", "Read", "Write",
                                    "Truncate", "Sync",   "Size",   "Lock"};
  *out << (fault.code == SQLITE_FULL ? "FullDisk" : kCalls[static_cast<std::size_t>(fault.call)])
       << (fault.lasting ? "Lasting" : "Once");
}

namespace {

// ---- the present fault

Fault present{};
int callsBefore = 0;  // of the first call that fails
bool isArmed = false;
bool hasFailed = false;

// Returns the code of the fault if this call fails, and SQLITE_OK otherwise.
int outcomeOf(FileCall call) {
  if (!isArmed || call != present.call || callsBefore-- > 0) {
    return SQLITE_OK;
  }
  hasFailed = true;
  isArmed = present.lasting;
  callsBefore = 0;
  return present.code;
}

// ---- files: the memory after the object has the file of the system

struct FaultyFile {
  sqlite3_file base;
  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* realOf(sqlite3_file* file) {
  return reinterpret_cast<FaultyFile*>(file)->real();
}

// Forwards a call of a file unless it fails.
template <FileCall call, auto member, typename... Arguments>
int forward(sqlite3_file* file, Arguments... arguments) {
  const int outcome = outcomeOf(call);
  sqlite3_file* const real = realOf(file);
  return outcome != SQLITE_OK ? outcome : (real->pMethods->*member)(real, arguments...);
}

// Forwards a call that never fails.
template <auto member, typename Result, typename... Arguments>
Result pass(sqlite3_file* file, Arguments... arguments) {
  sqlite3_file* const real = realOf(file);
  return (real->pMethods->*member)(real, arguments...);
}

int syncFile(sqlite3_file*, int) {
  return outcomeOf(FileCall::kSync);
}

using Methods = sqlite3_io_methods;

sqlite3_io_methods methodsOfFiles() {
  Methods methods{};
  methods.iVersion = 1;  // without shared memory, which a store does not use
  methods.xClose = pass<&Methods::xClose, int>;
  methods.xRead = forward<FileCall::kRead, &Methods::xRead, void*, int, sqlite3_int64>;
  methods.xWrite = forward<FileCall::kWrite, &Methods::xWrite, const void*, int, sqlite3_int64>;
  methods.xTruncate = forward<FileCall::kTruncate, &Methods::xTruncate, sqlite3_int64>;
  methods.xSync = syncFile;
  methods.xFileSize = forward<FileCall::kSize, &Methods::xFileSize, sqlite3_int64*>;
  methods.xLock = forward<FileCall::kLock, &Methods::xLock, int>;
  methods.xUnlock = pass<&Methods::xUnlock, int, int>;
  methods.xCheckReservedLock = pass<&Methods::xCheckReservedLock, int, int*>;
  methods.xFileControl = pass<&Methods::xFileControl, int, int, void*>;
  methods.xSectorSize = pass<&Methods::xSectorSize, int>;
  methods.xDeviceCharacteristics = pass<&Methods::xDeviceCharacteristics, int>;
  return methods;
}

const sqlite3_io_methods kMethods = methodsOfFiles();

// ---- the file system

sqlite3_vfs* systemFiles = nullptr;
sqlite3_vfs faultyFiles{};

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  file->pMethods = nullptr;
  const int outcome = outcomeOf(FileCall::kOpen);
  const int opened = outcome != SQLITE_OK
                         ? outcome
                         : systemFiles->xOpen(systemFiles, name, realOf(file), flags, outFlags);
  if (opened == SQLITE_OK) {
    file->pMethods = &kMethods;
  }
  return opened;
}

int deleteFile(sqlite3_vfs*, const char* name, int) {
  const int outcome = outcomeOf(FileCall::kDelete);
  return outcome != SQLITE_OK ? outcome : systemFiles->xDelete(systemFiles, name, 0);
}

int accessFile(sqlite3_vfs*, const char* name, int flags, int* result) {
  const int outcome = outcomeOf(FileCall::kAccess);
  return outcome != SQLITE_OK ? outcome : systemFiles->xAccess(systemFiles, name, flags, result);
}

}  // namespace

FaultyFiles::FaultyFiles() {
  systemFiles = sqlite3_vfs_find(nullptr);
  faultyFiles = *systemFiles;
  faultyFiles.zName = "faulty";
  faultyFiles.pNext = nullptr;
  faultyFiles.szOsFile = static_cast<int>(sizeof(FaultyFile)) + systemFiles->szOsFile;
  faultyFiles.xOpen = openFile;
  faultyFiles.xDelete = deleteFile;
  faultyFiles.xAccess = accessFile;
  isArmed = false;
  sqlite3_vfs_register(&faultyFiles, 1);
}

FaultyFiles::~FaultyFiles() {
  sqlite3_vfs_unregister(&faultyFiles);
  sqlite3_vfs_register(systemFiles, 1);
}

void FaultyFiles::failAt(const Fault& fault, int number) {
  present = fault;
  callsBefore = number - 1;
  isArmed = true;
  hasFailed = false;
}

bool FaultyFiles::repair() {
  isArmed = false;
  return hasFailed;
}
