// Calls to the manager, repeated while the agent reloads its module.

#ifndef CLIENT_AGENT_RELOAD_H
#define CLIENT_AGENT_RELOAD_H

#include <chrono>
#include <functional>

#include "client/agent/Connection.h"
#include "client/agent/Fetch.h"
#include "client/base/AgentAccess.h"
#include "client/base/RetryDelay.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace topoctl {

// How long a call is repeated. The functions are the clock, which tests replace.
struct RetryPolicy {
  std::chrono::milliseconds limit{5000};     // from the first failure on; 0: no repetition
  std::chrono::milliseconds firstDelay{50};  // doubled for each further attempt
  std::chrono::milliseconds lastDelay{500};
  std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
  // Returns false when the call must not be repeated any more.
  std::function<bool(std::chrono::milliseconds)> wait = waitAlways;

  static bool waitAlways(std::chrono::milliseconds delay);  // sleeps and returns true
};

// The repetitions of one call. Thread-safety: none. Borrows the policy. Errors: those of the
// policy's functions.
class Retry {
 public:
  explicit Retry(const RetryPolicy& policy)
      : policy_(policy), delay_(policy.firstDelay, policy.lastDelay) {}

  // Waits before the next attempt. Returns false when the limit of the policy is reached.
  bool waitForNext();

 private:
  const RetryPolicy& policy_;
  RetryDelay delay_;
  std::chrono::steady_clock::time_point deadline_{};  // set by the first failure
  bool failed_ = false;
};

// Throws Failure (kUnreachable) when the agent's console answers that no module is loaded. Returns
// when the module is loaded or loading, and when there is no console to ask. Thread-safety: any
// thread.
void requireModule(CORBA::ORB_ptr orb, const AgentAccess& access);

// Connects to the manager and returns the result of `call`. When the agent rejects a request
// because of a reload of the module, or when the reload has ended an iterator, connects and calls
// again. A rejected request was not executed, so a request that changes the network is never
// executed twice.
//
// `call` may run several times. Throws what callObject() and requireModule() throw; other
// exceptions of the last attempt pass. Thread-safety: any thread.
template <typename Call>
auto callManager(CORBA::ORB_ptr orb, const AgentAccess& access, const RetryPolicy& policy,
                 Call call) {
  Retry retry(policy);
  for (;;) {
    try {
      return callObject<TopoManagementManager::TopoMgr_I>(orb, access, kManager, call);
    } catch (const IteratorEnded&) {
      if (!retry.waitForNext()) {
        throw;
      }
    } catch (const CORBA::SystemException& failure) {
      if (!orb::isRejected(failure)) {
        throw;
      }
      requireModule(orb, access);
      if (!retry.waitForNext()) {
        throw;
      }
    }
  }
}

}  // namespace topoctl

#endif
