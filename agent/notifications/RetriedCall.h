// Remote calls with one retry.

#ifndef AGENT_NOTIFICATIONS_RETRIEDCALL_H
#define AGENT_NOTIFICATIONS_RETRIEDCALL_H

#include <string>

#include "agent/notifications/NotificationSink.h"
#include "orb/orb.h"

namespace agent {

// The exception as one line for the log. Thread-safety: any thread.
std::string reasonOf(const CORBA::Exception& failure);

// Makes a call. Repeats the call once when the connection was closed and `stopping` is not set.
// Throws the exception of the last call. Thread-safety: any thread.
template <typename Call>
void callWithRetry(const NotificationSink::Stopping& stopping, Call call) {
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
