#include "host_defaults/RunningOrb.h"

namespace host_defaults {

RunningOrb::RunningOrb(CORBA::ORB_ptr orb) : orb_(orb) {
  const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
  root_ = PortableServer::POA::_narrow(object.in());
  const PortableServer::POAManager_var manager = root_->the_POAManager();
  manager->activate();
  thread_ = std::thread([this] { run(); });
}

RunningOrb::~RunningOrb() {
  orb_->shutdown(true);
  thread_.join();
  orb_->destroy();
}

// An exception that leaves the function of a thread ends the process.
void RunningOrb::run() {
  try {
    orb_->run();
  } catch (const CORBA::BAD_INV_ORDER&) {
    // The ORB was shut down before the call.
  }
}

}  // namespace host_defaults
