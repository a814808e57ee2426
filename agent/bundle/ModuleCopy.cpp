#include "agent/bundle/ModuleCopy.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <system_error>

#include "agent/bundle/ElfFile.h"
#include "agent/bundle/ModuleError.h"
#include "platform/bundlemgr/ModuleVersion.h"

namespace agent {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLargestModule = std::uintmax_t{256} << 20;

ModuleError failureOf(const fs::path& original, const std::string& reason) {
  return ModuleError("module " + original.string() + ": " + reason);
}

// The directory of temporary files as POSIX defines it, even if it does not exist.
fs::path temporaryFiles() {
  const char* const place = getenv("TMPDIR");
  return place != nullptr && *place != '\0' ? place : "/tmp";
}

fs::path makeDirectory(const fs::path& original) {
  const fs::path parent = temporaryFiles();
  std::string name = (parent / "topo-agentd-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw failureOf(original, "no directory for a copy in " + parent.string() + ": " +
                                  std::generic_category().message(errno));
  }
  return name;
}

// The limit keeps the copy of a wrong file from filling the disk.
void requireModuleFile(const fs::path& original) {
  std::error_code failure;
  const fs::file_status status = fs::status(original, failure);
  if (!fs::exists(status)) {
    throw failureOf(original, "no such file");
  }
  if (!fs::is_regular_file(status)) {
    throw failureOf(original, "is not a regular file");
  }
  if (const std::uintmax_t size = fs::file_size(original, failure);
      !failure && size > kLargestModule) {
    throw failureOf(original, "is larger than 256 MiB");
  }
}

// The text of the dynamic linker begins with the path of the copy if it names a file at all.
std::string linkerError(const std::string& copy) {
  const std::string text = dlerror();
  const std::string prefix = copy + ": ";
  return text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text;
}

}  // namespace

ModuleCopy::ModuleCopy(const fs::path& original) : original_(original) {
  requireModuleFile(original_);
  directory_ = makeDirectory(original_);
  path_ = (directory_ / original_.filename()).string();
  try {
    copy();
  } catch (...) {
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
    throw;
  }
}

ModuleCopy::~ModuleCopy() {
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

void ModuleCopy::copy() const {
  std::error_code failure;
  fs::copy_file(original_, path_, failure);
  if (failure) {
    throw failureOf(original_,
                    "cannot be copied to " + directory_.string() + ": " + failure.message());
  }
}

// Looks for the factory before dlopen: dlopen would run the constructors of a wrong file, such as a
// copy of a library that the process has loaded already.
void ModuleCopy::check(const std::string& factory) const {
  if (isTruncatedElf(path_)) {
    throw failureOf(original_, "the end of the file is missing");
  }
  if (isElf(path_) && !definesSymbol(path_, factory)) {
    throw failureOf(original_, "it has no " + factory);
  }
  const std::unique_ptr<void, int (*)(void*)> library(dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL),
                                                      dlclose);
  if (!library) {
    throw failureOf(original_, linkerError(path_));
  }
}

std::string ModuleCopy::version() const {
  const std::string text = elfSectionText(path_, NS_BUNDLEMGR1::kVersionSection);
  return text.empty() ? "unknown" : text;
}

}  // namespace agent
