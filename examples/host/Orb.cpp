#include "Host.h"

namespace host {

ModulePoa managerPoa;
ModulePoa iteratorPoa;

Orb::Orb(int argc, char** argv) : orb_(startOrb(argc, argv)) {
  const CORBA::Object_var object = orb_->resolve_initial_references("RootPOA");
  root_ = PortableServer::POA::_narrow(object.in());
  const PortableServer::POAManager_var manager = root_->the_POAManager();
  manager->activate();
  thread_ = std::thread([this] { orb_->run(); });
}

Orb::~Orb() {
  orb_->shutdown(true);
  thread_.join();
  orb_->destroy();
}

void ModulePoa::open(PortableServer::POA_ptr root, const char* name, bool fixedIds) {
  CORBA::PolicyList policies;
  if (fixedIds) {
    policies.length(2);
    policies[0] = root->create_lifespan_policy(PortableServer::PERSISTENT);
    policies[1] = root->create_id_assignment_policy(PortableServer::USER_ID);
  }
  const PortableServer::POA_var poa =
      root->create_POA(name, PortableServer::POAManager::_nil(), policies);
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  const std::lock_guard<std::mutex> lock(mutex_);
  poa_ = poa;
}

void ModulePoa::close() {
  PortableServer::POA_var poa;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    poa = poa_._retn();
  }
  if (!CORBA::is_nil(poa.in())) {
    poa->destroy(true, true);
  }
}

PortableServer::POA_ptr ModulePoa::get() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return PortableServer::POA::_duplicate(poa_.in());
}

}  // namespace host
