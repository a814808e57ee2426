#include "host_defaults/Module.h"

#include <stdexcept>
#include <utility>

namespace host_defaults {
namespace {

using PortableServer::POA_ptr;
using PortableServer::POA_var;

// A POA with a POA manager of its own.
POA_ptr openPoa(POA_ptr root, const char* name, const CORBA::PolicyList& policies) {
  POA_var poa = root->create_POA(name, PortableServer::POAManager::_nil(), policies);
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  return poa._retn();
}

POA_ptr openManagerPoa(POA_ptr root) {
  CORBA::PolicyList policies(2);
  policies.length(2);
  policies[0] = root->create_lifespan_policy(PortableServer::PERSISTENT);
  policies[1] = root->create_id_assignment_policy(PortableServer::USER_ID);
  return openPoa(root, "managers", policies);
}

// From now on requests fail. Waits for the running requests.
void destroyPoa(POA_var& poa) {
  if (!CORBA::is_nil(poa.in())) {
    poa->destroy(true, true);
  }
  poa = PortableServer::POA::_nil();
}

}  // namespace

Module::Module(std::function<void()> drainEvents) : drainEvents_(std::move(drainEvents)) {}

Module::~Module() = default;

void Module::load(const std::string& path, POA_ptr root) {
  if (file_.loaded()) {
    throw std::runtime_error("the module is loaded already");
  }
  try {
    iteratorPoa_ = openPoa(root, "iterators", CORBA::PolicyList());
    managerPoa_ = openManagerPoa(root);
    file_.load(path);
  } catch (const std::runtime_error& failure) {
    unload();
    throw std::runtime_error(std::string("the module cannot be loaded: ") + failure.what());
  } catch (...) {
    unload();
    throw;
  }
}

void Module::unload() {
  destroyPoa(managerPoa_);  // first, because requests to the manager create iterators
  destroyPoa(iteratorPoa_);
  drainEvents_();
  file_.unload();
}

POA_ptr Module::managerPoa() const {
  return managerPoa_.in();
}

CORBA::Object_ptr Module::reference(const std::string& name) const {
  try {
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId(name.c_str());
    return managerPoa_->id_to_reference(id.in());
  } catch (const CORBA::UserException&) {
    throw std::runtime_error("the module does not serve " + name);
  }
}

POA_ptr Module::iteratorPoa() const {
  return iteratorPoa_.in();
}

}  // namespace host_defaults
