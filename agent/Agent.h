// The agent put together: store, model, ORB, module.

#ifndef AGENT_AGENT_H
#define AGENT_AGENT_H

#include <functional>
#include <memory>
#include <string>

#include "agent/Options.h"

namespace agent {

// One in a process. Thread-safety: one thread; reloadModule from any.
class Agent {
 public:
  explicit Agent(Options options);

  // Stops.
  ~Agent();

  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  // Asked between the steps of a start, and during those that wait for somebody else.
  using StopRequested = std::function<bool()>;

  // Opens the endpoint, the store and the module and begins to serve. Throws a std::exception whose
  // text is one line, or a CORBA exception, when one of them cannot be used; nothing is then
  // served. Returns false, and nothing is served, when the start is asked to stop before it is
  // complete, whatever else fails then. An empty function never asks.
  bool start(const StopRequested& stopRequested = {});

  // Withdraws everything that start made, in reverse. Does nothing when nothing was started.
  void stop();

  // What is served, and where. REQUIRES: started.
  std::string readyLine();

  // The manager's object reference as text. REQUIRES: started.
  std::string managerReference();

  // Takes the module out of the process and puts it in again. Clients see TRANSIENT in between, and
  // iterators end. REQUIRES: started. Throws ModuleError.
  void reloadModule();

 private:
  class Parts;

  const Options options_;
  std::unique_ptr<Parts> parts_;
};

}  // namespace agent

#endif
