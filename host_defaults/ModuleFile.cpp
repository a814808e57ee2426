#include "host_defaults/ModuleFile.h"

#include <dlfcn.h>

#include <memory>
#include <stdexcept>
#include <utility>

#include "ace/DLL_Manager.h"
#include "ace/Service_Config.h"
#include "ace/Service_Object.h"
#include "ace/Service_Repository.h"
#include "orb/corba.h"
#include "platform/framework/ProcessException.h"

namespace host_defaults {
namespace {

constexpr const char* kService = "zu_corba_topo";
constexpr const char* kFactory = "_make_zu_corba_topo";

using Library = std::unique_ptr<void, int (*)(void*)>;
using Factory = ACE_Service_Object*(ACE_Service_Object_Exterminator*);

// The path in quotes that the path does not contain. The configurator ends the path at the last
// such quote of the line, so the directive must not contain another quoted text.
std::string quoted(const std::string& path) {
  if (path.find('\n') != std::string::npos) {
    throw std::runtime_error("the name contains a line break");
  }
  for (const char quote : {'"', '\''}) {
    if (path.find(quote) == std::string::npos) {
      return quote + path + quote;
    }
  }
  throw std::runtime_error("the name contains both kinds of quotes");
}

// The result of a directive reports some failures only. After any failure, the repository does not
// have the service.
bool isInRepository() {
  return ACE_Service_Repository::instance()->find(kService) == 0;
}

// The configurator completes a name without a dot: FOLDER/NAME to FOLDER/libNAME.so.
std::string completed(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  return path.find('.', name) != std::string::npos
             ? path
             : path.substr(0, name) + "lib" + path.substr(name) + ".so";
}

Library open(const std::string& path, int flags) {
  const int mode = RTLD_LAZY | RTLD_LOCAL | flags;
  void* const library = dlopen(completed(path).c_str(), mode);
  return Library(library != nullptr ? library : dlopen(path.c_str(), mode), dlclose);
}

// The configurator has the same result for a file that cannot be mapped, for a library without the
// factory, and for an init that returned -1. For a name without a folder, the last error of the
// dynamic linker may be that of another file than the configurator's.
std::string reasonOfRefusal(const std::string& path) {
  const Library library = open(path, 0);
  if (!library) {
    return path.find('/') == std::string::npos
               ? "the service configurator refused it; ACE_DEBUG=1 shows the reason"
               : dlerror();
  }
  return dlsym(library.get(), kFactory) == nullptr ? std::string("it has no ") + kFactory
                                                   : "its init returned -1";
}

// Returns the reason of a failure, or "". An exception of init passes through the configurator.
std::string process(const std::string& directive, const std::string& path) {
  try {
    const int result = ACE_Service_Config::process_directive(directive.c_str());
    return result == 0 ? "" : reasonOfRefusal(path);
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

// Does nothing when the repository does not have the service.
void removeService() noexcept {
  try {
    ACE_Service_Config::process_directive((std::string("remove ") + kService).c_str());
  } catch (...) {
    // The fini of a faulty module has thrown.
  }
}

// Cleans up after an init that threw: the configurator has deleted the service object without fini,
// and has not closed the library. What init did belongs to the library, not to the service object,
// so fini of a second service object undoes it. A library without the factory is no module: the
// process has mapped it for another purpose, and nothing is left to undo.
void undoFailedInit(const std::string& path) {
  const Library library = open(path, RTLD_NOLOAD);
  void* const factory = library ? dlsym(library.get(), kFactory) : nullptr;
  if (factory == nullptr) {
    return;
  }
  const auto make = reinterpret_cast<Factory*>(factory);
  ACE_Service_Object_Exterminator destroy = nullptr;
  ACE_Service_Object* const service = make(&destroy);
  service->fini();
  destroy(service);
  ACE_DLL_Manager::instance()->close_dll(path.c_str());
}

}  // namespace

// By default, the configurator unmaps only libraries that request unmapping.
ModuleFile::ModuleFile() {
  ACE_DLL_Manager::instance()->unload_policy(ACE_DLL_UNLOAD_POLICY_PER_PROCESS);
}

ModuleFile::~ModuleFile() {
  unload();
}

void ModuleFile::checkPath(const std::string& path) {
  quoted(path);
}

void ModuleFile::load(const std::string& path) {
  const std::string directive = std::string("dynamic ") + kService + " Service_Object * " +
                                quoted(path) + ":" + kFactory + "()";
  path_ = path;
  std::string reason = process(directive, path_);
  if (reason.empty() && !isInRepository()) {
    reason = "the service configurator has not loaded it";
  }
  state_ = reason.empty() ? State::kLoaded : State::kFailed;
  if (!reason.empty()) {
    throw std::runtime_error(reason);
  }
}

void ModuleFile::unload() noexcept {
  const State state = std::exchange(state_, State::kUnloaded);
  if (state != State::kUnloaded) {
    removeService();
  }
  if (state == State::kFailed) {
    try {
      undoFailedInit(path_);
    } catch (...) {
      // The library stays mapped.
    }
  }
}

}  // namespace host_defaults
