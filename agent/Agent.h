// The agent: assembles store, model, ORB and module.

#ifndef AGENT_AGENT_H
#define AGENT_AGENT_H

#include <functional>
#include <memory>
#include <string>

#include "agent/Options.h"

namespace agent {

// The running agent. A process has at most one.
//
// Thread-safety: one thread; reloadModule, checkAlive and reloadFiles from any thread. Ownership:
// owns all parts of the agent. Errors: start and reloadModule throw.
class Agent {
 public:
  explicit Agent(Options options);

  // Stops.
  ~Agent();

  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  // Called between the steps of a start, and while a step waits for another process.
  using StopRequested = std::function<bool()>;

  // Opens the endpoint, the store and the module and begins to serve. Throws a std::exception with
  // one line of text, or a CORBA exception, when one of the three cannot be used. Returns false if
  // stopRequested() was true before the end of the start, even after a failure. After an exception
  // or false nothing is served. An empty function never stops the start.
  bool start(const StopRequested& stopRequested = {});

  // Undoes the start in reverse order. Does nothing without a start.
  void stop();

  // The line that announces the endpoint and the network. REQUIRES: started.
  std::string readyLine();

  // The manager's object reference as text. REQUIRES: started.
  std::string managerReference();

  // Returns when the network can be read. A deadlock of the agent blocks the call. Throws
  // std::bad_alloc. REQUIRES: started.
  void checkAlive();

  // Reads the access file and the files of TLS again, and reopens the audit log. A file that cannot
  // be used leaves the former contents in use; the log has the reason. Throws nothing. REQUIRES:
  // started.
  void reloadFiles() noexcept;

  // Unloads and loads the module. Clients get TRANSIENT during the reload, and iterators end.
  // Throws ModuleError. REQUIRES: started.
  void reloadModule();

 private:
  class Parts;

  const Options options_;
  std::unique_ptr<Parts> parts_;
};

}  // namespace agent

#endif
