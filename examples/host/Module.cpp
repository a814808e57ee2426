#include "Module.h"

#include <stdexcept>

#include "ace/DLL_Manager.h"
#include "ace/Service_Config.h"
#include "ace/Service_Repository.h"
#include "platform/framework/ProcessException.h"

namespace {

constexpr const char* kService = "zu_corba_topo";

bool isLoaded() {
  return ACE_Service_Repository::instance()->find(kService) == 0;
}

// Returns the reason of a failure, or an empty text. An exception of init passes through ACE.
std::string process(const std::string& directive) {
  try {
    return ACE_Service_Config::process_directive(directive.c_str()) == 0 && isLoaded()
               ? ""
               : "ACE_DEBUG=1 shows the reason on standard error";
  } catch (ProcessException& failure) {
    return "code " + std::to_string(failure.errorCode) + " " + failure.detail.str();
  } catch (const std::exception& failure) {
    return failure.what();
  } catch (const CORBA::Exception& failure) {
    return failure._name();
  }
}

}  // namespace

namespace host {

// ACE's default policy is to ask the library, and libACE answers for a library without an answer:
// never unload.
Module::Module(std::string file, Orb& orb) : file_(std::move(file)), orb_(orb) {
  ACE_DLL_Manager::instance()->unload_policy(ACE_DLL_UNLOAD_POLICY_PER_PROCESS);
}

void Module::load() {
  managerPoa.open(orb_.rootPoa(), "managers", true);
  iteratorPoa.open(orb_.rootPoa(), "iterators", false);
  const std::string reason = process(std::string("dynamic ") + kService + " Service_Object * '" +
                                     file_ + "':_make_" + kService + "()");
  if (!reason.empty()) {
    forget();
    ACE_DLL_Manager::instance()->close_dll(file_.c_str());
    throw std::runtime_error("the module cannot be loaded: " + reason);
  }
}

void Module::unload() {
  if (isLoaded()) {
    forgetManagers();
    forgetIterators();
    drainEvents();
    ACE_Service_Config::process_directive((std::string("remove ") + kService).c_str());
  }
}

void Module::forget() {
  forgetManagers();
  forgetIterators();
  forgetEventHandlers();
}

}  // namespace host
