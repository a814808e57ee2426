#include "tests/fakes/OrbFixture.h"

namespace fakes {
namespace {

PortableServer::POA_ptr makeIteratorPoa(PortableServer::POA_ptr root) {
  CORBA::PolicyList policies;
  policies.length(1);
  policies[0] = root->create_implicit_activation_policy(PortableServer::IMPLICIT_ACTIVATION);
  const PortableServer::POAManager_var manager = root->the_POAManager();
  PortableServer::POA_ptr poa = root->create_POA("iterators", manager, policies);
  manager->activate();
  policies[0]->destroy();
  return poa;
}

}  // namespace

RunningOrb::RunningOrb()
    : server_(orb::startServer({}, {"127.0.0.1", 0}, [](const std::string&) {})),
      iteratorPoa_(makeIteratorPoa(server_->rootPoa())) {}

RunningOrb::~RunningOrb() = default;

}  // namespace fakes
