// The entry of the agent in a CORBA naming service.

#ifndef AGENT_NORTHBOUND_COSNAMINGENTRY_H
#define AGENT_NORTHBOUND_COSNAMINGENTRY_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "orb/naming.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

// The reason why the naming service has no entry, in one line. A plain value.
class NamingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The constructor binds the name. Until the destructor, a thread checks the entry at every interval
// and binds the name again when the naming service answers without the entry, for example after
// a restart without data. An entry that another process has bound in the meantime is kept. The
// destructor unbinds the name unless another process has bound the name to its own object; the
// destructor waits at most 4 seconds for a naming service that does not answer, and at most 10
// seconds for a slow one: 5 calls of 2 seconds, 3 of them of a check in progress.
//
// Thread-safety: constructed and destroyed by one thread.
// Ownership: owns its thread; holds references to the naming context and to the object; borrows the
// ORB.
// Errors: the constructor throws NamingError. When no thread can be started, the constructor
// removes the binding and throws std::system_error. The checks and the destructor log failures.
class CosNamingEntry {
 public:
  static constexpr std::chrono::milliseconds kDefaultCheckInterval{5000};

  // service: an object reference in any form. The constructor repeats a call without an answer
  // after 2 seconds, for about 10 seconds in all, until stopRequested() is true.
  CosNamingEntry(CORBA::ORB_ptr orb, std::string service, const std::string& name,
                 CORBA::Object_ptr object, const std::function<bool()>& stopRequested,
                 std::chrono::milliseconds checkInterval = kDefaultCheckInterval);
  ~CosNamingEntry();

  CosNamingEntry(const CosNamingEntry&) = delete;
  CosNamingEntry& operator=(const CosNamingEntry&) = delete;

 private:
  void bindFirst(const std::function<bool()>& stopRequested);
  void checkUntilStop();
  void check() noexcept;
  void checkOnce();
  void bindIfMissing();
  void logOnce(const std::string& failure);
  void stopChecks();
  void unbind();

  const CORBA::ORB_ptr orb_;
  const std::string service_;
  const std::string nameText_;
  const std::chrono::milliseconds checkInterval_;
  CosNaming::Name name_;
  const CORBA::Object_var object_;
  CosNaming::NamingContext_var context_;  // used by the constructor, then by the checks, then by
                                          // the destructor
  bool failed_ = false;                   // the last check failed, and its failure is in the log

  Mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ GUARDED_BY(mutex_) = false;
  std::thread checks_;
};

}  // namespace agent

#endif
