// The reason of a failed call whose return value is a code only.
//
// The reason is kept in a thread_local from the failing call until ConstructException reads the
// reason. ConstructException for another code and the next call of TECommonFunc clear the reason.
// Thread-safety: any thread; each thread has one reason.

#ifndef AGENT_HOST_FAILUREREASON_H
#define AGENT_HOST_FAILUREREASON_H

#include <string>

#include "orb/corba.h"

namespace agent {

// Replaces an earlier reason. Code 0 is a success and clears the reason.
void explainFailure(CORBA::ULong code, const std::string& reason);

// Returns and clears the reason. Empty without a reason for this code.
std::string takeReason(CORBA::ULong code);

}  // namespace agent

#endif
