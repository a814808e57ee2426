// The edge between the services of changes, which return outcomes, and the layers below, which
// throw. Part of the services.

#ifndef AGENT_CHANGES_SERVICEOUTCOME_H
#define AGENT_CHANGES_SERVICEOUTCOME_H

#include <exception>

#include "agent/base/OperationResult.h"

namespace agent {

// Runs work and translates exceptions of the layers below. subject() names the object of the
// change.
template <typename Subject, typename Work>
Outcome outcomeOf(Subject subject, Work work) {
  try {
    return work();
  } catch (const std::exception& failure) {
    return internalError(subject, failure.what());
  }
}

}  // namespace agent

#endif
