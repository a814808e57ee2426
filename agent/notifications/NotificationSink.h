// The interface between a receiver's thread and the remote consumer or event channel.

#ifndef AGENT_NOTIFICATIONS_NOTIFICATIONSINK_H
#define AGENT_NOTIFICATIONS_NOTIFICATIONSINK_H

#include <atomic>
#include <string>

#include "orb/notification.h"

namespace agent {

// The result of a remote call. A plain value.
struct CallOutcome {
  enum Kind {
    kDone,
    kUnavailable,  // the remote side does not answer; a later call may succeed
    kRejected,     // the remote side answers with an error, which this event may cause
    kFatal,        // no later call can succeed
  };

  Kind kind = kDone;
  std::string reason;  // one line; empty with kDone
};

// Sends events to one consumer or event channel.
//
// Thread-safety: one thread at a time; `stopping` may be set by any thread.
// Ownership: a Receiver owns its sink.
// Errors: CallOutcome; may throw std::bad_alloc and CORBA exceptions.
class NotificationSink {
 public:
  // Set when the receiver stops: the sink starts no further remote call.
  using Stopping = std::atomic<bool>;

  virtual ~NotificationSink() = default;

  // Prepares for pushes. Called again after a failed push or check.
  virtual CallOutcome connect(const Stopping& stopping) = 0;

  // REQUIRES: connected.
  virtual CallOutcome push(const CosNotification::StructuredEvent& event,
                           const Stopping& stopping) = 0;

  // Tests whether the remote side still exists. REQUIRES: connected.
  virtual CallOutcome check(const Stopping& stopping) = 0;

  // Announces the end of the pushes. REQUIRES: connected.
  virtual void disconnect() = 0;
};

}  // namespace agent

#endif
