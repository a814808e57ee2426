#include "agent/northbound/ManagerRegistry.h"

#include <utility>

#include "agent/domain/FailureCodes.h"
#include "platform/framework/ProcessException.h"

namespace agent {
namespace {

[[noreturn]] void refuse(const std::string& reason) {
  ProcessException failure;
  failure.errorCode = kInternalError;
  failure.detail << reason;
  throw failure;
}

}  // namespace

ManagerRegistry::ManagerRegistry(orb::Server& server) : server_(server) {}

void ManagerRegistry::add(const std::string& name, NS_CORBA::MgrFactory* factory) {
  if (!factories_.emplace(name, factory).second) {
    refuse("a manager \"" + name + "\" is registered already");
  }
}

void ManagerRegistry::remove(const std::string& name) {
  if (factories_.erase(name) == 0) {
    refuse("no manager \"" + name + "\" is registered");
  }
}

void ManagerRegistry::serve(const std::string& name, POA_common::Common_I* servant) {
  if (servant == nullptr) {
    refuse("the manager \"" + name + "\" has no servant");
  }
  PortableServer::ServantBase_var owned = servant;
  try {
    Served& served = servedUnder(name);
    retire(served);
    served.reference = served.object->publish(servant);
    served.servant = owned._retn();
  } catch (const CORBA::Exception& failure) {
    refuse("the manager \"" + name + "\" cannot be served: " + failure._name());
  }
}

ManagerRegistry::Served& ManagerRegistry::servedUnder(const std::string& name) {
  const auto entry = served_.find(name);
  if (entry != served_.end()) {
    return entry->second;
  }
  Served made;
  made.object = server_.wellKnownObject(name);
  return served_.emplace(name, std::move(made)).first->second;
}

void ManagerRegistry::retire(Served& served) {
  served.object->retire();
  served.reference = CORBA::Object::_nil();
  served.servant = nullptr;
}

void ManagerRegistry::retire() {
  for (auto& entry : served_) {
    retire(entry.second);
  }
}

CORBA::Object_ptr ManagerRegistry::reference(const std::string& name) {
  const auto entry = served_.find(name);
  return entry == served_.end() ? CORBA::Object::_nil()
                                : CORBA::Object::_duplicate(entry->second.reference);
}

bool ManagerRegistry::serving(const std::string& name) const {
  const auto entry = served_.find(name);
  return factories_.count(name) != 0 && entry != served_.end() &&
         !CORBA::is_nil(entry->second.reference);
}

}  // namespace agent
