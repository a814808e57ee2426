// How a change of the network ended.

#ifndef AGENT_BASE_OUTCOME_H
#define AGENT_BASE_OUTCOME_H

#include <cstdint>
#include <string>

#include "agent/base/FailureCodes.h"

namespace agent {

// A FailureCode, and for any but kSuccess the reason, in one short line. That of kInternalError is
// for the log, the others are for whoever asked.
struct Outcome {
  std::uint32_t code = 0;
  std::string reason;
};

// kInternalError with the reason "SUBJECT: REASON"; without one where there is no memory for it.
// The subject is a function that gives it.
template <typename Subject>
Outcome internalError(Subject subject, const char* reason) noexcept {
  try {
    return {kInternalError, subject() + ": " + reason};
  } catch (...) {
    return {kInternalError, {}};
  }
}

}  // namespace agent

#endif
