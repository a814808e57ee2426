// The access of modules to events.

#ifndef AGENT_HOST_EVENTACCESS_H
#define AGENT_HOST_EVENTACCESS_H

namespace agent {

// The answer of "SecurityIF" to modules that ask for access to events.
enum class EventAccess {
  kAllowed,
  kDenied,
  kUnknown,  // no "SecurityIF" is published
};

}  // namespace agent

#endif
