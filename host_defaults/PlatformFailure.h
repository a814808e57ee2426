// Failures of the host in calls of the module.

#ifndef HOST_DEFAULTS_PLATFORMFAILURE_H
#define HOST_DEFAULTS_PLATFORMFAILURE_H

#include <cstdint>
#include <string>

#include "platform/framework/ProcessException.h"

namespace host_defaults {

// Throws a ProcessException with the code and with the reason as its detail. Thread-safety: any
// thread.
[[noreturn]] inline void throwPlatformFailure(std::int32_t code, const std::string& reason) {
  ProcessException failure;
  failure.errorCode = code;
  failure.detail << reason;
  throw failure;
}

}  // namespace host_defaults

#endif
