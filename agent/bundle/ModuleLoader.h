// Loads and unloads the module through the ACE Service Configurator.

#ifndef AGENT_BUNDLE_MODULELOADER_H
#define AGENT_BUNDLE_MODULELOADER_H

#include <filesystem>
#include <stdexcept>
#include <string>

namespace agent {

// The module cannot be loaded or does not start. One line, naming the file and the reason.
class ModuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One module file, loaded or not.
//
// Thread-safety: one thread at a time.
class ModuleLoader {
 public:
  explicit ModuleLoader(std::filesystem::path file);

  // Unloads.
  ~ModuleLoader();

  ModuleLoader(const ModuleLoader&) = delete;
  ModuleLoader& operator=(const ModuleLoader&) = delete;

  // Maps the file, makes its service object and inits it. Throws ModuleError; whatever is mapped
  // then is taken out by unload, under its condition.
  void load();

  // Finis and destroys the service object and unmaps the file. REQUIRES: nobody uses an object of
  // the module any more: no request runs in it, no servant or iterator of it is left. Does nothing
  // when nothing is loaded.
  void unload() noexcept;

  bool loaded() const { return loaded_; }

 private:
  const std::filesystem::path file_;
  std::string path_;  // as it was loaded
  bool loaded_ = false;
  bool failed_ = false;  // its start, so that something of it may be left
};

}  // namespace agent

#endif
