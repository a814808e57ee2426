#include "client/agent/Reload.h"

#include <thread>

#include "client/base/Failure.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {
namespace {

TopoAgent::ModuleState_T moduleState(CORBA::ORB_ptr orb, const AgentAccess& access) {
  return callObject<TopoAgent::Console_I>(
      orb, access, kConsole, [](TopoAgent::Console_I_ptr console) {
        const TopoAgent::Status_T_var status = console->getStatus();
        return status->moduleState;
      });
}

bool isModuleMissing(CORBA::ORB_ptr orb, const AgentAccess& access) {
  try {
    return moduleState(orb, access) == TopoAgent::MS_MISSING;
  } catch (const Failure&) {
    return false;  // there is no console
  } catch (const CORBA::Exception&) {
    return false;
  }
}

}  // namespace

bool RetryPolicy::waitAlways(std::chrono::milliseconds delay) {
  std::this_thread::sleep_for(delay);
  return true;
}

bool Retry::waitForNext() {
  const auto now = policy_.now();
  if (!failed_) {
    failed_ = true;
    deadline_ = now + policy_.limit;
  }
  return now < deadline_ && policy_.wait(delay_.next());
}

void requireModule(CORBA::ORB_ptr orb, const AgentAccess& access) {
  if (isModuleMissing(orb, access)) {
    throw Failure(ExitCode::kUnreachable,
                  describeAgent(access) +
                      " has no module loaded: the log of the agent has the reason; load the module "
                      "with \"topoctl module reload\"");
  }
}

}  // namespace topoctl
