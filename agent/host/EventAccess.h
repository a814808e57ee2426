// The access of modules to events.

#ifndef AGENT_HOST_EVENTACCESS_H
#define AGENT_HOST_EVENTACCESS_H

namespace agent {

// The answer that modules get when they ask whether they may receive events.
enum class EventAccess {
  kAllowed,
  kDenied,
  kUnknown,  // no "SecurityIF" is published
};

}  // namespace agent

#endif
