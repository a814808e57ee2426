// Tests of isOrbsOwnPoa and isCleanupInProgress.

#include <gtest/gtest.h>

#include <memory>

#include "orb/orb.h"

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

}  // namespace
