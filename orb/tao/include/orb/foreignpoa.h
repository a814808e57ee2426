// A base of POAs that the ORB does not implement. For tests.

#ifndef ORB_FOREIGNPOA_H
#define ORB_FOREIGNPOA_H

#include <tao/LocalObject.h>
#include <tao/PortableServer/PortableServer.h>

#include <atomic>

#include "orb/corba.h"

namespace orb {

// Counts its references and creates no policies; a subclass implements the other operations of a
// POA. The owner destroys the object after the last reference was released. Thread-safety: any
// thread. No function fails.
class ForeignPoa : public PortableServer::POA, public CORBA::LocalObject {
 public:
  // The number of references that were duplicated and not released.
  int references() const { return references_; }

  void _add_ref() override { ++references_; }
  void _remove_ref() override { --references_; }

  PortableServer::ThreadPolicy_ptr create_thread_policy(
      PortableServer::ThreadPolicyValue) override {
    return none();
  }
  PortableServer::LifespanPolicy_ptr create_lifespan_policy(
      PortableServer::LifespanPolicyValue) override {
    return none();
  }
  PortableServer::IdUniquenessPolicy_ptr create_id_uniqueness_policy(
      PortableServer::IdUniquenessPolicyValue) override {
    return none();
  }
  PortableServer::IdAssignmentPolicy_ptr create_id_assignment_policy(
      PortableServer::IdAssignmentPolicyValue) override {
    return none();
  }
  PortableServer::ImplicitActivationPolicy_ptr create_implicit_activation_policy(
      PortableServer::ImplicitActivationPolicyValue) override {
    return none();
  }
  PortableServer::ServantRetentionPolicy_ptr create_servant_retention_policy(
      PortableServer::ServantRetentionPolicyValue) override {
    return none();
  }
  PortableServer::RequestProcessingPolicy_ptr create_request_processing_policy(
      PortableServer::RequestProcessingPolicyValue) override {
    return none();
  }
  PortableServer::POAManagerFactory_ptr the_POAManagerFactory() override { return none(); }

 protected:
  ForeignPoa() = default;
  ~ForeignPoa() override = default;

 private:
  static std::nullptr_t none() { throw CORBA::NO_IMPLEMENT(0, CORBA::COMPLETED_NO); }

  std::atomic<int> references_{0};
};

}  // namespace orb

#endif
