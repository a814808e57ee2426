#include "agent/host/RunningAgent.h"

#include <atomic>

#include "agent/base/FailureCodes.h"
#include "host_defaults/PlatformFailure.h"

namespace agent {
namespace {

std::atomic<const RunningAgent*> registered{nullptr};

}  // namespace

AgentRegistration::AgentRegistration(const RunningAgent& agent) : agent_(agent) {
  registered.store(&agent_);
}

AgentRegistration::~AgentRegistration() {
  registered.store(nullptr);
}

RunningAgent runningAgent() {
  const RunningAgent* const agent = registered.load();
  return agent == nullptr ? RunningAgent() : *agent;
}

Northbound& requiredNorthbound() {
  Northbound* const northbound = runningAgent().northbound;
  if (northbound == nullptr) {
    host_defaults::throwPlatformFailure(kNotImplemented, "no agent is running");
  }
  return *northbound;
}

}  // namespace agent
