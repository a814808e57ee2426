// Loads and unloads the module through the ACE Service Configurator.

#ifndef AGENT_BUNDLE_MODULELOADER_H
#define AGENT_BUNDLE_MODULELOADER_H

#include <filesystem>
#include <stdexcept>
#include <string>

namespace agent {

// The reason why the module cannot be loaded or started: one line with the file. A plain value.
class ModuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Loads and unloads one module file.
//
// Thread-safety: one thread at a time.
// Ownership: the service configurator owns the service object and the mapped library.
// Errors: load throws ModuleError; unload throws nothing.
class ModuleLoader {
 public:
  explicit ModuleLoader(std::filesystem::path file);

  // Unloads.
  ~ModuleLoader();

  ModuleLoader(const ModuleLoader&) = delete;
  ModuleLoader& operator=(const ModuleLoader&) = delete;

  // Maps the file, and creates and initialises its service object. Throws ModuleError. After a
  // failure the file may still be mapped: call unload.
  void load();

  // Calls fini, destroys the service object and unmaps the file. Does nothing when nothing is
  // loaded. REQUIRES: no request runs in the module, and no servant or iterator of the module
  // exists.
  void unload() noexcept;

  bool loaded() const { return loaded_; }

 private:
  const std::filesystem::path file_;
  std::string path_;  // absolute, of the last load
  bool loaded_ = false;
  bool failed_ = false;  // the last load failed: the library may still be mapped
};

}  // namespace agent

#endif
