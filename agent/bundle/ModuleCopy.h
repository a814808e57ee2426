// A private copy of the module's file.

#ifndef AGENT_BUNDLE_MODULECOPY_H
#define AGENT_BUNDLE_MODULECOPY_H

#include <filesystem>
#include <string>

namespace agent {

// A copy of the module in a new directory below the directory of temporary files. The process maps
// the copy, so that an operator can overwrite the original while the agent runs: writing into a
// mapped file changes running code. The copy has the name of the original, for debuggers.
//
// Thread-safety: one thread at a time. Ownership: owns the directory; the destructor removes the
// directory, which does not affect a mapping of the copy. Errors: the constructor and check() throw
// ModuleError, whose text names the original. The constructor accepts regular files of at most 256
// MiB.
class ModuleCopy {
 public:
  explicit ModuleCopy(const std::filesystem::path& original);
  ~ModuleCopy();

  ModuleCopy(const ModuleCopy&) = delete;
  ModuleCopy& operator=(const ModuleCopy&) = delete;

  const std::string& path() const { return path_; }

  // Throws unless the copy is complete and defines `factory`, and the dynamic linker finds all
  // symbols that the copy needs. Maps and unmaps a copy that defines `factory`.
  void check(const std::string& factory) const;

  // The version that the copy contains (platform/bundlemgr/ModuleVersion.h); "unknown" without one.
  std::string version() const;

 private:
  void copy() const;

  const std::filesystem::path original_;
  std::filesystem::path directory_;
  std::string path_;
};

}  // namespace agent

#endif
