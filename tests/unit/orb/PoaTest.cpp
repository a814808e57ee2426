// Tests of isOrbsOwnPoa and isCleanupInProgress.

#include <gtest/gtest.h>

#include <memory>

#include "orb/orb.h"
#include "tests/unit/orb/Servants.h"

namespace {

using PortableServer::POA_var;

class Poa : public testing::Test {
 protected:
  POA_var make(const char* name) {
    return server_->rootPoa()->create_POA(name, PortableServer::POAManager::_nil(),
                                          CORBA::PolicyList());
  }

  std::unique_ptr<orb::Server> server_ = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
};

TEST_F(Poa, IsInCleanupAfterItsDestruction) {
  const POA_var poa = make("a");
  EXPECT_TRUE(orb::isOrbsOwnPoa(poa.in()));
  EXPECT_FALSE(orb::isCleanupInProgress(poa.in()));
  EXPECT_FALSE(orb::isCleanupInProgress(server_->rootPoa()));
  poa->destroy(false, true);
  EXPECT_TRUE(orb::isCleanupInProgress(poa.in()));
}

TEST_F(Poa, IsInCleanupWhenAnotherPoaHasTheName) {
  const POA_var first = make("a");
  first->destroy(false, true);
  const POA_var second = make("a");
  EXPECT_TRUE(orb::isCleanupInProgress(first.in()));
  EXPECT_FALSE(orb::isCleanupInProgress(second.in()));
}

TEST_F(Poa, IsInCleanupAfterTheDestructionOfItsParent) {
  const POA_var parent = make("a");
  const POA_var child =
      parent->create_POA("b", PortableServer::POAManager::_nil(), CORBA::PolicyList());
  EXPECT_FALSE(orb::isCleanupInProgress(child.in()));
  parent->destroy(false, true);
  EXPECT_TRUE(orb::isCleanupInProgress(child.in()));
}

// So housekeeping of servants must not look for the id of a deactivated servant.
TEST_F(Poa, ActivatesADeactivatedServantWhenItsIdIsAskedForAndActivationIsImplicit) {
  PortableServer::POA_ptr root = server_->rootPoa();
  CORBA::PolicyList policies(1);
  policies.length(1);
  policies[0] = root->create_implicit_activation_policy(PortableServer::IMPLICIT_ACTIVATION);
  const POA_var poa = root->create_POA("implicit", PortableServer::POAManager::_nil(), policies);
  const PortableServer::Servant_var<orb_tests::Answering> servant = new orb_tests::Answering(0U);
  const PortableServer::ObjectId_var first = poa->activate_object(servant.in());
  poa->deactivate_object(first.in());
  const PortableServer::ObjectId_var second = poa->servant_to_id(servant.in());
  const PortableServer::ServantBase_var found = poa->id_to_servant(second.in());
  EXPECT_EQ(found.in(), servant.in());
}

}  // namespace
