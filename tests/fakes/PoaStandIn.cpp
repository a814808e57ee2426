#include "tests/fakes/PoaStandIn.h"

#include "orb/foreignpoa.h"

namespace fakes {
namespace {

[[noreturn]] void refuse() {
  throw CORBA::NO_IMPLEMENT(0, CORBA::COMPLETED_NO);
}

}  // namespace

class PoaStandIn::Poa final : public orb::ForeignPoa {
  using ObjectId = PortableServer::ObjectId;
  using Servant = PortableServer::Servant;

 public:
  ~Poa() override = default;

  PortableServer::POA_ptr create_POA(const char*, PortableServer::POAManager_ptr,
                                     const CORBA::PolicyList&) override {
    refuse();
  }
  PortableServer::POA_ptr find_POA(const char*, CORBA::Boolean) override { refuse(); }
  void destroy(CORBA::Boolean, CORBA::Boolean) override { refuse(); }
  char* the_name() override { return CORBA::string_dup("stand-in"); }
  PortableServer::POA_ptr the_parent() override { refuse(); }
  PortableServer::POAList* the_children() override { refuse(); }
  PortableServer::POAManager_ptr the_POAManager() override { refuse(); }
  PortableServer::AdapterActivator_ptr the_activator() override { refuse(); }
  void the_activator(PortableServer::AdapterActivator_ptr) override { refuse(); }
  PortableServer::ServantManager_ptr get_servant_manager() override { refuse(); }
  void set_servant_manager(PortableServer::ServantManager_ptr) override { refuse(); }
  Servant get_servant() override { refuse(); }
  void set_servant(Servant) override { refuse(); }
  ObjectId* activate_object(Servant) override { refuse(); }
  void activate_object_with_id(const ObjectId&, Servant) override { refuse(); }
  void deactivate_object(const ObjectId&) override { refuse(); }
  CORBA::Object_ptr create_reference(const char*) override { refuse(); }
  CORBA::Object_ptr create_reference_with_id(const ObjectId&, const char*) override { refuse(); }
  ObjectId* servant_to_id(Servant) override { refuse(); }
  CORBA::Object_ptr servant_to_reference(Servant) override { refuse(); }
  Servant reference_to_servant(CORBA::Object_ptr) override { refuse(); }
  ObjectId* reference_to_id(CORBA::Object_ptr) override { refuse(); }
  Servant id_to_servant(const ObjectId&) override { refuse(); }
  CORBA::Object_ptr id_to_reference(const ObjectId&) override { refuse(); }
  CORBA::OctetSeq* id() override { refuse(); }
};

PoaStandIn::PoaStandIn() : poa_(std::make_unique<Poa>()) {}

PoaStandIn::~PoaStandIn() = default;

PortableServer::POA_ptr PoaStandIn::get() {
  return poa_.get();
}

int PoaStandIn::references() const {
  return poa_->references();
}

}  // namespace fakes
