#include "agent/process/StopSignals.h"

#include <utility>

namespace agent {
namespace {

sigset_t stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

StopSignals::StopSignals(std::chrono::milliseconds patience, std::function<void()> onOverdue)
    : patience_(patience), onOverdue_(std::move(onOverdue)), signals_(stopSignals()) {
  pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  std::signal(SIGHUP, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  thread_ = std::thread([this] { takeSignal(); });
}

// A signal to the thread ends its sigwait.
StopSignals::~StopSignals() {
  {
    const MutexLock lock(mutex_);
    threadEnds_ = true;
    startEnded_ = true;
  }
  changed_.notify_all();
  pthread_kill(thread_.native_handle(), SIGINT);
  thread_.join();
}

bool StopSignals::arrived() {
  const MutexLock lock(mutex_);
  return arrived_;
}

void StopSignals::startEnded() {
  {
    const MutexLock lock(mutex_);
    startEnded_ = true;
  }
  changed_.notify_all();
}

void StopSignals::wait() {
  MutexLock lock(mutex_);
  changed_.wait(lock.native(), [this]() REQUIRES(mutex_) { return arrived_; });
}

void StopSignals::takeSignal() {
  int signal = 0;
  sigwait(&signals_, &signal);
  MutexLock lock(mutex_);
  if (threadEnds_) {
    return;
  }
  arrived_ = true;
  changed_.notify_all();
  const bool ended = changed_.wait_for(lock.native(), patience_,
                                       [this]() REQUIRES(mutex_) { return startEnded_; });
  lock.unlock();
  if (!ended) {
    onOverdue_();
  }
}

}  // namespace agent
