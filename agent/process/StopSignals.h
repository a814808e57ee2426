// The signals that stop the agent, and SIGHUP.

#ifndef AGENT_PROCESS_STOPSIGNALS_H
#define AGENT_PROCESS_STOPSIGNALS_H

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <thread>

#include "sync/Mutex.h"

namespace agent {

// Receives SIGINT, SIGTERM and SIGHUP on a thread. Blocks the signals in the constructing thread
// and in all threads that the constructing thread starts later. Ignores SIGPIPE and SIGXFSZ,
// because every write reports a closed reader, and a file at its limit, as an error.
//
// After a signal, a start ends at the end of its present step. When the start has not ended after
// `patience`, the thread calls onOverdue, which ends the process.
//
// Thread-safety: any thread.
// Ownership: owns the thread.
// Errors: the constructor throws std::system_error; the other functions throw nothing.
// REQUIRES: one object in the process, constructed before other threads.
class StopSignals {
 public:
  StopSignals(std::chrono::milliseconds patience, std::function<void()> onOverdue);
  ~StopSignals();

  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Whether a signal has arrived.
  bool arrived();

  // Prevents calls of onOverdue from now on.
  void startEnded();

  // Installs `act`, which the thread calls at every later SIGHUP; an empty function ends the calls.
  // If a SIGHUP arrived while no function was installed, onHangup() itself calls `act` once.
  // Returns when no call of the former function is running. A stop signal that arrives during a
  // call by the thread is taken after the call. `act` must not throw.
  void onHangup(std::function<void()> act);

  // Waits until a signal to stop arrives.
  void wait();

 private:
  void takeSignals();
  int nextSignal() const;

  const std::chrono::milliseconds patience_;
  const std::function<void()> onOverdue_;
  const sigset_t signals_;

  Mutex mutex_;
  std::condition_variable changed_;
  bool arrived_ GUARDED_BY(mutex_) = false;
  bool startEnded_ GUARDED_BY(mutex_) = false;
  bool threadEnds_ GUARDED_BY(mutex_) = false;

  Mutex hangupMutex_;  // locked during a call
  std::function<void()> onHangup_ GUARDED_BY(hangupMutex_);
  bool missedHangup_ GUARDED_BY(hangupMutex_) = false;

  std::thread thread_;
};

}  // namespace agent

#endif
