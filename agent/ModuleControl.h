// Loads, reloads and unloads the module in the running agent.

#ifndef AGENT_MODULECONTROL_H
#define AGENT_MODULECONTROL_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <future>
#include <string>

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

  // Copies and checks the file, unloads the module as unload() does, and loads the copy. Changes of
  // the network wait during the reload, so that the new module handles the event of every later
  // change. When the check fails or no thread can be started, the loaded module continues to serve.
  // After another exception the module is missing, and another reload can load the module.
  void reload();

  // Stops serving the objects of the module, waits until the module has handled all raised events
  // or the event patience is over, and unloads the module. Events that are left become a gap
  // (EventManager::ReportGap). Does nothing when the module is not loaded.
  void unload();

  enum class State { kLoaded, kReloading, kMissing };
  State state() const { return state_.load(); }

  // The number of successful loads.
  std::uint32_t loads() const { return loads_.load(); }

  // The version of the module that was loaded last; "" before the first load.
  std::string version() const;

  // The reason of the failure of the last reload; "" after a successful load.
  std::string lastReloadError() const;

 private:
  using Deadline = std::chrono::steady_clock::time_point;

  std::future<void> startReplacing() REQUIRES(turn_);
  // Runs on another thread while the thread in reload() holds turn_ and waits for the result, which
  // the analysis cannot follow.
  void replaceModule() NO_THREAD_SAFETY_ANALYSIS;
  void loadAndServe() REQUIRES(turn_);
  void retireAndUnload(Deadline deadline) REQUIRES(turn_);
  Deadline eventDeadline() const;
  static std::chrono::milliseconds remainingTime(Deadline deadline);
  void reportReload(const std::string& error);

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

  mutable Mutex report_;
  std::string version_ GUARDED_BY(report_);
  std::string lastReloadError_ GUARDED_BY(report_);
};

}  // namespace agent

#endif
