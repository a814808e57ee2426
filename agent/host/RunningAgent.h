// The registered agent, on which the functions of include/platform act.
//
// The functions and singletons of the contract have no context argument, so they find the parts of
// the agent here. No other file of the agent has a global pointer to a part.
//
// When no agent is registered, or when the registered agent has no such part, a function of the
// contract fails as its header allows and never crashes:
//   - a function with a failure code returns kNotImplemented, and takes over no reference,
//   - a function that may throw throws a ProcessException with kNotImplemented,
//   - a function that returns a pointer or a reference returns null or nil,
//   - EmsName() is empty, GetTestSwitch() is false,
//   - a notification is dropped.

#ifndef AGENT_HOST_RUNNINGAGENT_H
#define AGENT_HOST_RUNNINGAGENT_H

class TEEventMgr;

namespace agent {

class AttributeService;
class Northbound;
class Notifier;

// Borrowed parts; null where there is no such part.
struct RunningAgent {
  Northbound* northbound = nullptr;
  TEEventMgr* events = nullptr;
  Notifier* notifier = nullptr;
  AttributeService* attributes = nullptr;
};

// Registers an agent for as long as the registration lives.
//
// Thread-safety: constructed before a module is loaded and destroyed after the module is unloaded,
// so that no function of the contract runs on another thread meanwhile. Ownership: borrows the
// parts, which outlive the registration. Errors: none. REQUIRES: one registration at a time.
class AgentRegistration {
 public:
  explicit AgentRegistration(const RunningAgent& agent);
  ~AgentRegistration();

  AgentRegistration(const AgentRegistration&) = delete;
  AgentRegistration& operator=(const AgentRegistration&) = delete;

 private:
  const RunningAgent agent_;
};

// Without a registration all parts are null. Thread-safety: any thread.
RunningAgent runningAgent();

// The northbound side of the registered agent. Throws ProcessException (kNotImplemented) without a
// registered northbound side.
Northbound& requiredNorthbound();

}  // namespace agent

#endif
