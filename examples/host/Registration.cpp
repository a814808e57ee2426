// platform/agent/AgentConfig.h: registers the manager of the module and serves its servant.

#include <map>
#include <stdexcept>

#include "Host.h"
#include "platform/agent/AgentConfig.h"
#include "platform/framework/ProcessException.h"

namespace {

// Only the thread that loads and unloads the module uses the map.
std::map<std::string, NS_CORBA::MgrFactory*> factories;  // borrowed from the module

[[noreturn]] void fail(const std::string& reason) {
  ProcessException failure;
  failure.errorCode = static_cast<std::int32_t>(host::kNotSupported);
  failure.detail << reason;
  throw failure;
}

}  // namespace

std::string host::managerReference(CORBA::ORB_ptr orb) {
  const PortableServer::POA_var poa = managerPoa.get();
  if (factories.empty() || CORBA::is_nil(poa.in())) {
    throw std::runtime_error("no manager is registered");
  }
  const PortableServer::ObjectId_var id =
      PortableServer::string_to_ObjectId(factories.begin()->first.c_str());
  const CORBA::Object_var object = poa->id_to_reference(id.in());
  const CORBA::String_var text = orb->object_to_string(object.in());
  return text.in();
}

void host::forgetManagers() {
  managerPoa.close();
  factories.clear();
}

namespace NS_CORBA {

MgrFactory::~MgrFactory() = default;

CorbaBaseAgentConfig* CorbaBaseAgentConfig::Instance() {
  static CorbaBaseAgentConfig instance;
  return &instance;
}

void CorbaBaseAgentConfig::RegisterMgr(const char* name, MgrFactory* factory) {
  if (!factories.emplace(name, factory).second) {
    fail(std::string("a manager has the name already: ") + name);
  }
}

void CorbaBaseAgentConfig::UnregisterMgr(const char* name) {
  if (factories.erase(name) == 0) {
    fail(std::string("no manager has the name: ") + name);
  }
}

std::string CorbaBaseAgentConfig::EmsName() {
  return host::kEmsName;
}

CorbaAgentConfig* CorbaAgentConfig::Instance() {
  static CorbaAgentConfig instance;
  return &instance;
}

void CorbaAgentConfig::RegisterServant(const char* name, POA_common::Common_I* servant) {
  if (servant == nullptr) {
    fail("no memory for a servant");
  }
  // Drops the creation reference in any case. The POA has a reference of its own.
  const PortableServer::ServantBase_var owned = servant;
  try {
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId(name);
    const PortableServer::POA_var poa = host::managerPoa.get();
    poa->activate_object_with_id(id.in(), servant);
  } catch (const CORBA::Exception& failure) {
    fail(std::string("a servant cannot be served: ") + failure._name());
  }
}

bool CorbaAgentConfig::GetTestSwitch() {
  return false;
}

}  // namespace NS_CORBA
