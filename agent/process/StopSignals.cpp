#include "agent/process/StopSignals.h"

#include <utility>

namespace agent {
namespace {

sigset_t receivedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGHUP);
  return signals;
}

}  // namespace

StopSignals::StopSignals(std::chrono::milliseconds patience, std::function<void()> onOverdue)
    : patience_(patience), onOverdue_(std::move(onOverdue)), signals_(receivedSignals()) {
  pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  std::signal(SIGHUP, SIG_DFL);  // nohup(1) ignores the signal
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  thread_ = std::thread([this] { takeSignals(); });
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

void StopSignals::onHangup(std::function<void()> act) {
  const MutexLock lock(hangupMutex_);
  onHangup_ = std::move(act);
  if (onHangup_ && std::exchange(missedHangup_, false)) {
    onHangup_();
  }
}

int StopSignals::nextSignal() const {
  int signal = 0;
  sigwait(&signals_, &signal);
  return signal;
}

void StopSignals::takeSignals() {
  while (nextSignal() == SIGHUP) {
    const MutexLock lock(hangupMutex_);
    if (onHangup_) {
      onHangup_();
    } else {
      missedHangup_ = true;
    }
  }
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
