#include "agent/ModuleControl.h"

#include <chrono>
#include <future>
#include <optional>
#include <utility>

#include "agent/base/Log.h"

namespace agent {

ModuleControl::ModuleControl(const char* manager, std::filesystem::path module,
                             NetworkWriter& writer, EventManager& events, Northbound& northbound,
                             std::chrono::milliseconds eventPatience)
    : manager_(manager),
      module_(std::move(module)),
      writer_(writer),
      events_(events),
      northbound_(northbound),
      eventPatience_(eventPatience),
      loader_(module_) {}

ModuleControl::~ModuleControl() {
  unload();
}

void ModuleControl::load() {
  const MutexLock lock(turn_);
  try {
    loadAndServe();
  } catch (...) {
    retireAndUnload(eventDeadline());
    throw;
  }
}

void ModuleControl::reload() {
  const MutexLock lock(turn_);
  try {
    loader_.prepare();
    startReplacing().get();
    reportReload("");
  } catch (const std::exception& failure) {
    reportReload(failure.what());
    throw;
  } catch (const CORBA::Exception& failure) {
    reportReload(std::string("the ORB failed with ") + failure._name());
    throw;
  }
}

void ModuleControl::reportReload(const std::string& error) {
  const MutexLock lock(report_);
  lastReloadError_ = error;
}

std::string ModuleControl::version() const {
  const MutexLock lock(report_);
  return version_;
}

std::string ModuleControl::lastReloadError() const {
  const MutexLock lock(report_);
  return lastReloadError_;
}

// Uses another thread, because a thread that serves a request cannot wait for the destruction of a
// POA.
std::future<void> ModuleControl::startReplacing() {
  try {
    return std::async(std::launch::async, [this] { replaceModule(); });
  } catch (const std::exception& failure) {
    throw ModuleError(
        "module " + module_.string() +
        ": no thread can be started to reload it, so it continues to serve: " + failure.what());
  }
}

// retire() waits for running requests, so the call comes before the pause: a request may be a
// change that waits for the end of the pause. A change that is in progress at the deadline
// continues, and its event becomes a gap if the module is not loaded then.
void ModuleControl::replaceModule() {
  const Deadline deadline = eventDeadline();
  std::optional<NetworkWriter::Pause> pause;
  try {
    state_ = State::kReloading;
    northbound_.retire();
    pause.emplace(writer_, remainingTime(deadline));
    retireAndUnload(deadline);
    loadAndServe();
  } catch (...) {
    state_ = State::kMissing;
    pause.reset();
    retireAndUnload(eventDeadline());
    throw;
  }
}

void ModuleControl::unload() {
  const MutexLock lock(turn_);
  state_ = State::kMissing;
  retireAndUnload(eventDeadline());
}

ModuleControl::Deadline ModuleControl::eventDeadline() const {
  return std::chrono::steady_clock::now() + eventPatience_;
}

std::chrono::milliseconds ModuleControl::remainingTime(Deadline deadline) {
  const auto remaining = deadline - std::chrono::steady_clock::now();
  return std::chrono::duration_cast<std::chrono::milliseconds>(remaining);
}

// After a failure the module may be partly loaded.
void ModuleControl::loadAndServe() {
  northbound_.open();
  loader_.load();
  if (!northbound_.managers().serving(manager_)) {
    throw ModuleError("module " + module_.string() + ": it does not serve " + manager_);
  }
  {
    const MutexLock lock(report_);
    version_ = loader_.version();
  }
  ++loads_;
  state_ = State::kLoaded;
}

// REQUIRES of loader_.unload(): no request runs in the module. Events that the module has not
// handled at the deadline become a gap.
void ModuleControl::retireAndUnload(Deadline deadline) {
  northbound_.retire();
  if (!events_.flush(remainingTime(deadline))) {
    log(kLogErrors,
        "module " + module_.string() + " is unloaded before it has handled all queued events");
  }
  loader_.unload();
}

}  // namespace agent
