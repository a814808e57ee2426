// Where the notifications of one receiver go.

#ifndef AGENT_NOTIFICATIONS_NOTIFICATIONSINK_H
#define AGENT_NOTIFICATIONS_NOTIFICATIONSINK_H

#include <atomic>
#include <string>

#include "orb/notification.h"

namespace agent {

// How a call to a receiver went.
struct CallOutcome {
  enum Kind {
    kDone,
    kUnavailable,  // it does not answer at present
    kRefused,      // it answers, but not to this: the event may be the cause
    kGone,         // for good
  };

  Kind kind = kDone;
  std::string why;  // unless it is done; one line
};

// Thread-safety: one thread at a time.
class Sink {
 public:
  // Set when the receiver ends: nothing new is to be called then.
  using Stopping = std::atomic<bool>;

  virtual ~Sink() = default;

  // Gets ready for pushes, also again after one that failed.
  virtual CallOutcome connect(const Stopping& stopping) = 0;

  // REQUIRES: connected.
  virtual CallOutcome push(const CosNotification::StructuredEvent& event,
                           const Stopping& stopping) = 0;

  // Whether the receiver is still there. REQUIRES: connected.
  virtual CallOutcome check(const Stopping& stopping) = 0;

  // No more pushes. REQUIRES: connected.
  virtual void disconnect() = 0;
};

}  // namespace agent

#endif
