// Keeps a subscription up and prints what it delivers.

#ifndef CLIENT_WATCH_WATCHER_H
#define CLIENT_WATCH_WATCHER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "client/base/AgentAccess.h"
#include "client/watch/EventLines.h"
#include "client/watch/Inbox.h"
#include "client/watch/KnownNodes.h"
#include "client/watch/RetryDelay.h"
#include "client/watch/Subscription.h"

namespace topoctl {

// No more notifications than this wait to be printed; the agent keeps the others.
constexpr std::size_t kMaxWaiting = 100000;

struct Intervals {
  std::chrono::milliseconds heartbeat{5000};  // without an event, before the agent is asked
  std::chrono::milliseconds firstRetry{200};  // doubled for each further one
  std::chrono::milliseconds lastRetry{5000};
};

struct WatcherOptions {
  const AgentAccess& access;  // borrowed; for the texts of failures
  std::uint32_t count;        // as WatchOptions::count
  std::chrono::milliseconds heartbeat;
};

// One thread works with it. Failures of the output pass from every function.
class Watcher {
 public:
  // Borrows everything.
  Watcher(Subscription& subscription, Inbox& inbox, EventLines& lines, RetryDelay& retryDelay,
          const WatcherOptions& options);

  // Subscribes, reads the view and says so. Exceptions of the calls pass.
  void start();

  // Waits for an event, or until something else is to be done, and does that. REQUIRES: started.
  void step();

  // The inbox was stopped, or as many events were printed as the options ask for.
  bool isDone() const;

 private:
  void show(const Event& event);
  void handle(const Event& event);
  void ask();
  std::size_t synchronize();  // how many nodes the view has
  void lose(const std::string& reason);
  void showRest();
  void comeBack();

  Subscription& subscription_;
  Inbox& inbox_;
  EventLines& lines_;
  RetryDelay& retryDelay_;
  const WatcherOptions options_;
  bool connected_ = false;
  KnownNodes known_;
  std::deque<Event> held_;  // arrived before those in the inbox
  std::uint64_t shown_ = 0;
};

}  // namespace topoctl

#endif
