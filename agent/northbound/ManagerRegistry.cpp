#include "agent/northbound/ManagerRegistry.h"

#include <new>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "host_defaults/PlatformFailure.h"

namespace agent {
namespace {

std::shared_ptr<void> beginReply(const orb::Request&) {
  try {
    return ViewReply::begin();
  } catch (const std::bad_alloc&) {
    throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO);
  }
}

}  // namespace

ManagerRegistry::ManagerRegistry(orb::Server& server, const ViewGuard* guard)
    : server_(server), guard_(guard) {}

void ManagerRegistry::add(const std::string& name, NS_CORBA::MgrFactory* factory) {
  if (!factories_.emplace(name, factory).second) {
    host_defaults::throwPlatformFailure(kInternalError,
                                        "a manager \"" + name + "\" is registered already");
  }
}

void ManagerRegistry::remove(const std::string& name) {
  if (factories_.erase(name) == 0) {
    host_defaults::throwPlatformFailure(kInternalError,
                                        "no manager \"" + name + "\" is registered");
  }
}

void ManagerRegistry::serve(const std::string& name, POA_common::Common_I* servant) {
  if (servant == nullptr) {
    host_defaults::throwPlatformFailure(kInternalError,
                                        "the manager \"" + name + "\" has no servant");
  }
  PortableServer::ServantBase_var owned = servant;
  try {
    Served& served = servedUnder(name);
    retire(served);
    publish(served, servant);
    served.servant = owned._retn();
  } catch (const CORBA::Exception& failure) {
    host_defaults::throwPlatformFailure(
        kInternalError, "the manager \"" + name + "\" cannot be served: " + failure._name());
  }
}

void ManagerRegistry::publish(Served& served, POA_common::Common_I* servant) {
  auto* const manager = dynamic_cast<POA_TopoManagementManager::TopoMgr_I*>(servant);
  if (guard_ == nullptr || manager == nullptr) {
    served.reference = served.object->publish(servant);
    return;
  }
  served.guarded = new GuardedManager(*manager, *guard_);
  served.reference = served.object->publish(served.guarded.in(), beginReply);
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
  served.guarded = nullptr;
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
