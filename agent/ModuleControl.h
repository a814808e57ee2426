// Loads, reloads and unloads the module in the running agent.

#ifndef AGENT_MODULECONTROL_H
#define AGENT_MODULECONTROL_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <future>

#include "agent/bundle/ModuleLoader.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/events/EventManager.h"
#include "agent/northbound/Northbound.h"
#include "sync/Mutex.h"

namespace agent {

// load, reload and unload exclude each other.
//
// Thread-safety: any thread, but never within a request to the manager or an iterator. Ownership:
// owns the loader; borrows the writer, the event manager and the northbound side, which outlive
// this object. Errors: throws ModuleError; a reload also throws CORBA exceptions.
class ModuleControl {
 public:
  static constexpr std::chrono::seconds kDefaultEventPatience{3};

  // manager: the object key at which the module must serve a manager.
  // eventPatience: how long after the beginning of a reload or an unload the module may handle
  // queued events, and a reload waits for the change in progress.
  ModuleControl(const char* manager, std::filesystem::path module, NetworkWriter& writer,
                EventManager& events, Northbound& northbound,
                std::chrono::milliseconds eventPatience = kDefaultEventPatience);

  // Unloads.
  ~ModuleControl();

  ModuleControl(const ModuleControl&) = delete;
  ModuleControl& operator=(const ModuleControl&) = delete;

  void load();

  // Unloads as unload() does, and loads. New changes of the network wait during the reload, so that
  // a loaded module handles their events. After an exception the module is missing and another
  // reload can load the module; when no thread could be started, the module continues to serve.
  void reload();

  // Stops serving the objects of the module, waits until the module has handled all raised events
  // or the event patience is over, and unloads the module. Events that are left become a gap
  // (EventManager::ReportGap). Does nothing when the module is not loaded.
  void unload();

  enum class State { kLoaded, kReloading, kMissing };
  State state() const { return state_.load(); }

  // The number of successful loads.
  std::uint32_t loads() const { return loads_.load(); }

 private:
  using Deadline = std::chrono::steady_clock::time_point;

  std::future<void> startExchange() REQUIRES(turn_);
  // Runs on another thread while the thread in reload() holds turn_ and waits for the result. The
  // analysis cannot follow that.
  void exchange() NO_THREAD_SAFETY_ANALYSIS;
  void bringIn() REQUIRES(turn_);
  void takeOut(Deadline deadline) REQUIRES(turn_);
  Deadline eventDeadline() const;
  static std::chrono::milliseconds remainingTime(Deadline deadline);

  const char* const manager_;
  const std::filesystem::path module_;
  NetworkWriter& writer_;
  EventManager& events_;
  Northbound& northbound_;
  const std::chrono::milliseconds eventPatience_;

  Mutex turn_;
  ModuleLoader loader_ GUARDED_BY(turn_);
  std::atomic<State> state_{State::kMissing};
  std::atomic<std::uint32_t> loads_{0};
};

}  // namespace agent

#endif
