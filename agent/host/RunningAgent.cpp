#include "agent/host/RunningAgent.h"

#include <atomic>

#include "agent/base/FailureCodes.h"
#include "platform/framework/ProcessException.h"

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
    ProcessException failure;
    failure.errorCode = kNotImplemented;
    failure.detail << "no agent is running";
    throw failure;
  }
  return *northbound;
}

}  // namespace agent
