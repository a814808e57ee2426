#include <gmock/gmock.h>

#include <future>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::Answering;
using orb_tests::lengthOf;
using PortableServer::ServantBase_var;
using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeIterator_I_var;

class WellKnownObjects : public testing::Test {
 protected:
  // A reference made from a text, as a client makes the reference.
  CORBA::Object_var at(const std::string& key) {
    const std::string where = orb::format(server_->endpoint());
    return server_->get()->string_to_object(("corbaloc:iiop:1.2@" + where + "/" + key).c_str());
  }

  std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
};

TEST_F(WellKnownObjects, AreAddressableByTheirKeys) {
  const auto object = server_->wellKnownObject("Key");
  const ServantBase_var servant = new Answering(7);
  const CORBA::Object_var published = object->publish(servant.in());
  EXPECT_EQ(7U, lengthOf(at("Key")));
  EXPECT_EQ(7U, lengthOf(published));
}

TEST_F(WellKnownObjects, HaveTheTypesOfTheirServants) {
  const auto object = server_->wellKnownObject("Key");
  const ServantBase_var servant = new Answering(7);
  const CORBA::Object_var published = object->publish(servant.in());
  const CORBA::String_var text = server_->get()->object_to_string(published);
  const CORBA::Object_var copy = server_->get()->string_to_object(text);
  EXPECT_TRUE(copy->_is_a("IDL:TopoManagementManager/NodeIterator_I:1.0"));
  EXPECT_FALSE(at("Key")->_is_a("IDL:TopoManagementManager/TopoMgr_I:1.0"));
  const NodeIterator_I_var narrowed = NodeIterator_I::_narrow(at("Key"));
  EXPECT_FALSE(CORBA::is_nil(narrowed));
  EXPECT_FALSE(at("Key")->_non_existent());
}

TEST_F(WellKnownObjects, RaiseTransientWithoutAServant) {
  const auto object = server_->wellKnownObject("Key");
  EXPECT_THROW(lengthOf(at("Key")), CORBA::TRANSIENT);
}

TEST_F(WellKnownObjects, ServeTheNextServantAfterRetire) {
  const auto object = server_->wellKnownObject("Key");
  const ServantBase_var first = new Answering(1);
  const CORBA::Object_var published = object->publish(first.in());
  object->retire();
  EXPECT_THROW(lengthOf(published), CORBA::TRANSIENT);
  EXPECT_THROW(at("Key")->_is_a("IDL:x:1.0"), CORBA::TRANSIENT);
  const ServantBase_var second = new Answering(2);
  const CORBA::Object_var again = object->publish(second.in());
  EXPECT_EQ(2U, lengthOf(published));
  EXPECT_EQ(2U, lengthOf(again));
}

TEST_F(WellKnownObjects, IgnoreASecondRetire) {
  const auto object = server_->wellKnownObject("Key");
  const ServantBase_var servant = new Answering(1);
  const CORBA::Object_var published = object->publish(servant.in());
  object->retire();
  object->retire();
  EXPECT_THROW(lengthOf(published), CORBA::TRANSIENT);
}

TEST_F(WellKnownObjects, WaitForARunningRequestAndServeOtherObjects) {
  std::promise<void> entered;
  std::promise<void> leave;
  const auto slow = server_->wellKnownObject("Slow");
  const ServantBase_var slowServant = new Answering([&]() -> CORBA::ULong {
    entered.set_value();
    leave.get_future().wait();
    return 3;
  });
  const CORBA::Object_var slowObject = slow->publish(slowServant.in());
  const auto other = server_->wellKnownObject("Other");
  const ServantBase_var otherServant = new Answering(4);
  const CORBA::Object_var otherObject = other->publish(otherServant.in());

  auto answer = std::async(std::launch::async, [&] { return lengthOf(slowObject); });
  entered.get_future().wait();
  auto retired = std::async(std::launch::async, [&] { slow->retire(); });
  // New requests are rejected while the running request has not ended.
  const auto refuses = [&] {
    try {
      at("Slow")->_non_existent();
      return false;
    } catch (const CORBA::TRANSIENT&) {
      return true;
    }
  };
  while (!refuses()) {
  }
  EXPECT_EQ(4U, lengthOf(otherObject));
  EXPECT_EQ(std::future_status::timeout, retired.wait_for(std::chrono::seconds(0)));
  leave.set_value();
  EXPECT_EQ(3U, answer.get());
  retired.get();
}

// The console reloads the module in this way.
TEST_F(WellKnownObjects, RetireWithinARequestToAnotherObject) {
  const auto manager = server_->wellKnownObject("Manager");
  const ServantBase_var servant = new Answering(1);
  const CORBA::Object_var managerObject = manager->publish(servant.in());
  const auto console = server_->wellKnownObject("Console");
  const ServantBase_var consoleServant = new Answering([&]() -> CORBA::ULong {
    manager->retire();
    return 9;
  });
  const CORBA::Object_var consoleObject = console->publish(consoleServant.in());
  EXPECT_EQ(9U, lengthOf(consoleObject));
  EXPECT_THROW(lengthOf(managerObject), CORBA::TRANSIENT);
}

class Counted final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  explicit Counted(bool& gone) : gone_(gone) {}
  ~Counted() override { gone_ = true; }
  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out) override {
    return false;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}

 private:
  bool& gone_;
};

TEST_F(WellKnownObjects, ReleaseTheServantOnRetire) {
  bool gone = false;
  const auto object = server_->wellKnownObject("Key");
  ServantBase_var servant = new Counted(gone);
  const CORBA::Object_var published = object->publish(servant.in());
  servant = nullptr;
  EXPECT_FALSE(gone);
  object->retire();
  EXPECT_TRUE(gone);
}

TEST_F(WellKnownObjects, DoNotExistAfterTheirDestruction) {
  {
    const auto object = server_->wellKnownObject("Key");
    const ServantBase_var servant = new Answering(1);
    const CORBA::Object_var published = object->publish(servant.in());
  }
  EXPECT_THROW(lengthOf(at("Key")), CORBA::OBJECT_NOT_EXIST);
  const auto again = server_->wellKnownObject("Key");
  const ServantBase_var servant = new Answering(2);
  const CORBA::Object_var published = again->publish(servant.in());
  EXPECT_EQ(2U, lengthOf(at("Key")));
}

// Keys that begin as the keys of POAs do.
TEST_F(WellKnownObjects, DoNotExistAtMalformedKeys) {
  for (const std::string& key :
       {std::string(1, '\0'), std::string("\xff\0", 2), std::string("\xff"), std::string("\xfe"),
        std::string("\xfe\0\0", 3)}) {
    const orb_tests::RawClient client(server_->endpoint());
    ASSERT_TRUE(client.send(orb_tests::requestTo(key, "getLength").bytes()));
    EXPECT_THAT(client.receive(), testing::HasSubstr("IDL:omg.org/CORBA/OBJECT_NOT_EXIST:1.0"));
  }
}

}  // namespace
