// Faults in the calls of SQLite to its files.

#ifndef TESTS_UNIT_AGENT_STORE_SQLITE_FAULTYFILES_H
#define TESTS_UNIT_AGENT_STORE_SQLITE_FAULTYFILES_H

#include <iosfwd>
#include <string>

// The calls of SQLite to its files that can fail.
enum class FileCall { kOpen, kDelete, kAccess, kRead, kWrite, kTruncate, kSync, kSize, kLock };

struct Fault {
  FileCall call;
  int code;      // of SQLite, such as SQLITE_IOERR_READ
  bool lasting;  // until repair(); otherwise one call fails
};

// Prints the call and the duration, such as "WriteOnce".
void PrintTo(const Fault& fault, std::ostream* out);

// During the life of the object, SQLite opens all databases through it. A call that does not fail
// reaches the file, except that sync does nothing.
//
// Thread-safety: one thread; one object at a time. Ownership: databases that were opened during its
// life must be closed before its end. Errors: none.
class FaultyFiles {
 public:
  FaultyFiles();
  ~FaultyFiles();

  FaultyFiles(const FaultyFiles&) = delete;
  FaultyFiles& operator=(const FaultyFiles&) = delete;

  // The fault begins with the call of this number, from 1, of the calls from now on.
  void failAt(const Fault& fault, int number);

  // Ends the fault. Returns whether a call has failed.
  bool repair();
};

#endif
