#include "client/base/StopSignals.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace topoctl {
namespace {

sigset_t stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM}) {
    struct sigaction present = {};
    sigaction(number, nullptr, &present);
    if (present.sa_handler != SIG_IGN) {
      sigaddset(&signals, number);
    }
  }
  return signals;
}

int checked(int descriptor) {
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
  }
  return descriptor;
}

[[noreturn]] void endBy(int number) {
  std::signal(number, SIG_DFL);
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, number);
  pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
  std::raise(number);
  std::abort();
}

}  // namespace

StopSignals::StopSignals(std::function<void()> onStop)
    : onStop_(std::move(onStop)),
      signals_(stopSignals()),
      maskBefore_(),
      arrived_(checked(signalfd(-1, &signals_, SFD_CLOEXEC))),
      end_(checked(eventfd(0, EFD_CLOEXEC))) {
  pthread_sigmask(SIG_BLOCK, &signals_, &maskBefore_);
  waiter_ = std::thread([this] { wait(); });
}

StopSignals::~StopSignals() {
  eventfd_write(end_, 1);
  waiter_.join();
  close(end_);
  close(arrived_);
  pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
}

// Waits for the next signal. Returns false when the destructor has asked the thread to end.
bool StopSignals::next(int& number) const {
  std::array<pollfd, 2> waited = {{{end_, POLLIN, 0}, {arrived_, POLLIN, 0}}};
  while (poll(waited.data(), waited.size(), -1) < 0 && errno == EINTR) {
  }
  signalfd_siginfo signal{};
  if (waited[0].revents != 0 || read(arrived_, &signal, sizeof signal) != sizeof signal) {
    return false;
  }
  number = static_cast<int>(signal.ssi_signo);
  return true;
}

void StopSignals::wait() {
  int number = 0;
  if (!next(number)) {
    return;
  }
  onStop_();
  if (next(number)) {
    endBy(number);
  }
}

}  // namespace topoctl
