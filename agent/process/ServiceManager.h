// The service manager that has started the agent, such as systemd with Type=notify.

#ifndef AGENT_PROCESS_SERVICEMANAGER_H
#define AGENT_PROCESS_SERVICEMANAGER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <string>
#include <thread>

#include "sync/Mutex.h"

namespace agent {

// Reports the state of the process by the protocol of sd_notify(3). When the service manager asks
// for keep-alive messages (sd_watchdog_enabled(3)), a thread sends one at every half of the
// interval from ready() to stopping(). Without a service manager nothing is sent.
//
// Thread-safety: one thread calls the functions.
// Ownership: owns its thread.
// Errors: ready() throws std::system_error when the thread cannot be started. A message that
// cannot be sent is dropped: the service manager's own timeouts cover the loss.
class ServiceManager {
 public:
  ServiceManager() = default;
  ~ServiceManager();

  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;

  // The process serves. `status` is one line for the operator. The thread calls checkAlive()
  // before every keep-alive message; a call that does not return, or throws, withholds the
  // message. REQUIRES: called once.
  void ready(const std::string& status, std::function<void()> checkAlive);

  // The process begins to stop. Ends the keep-alive messages; waits for a running checkAlive().
  void stopping();

 private:
  void keepAlive();
  void endThread();

  std::function<void()> checkAlive_;
  std::chrono::microseconds interval_{0};

  Mutex mutex_;
  std::condition_variable changed_;
  bool ending_ GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace agent

#endif
