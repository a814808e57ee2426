// The signals that end a program which runs until it is told to end.

#ifndef CLIENT_WATCH_STOPSIGNALS_H
#define CLIENT_WATCH_STOPSIGNALS_H

#include <csignal>
#include <functional>
#include <thread>

namespace topoctl {

// Waits for SIGINT and SIGTERM in a thread of its own, which calls the function at the first one. A
// further one ends the process, should it hang. A signal that the process was started to ignore
// stays ignored. Threads that were started before get the signals as ever, so make this first. One
// at a time in a process.
class StopSignals {
 public:
  explicit StopSignals(std::function<void()> onStop);
  ~StopSignals();  // the signals are again as before
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  void wait();
  bool next(int& number) const;

  const std::function<void()> onStop_;
  sigset_t signals_;
  sigset_t maskBefore_;
  int arrived_;  // descriptor of the signals
  int end_;      // descriptor that can be read once the thread shall end
  std::thread waiter_;
};

}  // namespace topoctl

#endif
