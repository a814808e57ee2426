#include "agent/bundle/ModuleLoader.h"

#include <dlfcn.h>

#include <memory>
#include <string>
#include <utility>

#include "ace/DLL_Manager.h"
#include "ace/Service_Config.h"
#include "ace/Service_Object.h"
#include "ace/Service_Repository.h"
#include "orb/idl/globaldefs.h"
#include "platform/framework/ProcessException.h"

namespace agent {
namespace {

constexpr const char* kService = "zu_corba_topo";

std::string symbolName() {
  return std::string("_make_") + kService;
}

using Library = std::unique_ptr<void, int (*)(void*)>;
using Factory = ACE_Service_Object*(ACE_Service_Object_Exterminator*);

Library open(const std::string& file, int flags) {
  return Library(dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL | flags), dlclose);
}

// The path of the copy, quoted for a directive. The configurator ends the name at the last such
// quote of the line, so the directive must not contain another quoted text.
std::string quotedName(const std::string& copy) {
  if (copy.find('\n') != std::string::npos) {
    throw ModuleError("module " + copy + ": the name contains a line break");
  }
  for (const char quote : {'"', '\''}) {
    if (copy.find(quote) == std::string::npos) {
      return quote + copy + quote;
    }
  }
  throw ModuleError("module " + copy + ": the name contains both kinds of quotes");
}

// The configurator reports only some failures by its result. After any failure, it does not have
// the service.
bool isLoaded() {
  return ACE_Service_Repository::instance()->find(kService) == 0;
}

// Processes a directive. Returns the reason of a failure, or an empty text. ModuleCopy::check has
// rejected files that cannot be mapped or have no factory, so init is what fails: the configurator
// passes its exceptions on, and returns an error when its result is -1.
std::string process(const std::string& directive) {
  try {
    return ACE_Service_Config::process_directive(directive.c_str()) == 0 ? ""
                                                                         : "its init returned -1";
  } catch (const ProcessException& failure) {
    return std::string("its init failed with ") + failure.what();
  } catch (const CORBA::Exception& failure) {
    return std::string("its init failed with ") + failure._name();
  } catch (const std::exception& failure) {
    return std::string("its init failed: ") + failure.what();
  } catch (...) {
    return "its init failed with an exception of an unknown type";
  }
}

// Cleans up after an init that threw: the configurator has destroyed the service without fini, and
// has not closed the library. The state of a half-done init belongs to the library, not to the
// service object, so that fini of a second service object releases the state.
void undoFailedStart(const std::string& path) {
  const Library library = open(path, RTLD_NOLOAD);
  if (!library) {
    return;
  }
  const auto make = reinterpret_cast<Factory*>(dlsym(library.get(), symbolName().c_str()));
  ACE_Service_Object_Exterminator destroy = nullptr;
  ACE_Service_Object* const service = make(&destroy);
  service->fini();
  destroy(service);
  ACE_DLL_Manager::instance()->close_dll(path.c_str());
}

}  // namespace

// By default, the configurator unmaps only libraries that request unmapping.
ModuleLoader::ModuleLoader(std::filesystem::path file) : file_(std::move(file)) {
  ACE_DLL_Manager::instance()->unload_policy(ACE_DLL_UNLOAD_POLICY_PER_PROCESS);
}

ModuleLoader::~ModuleLoader() {
  unload();
}

void ModuleLoader::prepare() {
  prepared_.reset();
  auto copy = std::make_unique<ModuleCopy>(file_);
  copy->check(symbolName());
  quotedName(copy->path());  // rejects a name that load() cannot use
  prepared_ = std::move(copy);
}

void ModuleLoader::load() {
  if (!prepared_) {
    prepare();
  }
  const std::unique_ptr<ModuleCopy> copy = std::move(prepared_);
  path_ = copy->path();
  version_ = copy->version();
  std::string reason = process(std::string("dynamic ") + kService + " Service_Object * " +
                               quotedName(path_) + ":" + symbolName() + "()");
  loaded_ = true;
  if (reason.empty() && !isLoaded()) {
    reason = "the service configurator has not loaded it";
  }
  failed_ = !reason.empty();
  if (failed_) {
    throw ModuleError("module " + file_.string() + ": " + reason);
  }
}

void ModuleLoader::unload() noexcept {
  if (loaded_) {
    process(std::string("remove ") + kService);
    loaded_ = false;
  }
  if (std::exchange(failed_, false)) {
    try {
      undoFailedStart(path_);
    } catch (...) {
      // The library stays mapped.
    }
  }
}

}  // namespace agent
