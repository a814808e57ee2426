// Calls to receivers.

#ifndef AGENT_NOTIFICATIONS_RETRIEDCALL_H
#define AGENT_NOTIFICATIONS_RETRIEDCALL_H

#include <string>

#include "agent/notifications/NotificationSink.h"
#include "orb/orb.h"

namespace agent {

// One line for messages.
std::string reasonOf(const CORBA::Exception& failure);

// Makes a call, and once more if the connection was closed, unless the receiver is stopping.
template <typename Call>
void callTwice(const Sink::Stopping& stopping, Call call) {
  try {
    call();
  } catch (const CORBA::SystemException& failure) {
    if (!orb::isConnectionClosed(failure) || stopping.load()) {
      throw;
    }
    call();
  }
}

}  // namespace agent

#endif
