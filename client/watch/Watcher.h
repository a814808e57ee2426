// Prints the notifications of an agent and subscribes again after a failure.

#ifndef CLIENT_WATCH_WATCHER_H
#define CLIENT_WATCH_WATCHER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "client/base/AgentAccess.h"
#include "client/base/RetryDelay.h"
#include "client/watch/EventLines.h"
#include "client/watch/Inbox.h"
#include "client/watch/KnownNodes.h"
#include "client/watch/Subscription.h"

namespace topoctl {

// Capacity of the inbox. The agent queues further notifications.
constexpr std::size_t kMaxWaiting = 100000;

struct Intervals {
  std::chrono::milliseconds heartbeat{5000};  // time without an event before the agent is pinged
  std::chrono::milliseconds firstRetry{200};  // doubled for each further attempt
  std::chrono::milliseconds lastRetry{5000};
};

struct WatcherOptions {
  const AgentAccess& access;  // borrowed; for the texts of failures
  std::uint32_t count;        // as WatchOptions::count
  std::chrono::milliseconds heartbeat;
};

// Prints each event, keeps a copy of the view, and compares the copy with a new view after a gap or
// a new subscription. docs/topoctl.md ("When the connection or the subscription ends") has the
// rules.
//
// Thread-safety: one thread. Borrows the arguments of the constructor.
// Errors: every function throws Failure (kLocal) when the output fails.
class Watcher {
 public:
  Watcher(Subscription& subscription, Inbox& inbox, EventLines& lines, RetryDelay& retryDelay,
          const WatcherOptions& options);

  // Subscribes, reads the view and prints a "watching" line. Exceptions of the calls pass.
  void start();

  // Waits for one event, a timeout or a failure, and handles it. REQUIRES: start() has succeeded.
  void step();

  // True when the inbox was stopped or the count of the options is reached.
  bool isDone() const;

 private:
  void printWatching(std::size_t nodes);
  void applyAndPrint(const Event& event);
  void process(const Event& event);
  void checkSubscription();
  std::size_t synchronize();  // returns the number of nodes in the view
  KnownNodes readNodes();
  bool printGapsAtFront();
  void disconnect(const std::string& reason);
  void printPending();
  void reconnect();

  Subscription& subscription_;
  Inbox& inbox_;
  EventLines& lines_;
  RetryDelay& retryDelay_;
  const WatcherOptions options_;
  bool connected_ = false;
  KnownNodes known_;
  std::deque<Event> pending_;  // arrived before the events in the inbox
  std::uint64_t printed_ = 0;
};

}  // namespace topoctl

#endif
