// The module's place in the agent: in, out, and in again.

#ifndef AGENT_MODULECONTROL_H
#define AGENT_MODULECONTROL_H

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <future>

#include "agent/bundle/ModuleLoader.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/events/EventManager.h"
#include "agent/northbound/Northbound.h"
#include "sync/Mutex.h"

namespace agent {

// Borrows everything, which must outlive it.
// Thread-safety: any thread; load, reload and unload take turns. Not from within a request to the
// manager or an iterator.
class ModuleControl {
 public:
  // The name under which the module must serve a manager.
  ModuleControl(const char* manager, std::filesystem::path module, NetworkWriter& writer,
                EventManager& events, Northbound& northbound);

  // Unloads.
  ~ModuleControl();

  ModuleControl(const ModuleControl&) = delete;
  ModuleControl& operator=(const ModuleControl&) = delete;

  // Throws ModuleError.
  void load();

  // Unloads and loads. Changes of the network wait meanwhile, so that every event finds a module
  // that translates it. Throws ModuleError or a CORBA exception. The module is then missing, and
  // another reload can load it; when the reload could not even begin, the module serves on.
  void reload();

  // Stops serving what came from the module, lets it handle the events that were raised, and takes
  // it out. Does nothing when it is out.
  void unload();

  enum class State { kLoaded, kReloading, kMissing };
  State state() const { return state_.load(); }

  // How many times it came in.
  std::uint32_t loads() const { return loads_.load(); }

 private:
  std::future<void> startExchange() REQUIRES(turn_);
  // Runs on a thread of its own while the thread in reload() holds turn_ and waits for the result,
  // which the analysis cannot follow.
  void exchange() NO_THREAD_SAFETY_ANALYSIS;
  void bringIn() REQUIRES(turn_);
  void takeOut() REQUIRES(turn_);

  const char* const manager_;
  const std::filesystem::path module_;
  NetworkWriter& writer_;
  EventManager& events_;
  Northbound& northbound_;

  Mutex turn_;
  ModuleLoader loader_ GUARDED_BY(turn_);
  std::atomic<State> state_{State::kMissing};
  std::atomic<std::uint32_t> loads_{0};
};

}  // namespace agent

#endif
