// Ends a program by SIGINT or SIGTERM.

#ifndef CLIENT_BASE_STOPSIGNALS_H
#define CLIENT_BASE_STOPSIGNALS_H

#include <csignal>
#include <functional>
#include <thread>

namespace topoctl {

// Calls a function in a separate thread at the first SIGINT or SIGTERM. The second signal kills the
// process, in case the process hangs. A signal that is ignored at construction stays ignored.
//
// Thread-safety: constructed and destroyed by one thread. Owns its thread. REQUIRES: at most one
// instance in a process, constructed before any thread that could receive the signals. The function
// must not throw. Throws std::system_error.
class StopSignals {
 public:
  explicit StopSignals(std::function<void()> onStop);
  ~StopSignals();  // restores the signal mask
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  void wait();
  bool next(int& number) const;

  const std::function<void()> onStop_;
  sigset_t signals_;
  sigset_t maskBefore_;
  int arrived_;  // signalfd
  int end_;      // eventfd; readable: the thread ends
  std::thread waiter_;
};

}  // namespace topoctl

#endif
