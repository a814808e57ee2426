// The signals that the agent acts on.

#ifndef AGENT_PROCESS_STOPSIGNALS_H
#define AGENT_PROCESS_STOPSIGNALS_H

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <thread>

#include "sync/Mutex.h"

namespace agent {

// Takes SIGINT and SIGTERM with a thread of its own. Both are blocked in the thread that makes this
// object and in all threads that it starts later, so make it first. SIGHUP is ignored because the
// agent has no log files to reopen; SIGPIPE is ignored because every write says by itself that its
// reader is gone.
//
// A start that is asked to stop gives up at the end of its step. When it has not ended after
// patience, the thread calls onOverdue, which is to end the process.
//
// One at a time in a process. Thread-safety: any thread.
class StopSignals {
 public:
  StopSignals(std::chrono::milliseconds patience, std::function<void()> onOverdue);
  ~StopSignals();

  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Whether a signal asked the agent to stop.
  bool arrived();

  // The start is over; onOverdue is not called from here on.
  void startEnded();

  // Waits until a signal asks the agent to stop.
  void wait();

 private:
  void takeSignal();

  const std::chrono::milliseconds patience_;
  const std::function<void()> onOverdue_;
  const sigset_t signals_;

  Mutex mutex_;
  std::condition_variable changed_;
  bool arrived_ GUARDED_BY(mutex_) = false;
  bool startEnded_ GUARDED_BY(mutex_) = false;
  bool threadEnds_ GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace agent

#endif
