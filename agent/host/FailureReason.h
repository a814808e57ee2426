// Why a call failed that can return no more than a code.
//
// The reason waits on the thread of the call until the next failure is translated there. That of
// another code, or a success, ends the wait: a reason never becomes that of another failure.

#ifndef AGENT_HOST_FAILUREREASON_H
#define AGENT_HOST_FAILUREREASON_H

#include <string>

#include "orb/corba.h"

namespace agent {

// In place of an earlier reason; code 0 stands for a success and leaves none.
void explainFailure(CORBA::ULong code, const std::string& reason);

// Ends the wait. Empty when no reason was given, or that of another code.
std::string takeReason(CORBA::ULong code);

}  // namespace agent

#endif
