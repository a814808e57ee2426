// platform/agent/AgentConfig.h: the manager of the module, and its servant.
#include <map>
#include "Host.h"
#include "host_defaults/PlatformFailure.h"
#include "platform/agent/AgentConfig.h"

using namespace NS_CORBA;
using PortableServer::ObjectId_var, PortableServer::string_to_ObjectId;

namespace {

std::map<std::string, MgrFactory*> factories;  // the module owns the factories

[[noreturn]] void fail(const char* reason) {
  host_defaults::throwPlatformFailure(host::kFailure + globaldefs::EXCPT_INTERNAL_ERROR, reason);
}

// Ends the earlier servant of an id, if there is one.
void deactivate(const PortableServer::ObjectId& id) try {
  host::module.managerPoa()->deactivate_object(id);
} catch (const PortableServer::POA::ObjectNotActive&) {
}

}  // namespace

std::string CorbaBaseAgentConfig::EmsName() { return host::kEmsName; }
bool CorbaAgentConfig::GetTestSwitch() { return false; }

void CorbaBaseAgentConfig::RegisterMgr(const char* name, MgrFactory* factory) {
  if (!factories.emplace(name, factory).second) fail("the name of a manager is in use");
}

void CorbaBaseAgentConfig::UnregisterMgr(const char* name) {
  if (factories.erase(name) == 0) fail("no manager has this name");
}

// Drops the creation reference in any case. The POA has a reference of its own.
void CorbaAgentConfig::RegisterServant(const char* name, POA_common::Common_I* servant) try {
  if (servant == nullptr) fail("there is no servant");
  const PortableServer::ServantBase_var owned = servant;
  const ObjectId_var id = string_to_ObjectId(name);
  deactivate(id.in());
  host::module.managerPoa()->activate_object_with_id(id.in(), servant);
} catch (const CORBA::Exception& failure) {
  fail(failure._name());
}
