#include <gmock/gmock.h>
#include <malloc.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/unit/orb/Servants.h"
#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb_tests::Answering;
using orb_tests::lengthOf;
using orb_tests::SilentPeer;

class Reference : public testing::Test {
 protected:
  CORBA::Object_var parse(const std::string& text) {
    return server_->get()->string_to_object(text.c_str());
  }

  std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
};

TEST_F(Reference, HasTheAddressOfItsText) {
  EXPECT_EQ("127.0.0.1:4711", orb::addressOf(parse("corbaloc:iiop:1.2@127.0.0.1:4711/Key")));
  EXPECT_EQ("", orb::addressOf(CORBA::Object::_nil()));
}

TEST_F(Reference, GivesTheObjectAtAnotherKey) {
  const auto first = server_->wellKnownObject("First");
  const auto second = server_->wellKnownObject("Second");
  const PortableServer::ServantBase_var one = new Answering(1);
  const PortableServer::ServantBase_var two = new Answering(2);
  const CORBA::Object_var firstObject = first->publish(one.in());
  const CORBA::Object_var secondObject = second->publish(two.in());
  const CORBA::Object_var beside = orb::objectBeside(server_->get(), firstObject, "Second");
  EXPECT_EQ(2U, lengthOf(beside));
}

TEST_F(Reference, ThrowsForAnotherKeyOfNil) {
  EXPECT_THROW(orb::objectBeside(server_->get(), CORBA::Object::_nil(), "Key"), CORBA::BAD_PARAM);
}

TEST_F(Reference, EndsACallAfterItsTimeout) {
  const SilentPeer peer;
  const CORBA::Object_var object = parse(peer.corbaloc());
  orb::setCallTimeout(object, std::chrono::milliseconds(50));
  try {
    object->_non_existent();
    FAIL() << "the peer has replied";
  } catch (const CORBA::SystemException& failure) {
    EXPECT_TRUE(orb::isTimeout(failure)) << orb::describe(failure);
    EXPECT_FALSE(orb::isConnectionClosed(failure));
    EXPECT_TRUE(orb::isUnreachable(failure));
  }
}

TEST_F(Reference, ReportsARefusedConnectionAsUnreachable) {
  std::string corbaloc;
  {
    const SilentPeer peer;
    corbaloc = peer.corbaloc();
  }
  try {
    parse(corbaloc)->_non_existent();
    FAIL() << "the call succeeded";
  } catch (const CORBA::SystemException& failure) {
    EXPECT_FALSE(orb::isTimeout(failure)) << orb::describe(failure);
    EXPECT_TRUE(orb::isUnreachable(failure)) << orb::describe(failure);
  }
}

// Returns the allocated bytes of the process; 0 under sanitizers, which detect leaks themselves.
std::size_t allocatedBytes() {
  return mallinfo2().uordblks;
}

TEST_F(Reference, LeaksNoMemoryInAddressAndKey) {
  constexpr int kReferences = 2000;
  // A single object, because a POA may keep each reference that it creates.
  const CORBA::Object_var object =
      server_->rootPoa()->create_reference("IDL:omg.org/CORBA/Object:1.0");
  const CORBA::String_var ior = server_->get()->object_to_string(object.in());
  const auto ask = [this, &ior] {
    const CORBA::Object_var reference = server_->get()->string_to_object(ior.in());
    EXPECT_NE("", orb::addressOf(reference.in()));
    EXPECT_NE("", orb::objectKeyOf(reference.in()));
  };
  for (int i = 0; i < kReferences; ++i) {
    ask();
  }
  const std::size_t before = allocatedBytes();
  for (int i = 0; i < kReferences; ++i) {
    ask();
  }
  EXPECT_LT(allocatedBytes(), before + kReferences * 16);
}

}  // namespace
