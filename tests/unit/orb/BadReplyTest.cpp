// Failures of calls with incomplete or missing replies.

#include <gtest/gtest.h>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/RawPeer.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::Message;
using orb_tests::RawPeer;

// Calls a RawPeer and returns the classification of the failure.
class BadReplies : public testing::Test {
 protected:
  template <typename Check>
  void expectOfCall(const std::string& answer, Check check) {
    const RawPeer peer(answer);
    const CORBA::Object_var object = client_->get()->string_to_object(peer.corbaloc().c_str());
    try {
      object->_non_existent();
      FAIL() << "the call succeeded";
    } catch (const CORBA::SystemException& failure) {
      check(failure);
    }
  }

  std::unique_ptr<orb::Orb> client_ = orb::startClient(orb_tests::quickOptions());
};

TEST_F(BadReplies, ReportsAConnectionThatEndsInTheReply) {
  Message reply(2, Message::Type::kReply, false);
  reply.number(2).number(0).raw(std::string(100000, '\0'));
  const std::string whole = reply.bytes();
  expectOfCall(whole.substr(0, 50000), [](const CORBA::SystemException& failure) {
    EXPECT_TRUE(orb::isBrokenOff(failure)) << orb::describe(failure);
    EXPECT_FALSE(orb::isUnreachable(failure)) << orb::describe(failure);
    EXPECT_FALSE(orb::isMessageTooLarge(failure)) << orb::describe(failure);
  });
}

TEST_F(BadReplies, ReportsAConnectionThatEndsBeforeTheReply) {
  expectOfCall("", [](const CORBA::SystemException& failure) {
    EXPECT_FALSE(orb::isBrokenOff(failure)) << orb::describe(failure);
    EXPECT_TRUE(orb::isUnreachable(failure)) << orb::describe(failure);
    EXPECT_TRUE(orb::isConnectionClosed(failure)) << orb::describe(failure);
  });
}

}  // namespace
