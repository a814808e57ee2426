// Loads and unloads the file of the module through the ACE Service Configurator.

#ifndef HOST_DEFAULTS_MODULEFILE_H
#define HOST_DEFAULTS_MODULEFILE_H

#include <string>

#include "platform/framework/Export.h"

namespace host_defaults {

// The file of the module. A process has one.
//
// Thread-safety: one thread at a time, which serves no request and handles no event.
// Ownership: the service configurator owns the service object and the mapped file.
// Errors: load() and checkPath() throw std::runtime_error; unload() throws nothing.
class PLATFORM_API ModuleFile {
 public:
  // Sets the unload policy of ACE for all libraries, so that unload() unmaps the file.
  ModuleFile();

  // Unloads.
  ~ModuleFile();

  ModuleFile(const ModuleFile&) = delete;
  ModuleFile& operator=(const ModuleFile&) = delete;

  // Throws std::runtime_error when no directive of the service configurator can contain the path:
  // the path has a line break or both kinds of quotes.
  static void checkPath(const std::string& path);

  // Maps the file, makes the service object and calls its init. Throws std::runtime_error with the
  // reason of a failure, whatever type init has thrown. After a failure the file may be mapped, its
  // manager registered and its event handler subscribed: deactivate the servants and call unload().
  // REQUIRES: nothing is loaded, and unload() has followed a failed load.
  void load(const std::string& path);

  // Calls fini, deletes the service object and unmaps the file. After a failed load, undoes what
  // init did before the failure, and unmaps the file. Does nothing when nothing is loaded.
  // REQUIRES: no request runs in the module, and no servant of the module exists.
  void unload() noexcept;

  // Whether load() has succeeded since the last unload().
  bool loaded() const { return state_ == State::kLoaded; }

 private:
  enum class State { kUnloaded, kLoaded, kFailed };

  State state_ = State::kUnloaded;
  std::string path_;
};

}  // namespace host_defaults

#endif
