// Requests that the ORB rejects before it has read all bytes.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <new>
#include <string>
#include <thread>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using namespace std::chrono_literals;
using orb_tests::Message;
using orb_tests::RawClient;

// A servant that throws NO_MEMORY before the arguments are decoded.
class OutOfMemory final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  CORBA::Boolean _dispatch(omniCallHandle&) override {
    ++dispatched_;
    throw std::bad_alloc();
  }

  int dispatched() const { return dispatched_; }

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out) override {
    return false;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}

 private:
  std::atomic<int> dispatched_ = 0;
};

std::string requestInGiop12() {
  constexpr char kMinorVersion = 2;
  return Message(kMinorVersion, Message::Type::kRequest, false)
      .number(1)
      .octet(3)  // a reply is expected
      .raw(std::string(3, '\0'))
      .number(0)  // the target is an object key
      .octets("Key")
      .text("getLength")
      .number(0)  // service contexts
      .bytes();
}

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

  bool isConnectionReleased() {
    const auto end = std::chrono::steady_clock::now() + 10s;
    while (server_->openConnections() != 0 && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
    return server_->openConnections() == 0;
  }

  const std::unique_ptr<orb::Server> server_ =
      orb::startServer(oneConnection(), {"127.0.0.1", 0}, nullptr);
  const std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  OutOfMemory* const outOfMemory_ = new OutOfMemory;
  const PortableServer::ServantBase_var servant_ = outOfMemory_;
  CORBA::Object_var published_;
};

TEST_F(AbandonedRequest, EndsTheConnection) {
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(orb_tests::requestTo("Key", "getLength").bytes()));
  EXPECT_NE(std::string::npos, client.receive().find("NO_MEMORY"));
  EXPECT_TRUE(client.isClosedByPeer());
}

class AbandonedRequestOfVersion : public AbandonedRequest,
                                  public testing::WithParamInterface<int> {};

TEST_P(AbandonedRequestOfVersion, IsDispatchedOnce) {
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(GetParam() == 0 ? orb_tests::requestTo("Key", "getLength").bytes()
                                          : requestInGiop12()));
  EXPECT_NE(std::string::npos, client.receive().find("NO_MEMORY"));
  EXPECT_TRUE(isConnectionReleased());
  EXPECT_EQ(1, outOfMemory_->dispatched());
}

INSTANTIATE_TEST_SUITE_P(Giop, AbandonedRequestOfVersion, testing::Values(0, 2));

}  // namespace
