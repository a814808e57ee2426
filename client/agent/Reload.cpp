#include "client/agent/Reload.h"

#include <thread>

#include "client/base/Failure.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {
namespace {

TopoAgent::Status_T_var askConsole(CORBA::ORB_ptr orb, const AgentAccess& access) {
  return callObject<TopoAgent::Console_I>(orb, access, kConsole,
                                          [](TopoAgent::Console_I_ptr console) {
                                            return TopoAgent::Status_T_var(console->getStatus());
                                          });
}

// Null when there is no console, or when the console does not answer.
TopoAgent::Status_T_var statusIfAny(CORBA::ORB_ptr orb, const AgentAccess& access) {
  try {
    return askConsole(orb, access);
  } catch (const Failure&) {
    return {};
  } catch (const CORBA::Exception&) {
    return {};
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
  const TopoAgent::Status_T_var status = statusIfAny(orb, access);
  if (status.operator->() == nullptr || status->moduleState != TopoAgent::MS_MISSING) {
    return;
  }
  const std::string error = status->lastReloadError.in();
  throw Failure(ExitCode::kUnreachable, describeAgent(access) + " has no module loaded" +
                                            (error.empty() ? "" : " (" + error + ")") +
                                            "; load the module with \"topoctl module reload\"");
}

}  // namespace topoctl
