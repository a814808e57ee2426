// Failures of the agent in calls of a module.

#ifndef AGENT_NORTHBOUND_PLATFORMFAILURE_H
#define AGENT_NORTHBOUND_PLATFORMFAILURE_H

#include <string>

#include "agent/base/FailureCodes.h"
#include "platform/framework/ProcessException.h"

namespace agent {

// Throws a ProcessException with the code and with the reason as its detail.
[[noreturn]] inline void throwPlatformFailure(FailureCode code, const std::string& reason) {
  ProcessException failure;
  failure.errorCode = code;
  failure.detail << reason;
  throw failure;
}

}  // namespace agent

#endif
