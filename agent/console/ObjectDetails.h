// The details of an object, from the types of the services to the types of the IDL. Part of the
// console.

#ifndef AGENT_CONSOLE_OBJECTDETAILS_H
#define AGENT_CONSOLE_OBJECTDETAILS_H

#include <string>

#include "agent/changes/AttributeService.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// The names of lists and fields are those of network files. Stateless; thread-safety: any thread.
// Errors: std::bad_alloc and exceptions of the ORB.
TopoAgent::ObjectDetails_T tmfDetails(const ObjectDetails& details, const std::string& ems);

}  // namespace agent

#endif
