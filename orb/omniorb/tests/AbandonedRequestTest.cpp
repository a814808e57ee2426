// Requests that the ORB rejects before it has read all bytes.

#include <gtest/gtest.h>

#include <new>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::RawClient;

// A servant that throws NO_MEMORY before the arguments are decoded.
class OutOfMemory final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  CORBA::Boolean _dispatch(omniCallHandle&) override { throw std::bad_alloc(); }

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out) override {
    return false;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}
};

class AbandonedRequest : public testing::Test {
 protected:
  AbandonedRequest() {
    published_ = object_->publish(servant_.in());
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
  }

  static orb::Options oneConnection() {
    orb::Options options = orb_tests::quickOptions();
    options.maxConnections = 1;
    return options;
  }

  const std::unique_ptr<orb::Server> server_ =
      orb::startServer(oneConnection(), {"127.0.0.1", 0}, nullptr);
  const std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  const PortableServer::ServantBase_var servant_ = new OutOfMemory;
  CORBA::Object_var published_;
};

TEST_F(AbandonedRequest, EndsTheConnection) {
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(orb_tests::requestTo("Key", "getLength").bytes()));
  EXPECT_NE(std::string::npos, client.receive().find("NO_MEMORY"));
  EXPECT_TRUE(client.isClosedByPeer());
}

}  // namespace
