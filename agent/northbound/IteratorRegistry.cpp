#include "agent/northbound/IteratorRegistry.h"

#include <utility>

namespace agent {

using PortableServer::POA;
using PortableServer::ServantBase;
using PortableServer::ServantBase_var;

IteratorRegistry::IteratorRegistry(PortableServer::POA_ptr root) : root_(POA::_duplicate(root)) {}

IteratorRegistry::~IteratorRegistry() {
  try {
    retire();
  } catch (const CORBA::Exception&) {
    // The ORB went down first and took the POA with it.
  }
}

void IteratorRegistry::open() {
  CORBA::PolicyList policies;
  policies.length(1);
  policies[0] = root_->create_implicit_activation_policy(PortableServer::IMPLICIT_ACTIVATION);
  // A POA manager of its own: iterators are held back or retired without the manager object.
  PortableServer::POA_var poa =
      root_->create_POA("iterators", PortableServer::POAManager::_nil(), policies);
  policies[0]->destroy();
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  const std::lock_guard<std::mutex> lock(mutex_);
  poa_ = poa._retn();
}

void IteratorRegistry::retire() {
  PortableServer::POA_var poa;
  std::map<ServantBase*, ServantBase_var> servants;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    poa = poa_._retn();
    servants.swap(servants_);
  }
  if (!CORBA::is_nil(poa)) {
    poa->destroy(true, true);
  }
}

PortableServer::POA_ptr IteratorRegistry::poa() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return POA::_duplicate(poa_);
}

bool IteratorRegistry::add(ServantBase* servant) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (CORBA::is_nil(poa_)) {
    return false;
  }
  servants_[servant] = servant;
  return true;
}

ServantBase_var IteratorRegistry::take(ServantBase* servant) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto entry = servants_.find(servant);
  if (entry == servants_.end()) {
    return {};
  }
  ServantBase_var taken = entry->second;
  servants_.erase(entry);
  return taken;
}

void IteratorRegistry::deactivate(ServantBase* servant) {
  const ServantBase_var taken = take(servant);
  const PortableServer::POA_var iteratorPoa = poa();
  if (taken.in() == nullptr || CORBA::is_nil(iteratorPoa)) {
    return;
  }
  try {
    const PortableServer::ObjectId_var id = iteratorPoa->servant_to_id(servant);
    iteratorPoa->deactivate_object(id.in());
  } catch (const CORBA::Exception&) {
    // Retired in the meantime: the POA is going, and its objects with it.
  }
}

std::size_t IteratorRegistry::size() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return servants_.size();
}

}  // namespace agent
