#include "agent/process/ServiceManager.h"

#include <systemd/sd-daemon.h>

#include <cstdint>
#include <utility>

namespace agent {
namespace {

constexpr int kKeepEnvironment = 0;

// The interval in which the service manager expects a message; 0: none expected.
std::chrono::microseconds expectedInterval() {
  std::uint64_t microseconds = 0;
  return sd_watchdog_enabled(kKeepEnvironment, &microseconds) > 0
             ? std::chrono::microseconds(microseconds)
             : std::chrono::microseconds(0);
}

void notify(const std::string& message) {
  sd_notify(kKeepEnvironment, message.c_str());
}

}  // namespace

ServiceManager::~ServiceManager() {
  endThread();
}

void ServiceManager::ready(const std::string& status, std::function<void()> checkAlive) {
  notify("READY=1\nSTATUS=" + status);
  interval_ = expectedInterval() / 2;
  if (interval_.count() > 0) {
    checkAlive_ = std::move(checkAlive);
    thread_ = std::thread([this] { keepAlive(); });
  }
}

void ServiceManager::stopping() {
  endThread();
  notify("STOPPING=1");
}

void ServiceManager::keepAlive() {
  MutexLock lock(mutex_);
  do {
    lock.unlock();
    try {
      checkAlive_();
      notify("WATCHDOG=1");
    } catch (...) {
      // Without the message, the service manager restarts the process.
    }
    lock.lock();
  } while (
      !changed_.wait_for(lock.native(), interval_, [this]() REQUIRES(mutex_) { return ending_; }));
}

void ServiceManager::endThread() {
  {
    const MutexLock lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable()) {
    thread_.join();
  }
}

}  // namespace agent
