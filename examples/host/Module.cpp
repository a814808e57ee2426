// Loads and unloads the module through the ACE Service Configurator.
#include <stdexcept>
#include "Host.h"
#include "ace/DLL_Manager.h"
#include "ace/Service_Config.h"
#include "ace/Service_Repository.h"

using PortableServer::POA, PortableServer::POA_ptr, PortableServer::POA_var;

POA_var host::managerPoa, host::iteratorPoa;

namespace {

bool isLoaded() { return ACE_Service_Repository::instance()->find("zu_corba_topo") == 0; }

// Returns the reason of a failure, or "". An exception of the module's init passes through ACE.
std::string process(const std::string& directive) try {
  const int result = ACE_Service_Config::process_directive(directive.c_str());
  return result == 0 && isLoaded() ? "" : "run with ACE_DEBUG=1 for the reason";
} catch (const std::exception& failure) {
  return failure.what();
} catch (const CORBA::Exception& failure) {
  return failure._name();
}

POA_ptr openPoa(POA_ptr root, const char* name, const CORBA::PolicyList& policies) {
  POA_var poa = root->create_POA(name, PortableServer::POAManager::_nil(), policies);
  PortableServer::POAManager_var(poa->the_POAManager())->activate();
  return poa._retn();
}

// From now on requests fail. Waits for the running requests.
void destroyPoa(POA_var& poa) {
  if (!CORBA::is_nil(poa.in())) poa->destroy(true, true);
  poa = POA::_nil();
}

}  // namespace

void host::load(const std::string& file, POA_ptr root) {
  if (isLoaded()) throw std::runtime_error("the module is loaded already");
  ACE_DLL_Manager::instance()->unload_policy(ACE_DLL_UNLOAD_POLICY_PER_PROCESS);
  CORBA::PolicyList policies(2);
  iteratorPoa = openPoa(root, "iterators", policies);
  policies.length(2);
  policies[0] = root->create_lifespan_policy(PortableServer::PERSISTENT);
  policies[1] = root->create_id_assignment_policy(PortableServer::USER_ID);
  managerPoa = openPoa(root, "managers", policies);  // references stay valid after a reload
  const std::string reason =
      process("dynamic zu_corba_topo Service_Object * '" + file + "':_make_zu_corba_topo()");
  if (reason.empty()) return;
  unload();
  forgetManagers();
  forgetEventHandlers();
  ACE_DLL_Manager::instance()->close_dll(file.c_str());  // ACE closes it after a success only
  throw std::runtime_error("the module cannot be loaded: " + reason);
}

void host::unload() {
  destroyPoa(managerPoa);  // first, because requests to the manager create iterators
  destroyPoa(iteratorPoa);
  drainEvents();
  if (isLoaded()) ACE_Service_Config::process_directive("remove zu_corba_topo");
}
