#include "agent/bundle/ModuleLoader.h"

#include <dlfcn.h>

#include <memory>
#include <system_error>
#include <utility>

#include "ace/DLL_Manager.h"
#include "ace/Service_Config.h"
#include "ace/Service_Repository.h"
#include "orb/idl/globaldefs.h"
#include "platform/framework/ProcessException.h"

namespace agent {
namespace {

constexpr const char* kService = "zu_corba_topo";

std::string symbolName() {
  return std::string("_make_") + kService;
}

// The linker's lines begin with the file, if they name it at all.
std::string dlerrorAbout(const std::string& file) {
  const std::string text = dlerror();
  return text.compare(0, file.size(), file) == 0 ? text : file + ": " + text;
}

// Opens the file for a look: what the dynamic linker says of it is the clearest reason there is.
// The configurator would only print it.
void checkFile(const std::string& file) {
  const std::unique_ptr<void, int (*)(void*)> library(dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL),
                                                      dlclose);
  if (!library) {
    throw ModuleError("module " + dlerrorAbout(file));
  }
  if (dlsym(library.get(), symbolName().c_str()) == nullptr) {
    throw ModuleError("module " + file + ": it has no " + symbolName());
  }
}

// The file's name as a directive can carry it. The configurator reads a quoted text up to the last
// such quote of the line, so nothing else in the directive may be quoted.
std::string quoted(const std::string& file) {
  for (const char quote : {'"', '\''}) {
    if (file.find(quote) == std::string::npos) {
      return quote + file + quote;
    }
  }
  throw ModuleError("module " + file + ": the name has both kinds of quotes in it");
}

std::string describe(ProcessException& failure) {
  return "it failed with code " + std::to_string(failure.errorCode) +
         (failure.detail.str().empty() ? "" : ": " + failure.detail.str());
}

// The configurator reports some failures by its result and all of them by not knowing the service.
bool isLoaded() {
  return ACE_Service_Repository::instance()->find(kService) == 0;
}

// Processes a directive; the reason of its failure, empty when it succeeded.
std::string process(const std::string& directive) {
  try {
    return ACE_Service_Config::process_directive(directive.c_str()) == 0
               ? ""
               : "the service configurator refused it";
  } catch (ProcessException& failure) {
    return describe(failure);
  } catch (const CORBA::Exception& failure) {
    return std::string("it failed with ") + failure._name();
  } catch (const std::exception& failure) {
    return std::string("it failed: ") + failure.what();
  }
}

}  // namespace

// Left to itself, the configurator keeps a library mapped that does not ask to be unmapped.
ModuleLoader::ModuleLoader(std::filesystem::path file) : file_(std::move(file)) {
  ACE_DLL_Manager::instance()->unload_policy(ACE_DLL_UNLOAD_POLICY_PER_PROCESS);
}

ModuleLoader::~ModuleLoader() {
  unload();
}

void ModuleLoader::load() {
  std::error_code status;
  if (!std::filesystem::is_regular_file(file_, status)) {
    throw ModuleError("module " + file_.string() + ": no such file");
  }
  const std::string path = std::filesystem::absolute(file_).string();
  checkFile(path);
  std::string reason = process(std::string("dynamic ") + kService + " Service_Object * " +
                               quoted(path) + ":" + symbolName() + "()");
  // A module that failed in the middle of its start is still mapped.
  loaded_ = true;
  if (reason.empty() && !isLoaded()) {
    reason = "the service configurator does not know it";
  }
  if (!reason.empty()) {
    throw ModuleError("module " + file_.string() + ": " + reason);
  }
}

void ModuleLoader::unload() noexcept {
  if (loaded_) {
    process(std::string("remove ") + kService);
    loaded_ = false;
  }
}

}  // namespace agent
