#include "agent/ModuleControl.h"

#include <chrono>
#include <future>
#include <optional>
#include <utility>

#include "agent/base/Log.h"

namespace agent {
namespace {

// How long an unload waits until the module has handled the queued events.
constexpr std::chrono::seconds kEventPatience{10};

}  // namespace

ModuleControl::ModuleControl(const char* manager, std::filesystem::path module,
                             NetworkWriter& writer, EventManager& events, Northbound& northbound)
    : manager_(manager),
      module_(std::move(module)),
      writer_(writer),
      events_(events),
      northbound_(northbound),
      loader_(module_) {}

ModuleControl::~ModuleControl() {
  unload();
}

void ModuleControl::load() {
  const MutexLock lock(turn_);
  try {
    bringIn();
  } catch (...) {
    takeOut();
    throw;
  }
}

void ModuleControl::reload() {
  const MutexLock lock(turn_);
  startExchange().get();
}

// On another thread: the caller may run within a request, which cannot wait for the end of a POA.
std::future<void> ModuleControl::startExchange() {
  try {
    return std::async(std::launch::async, [this] { exchange(); });
  } catch (const std::exception& failure) {
    throw ModuleError("module " + module_.string() +
                      ": no thread can be started to reload it, so it stays: " + failure.what());
  }
}

// No step waits for requests while changes are paused: a waiting request may be a change.
void ModuleControl::exchange() {
  std::optional<NetworkWriter::Pause> pause;
  try {
    state_ = State::kReloading;
    northbound_.retire();
    pause.emplace(writer_);
    takeOut();
    bringIn();
  } catch (...) {
    state_ = State::kMissing;
    pause.reset();
    takeOut();
    throw;
  }
}

void ModuleControl::unload() {
  const MutexLock lock(turn_);
  state_ = State::kMissing;
  takeOut();
}

// After a failure the module may be loaded in part.
void ModuleControl::bringIn() {
  northbound_.open();
  loader_.load();
  if (!northbound_.managers().serving(manager_)) {
    throw ModuleError("module " + module_.string() + ": it does not serve " + manager_);
  }
  ++loads_;
  state_ = State::kLoaded;
}

// The module must not be in use when it is unloaded.
void ModuleControl::takeOut() {
  northbound_.retire();
  if (!events_.flush(kEventPatience)) {
    log(kLogErrors, "module " + module_.string() + ": it goes before it has handled its events");
  }
  loader_.unload();
}

}  // namespace agent
