// Loads and unloads private copies of the module.

#ifndef AGENT_BUNDLE_MODULELOADER_H
#define AGENT_BUNDLE_MODULELOADER_H

#include <filesystem>
#include <memory>
#include <string>

#include "agent/bundle/ModuleCopy.h"
#include "agent/bundle/ModuleError.h"
#include "host_defaults/ModuleFile.h"

namespace agent {

// Loads and unloads one module file.
//
// Thread-safety: one thread at a time.
// Ownership: the service configurator owns the service object and the mapped library.
// Errors: load throws ModuleError; unload throws nothing.
class ModuleLoader {
 public:
  explicit ModuleLoader(std::filesystem::path file);

  ModuleLoader(const ModuleLoader&) = delete;
  ModuleLoader& operator=(const ModuleLoader&) = delete;

  // Copies the file for the next load() and checks the copy. A loaded module is not affected.
  // Throws ModuleError when the file is missing, needs an undefined symbol, has no factory, or has
  // a name that the service configurator cannot read; the next load() then makes a new copy.
  void prepare();

  // Maps the prepared copy, or a new copy, and creates and initialises its service object. Throws
  // ModuleError. After a failure the copy may still be mapped: call unload. REQUIRES: not loaded.
  void load();

  // Calls fini, destroys the service object and unmaps the file. Does nothing when nothing is
  // loaded. REQUIRES: no request runs in the module, and no servant or iterator of the module
  // exists.
  void unload() noexcept;

  // The version of the loaded module. REQUIRES: loaded.
  const std::string& version() const { return version_; }

 private:
  const std::filesystem::path file_;
  std::unique_ptr<ModuleCopy> prepared_;
  std::string version_;  // of the mapped copy, which is removed from the disk
  host_defaults::ModuleFile mapped_;
};

}  // namespace agent

#endif
