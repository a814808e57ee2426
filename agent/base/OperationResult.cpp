#include "agent/base/OperationResult.h"

#include "agent/base/Log.h"

namespace agent {

Outcome logInternalError(const char* operation, Outcome outcome) {
  if (outcome.code == kInternalError) {
    log(kLogErrors, std::string(operation) + ": " + outcome.reason);
    outcome.reason.clear();
  }
  return outcome;
}

}  // namespace agent
