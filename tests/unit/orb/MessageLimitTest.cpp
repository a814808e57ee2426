// The size limit of messages, for raw clients and for ORB clients.

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/ResidentMemory.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"
#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb_tests::Answering;
using orb_tests::lengthOf;
using orb_tests::Message;
using orb_tests::RawClient;

constexpr std::size_t kPiece =
    8000;  // a multiple of 8, as GIOP demands of all fragments but the last

// Returns the first part of a request with a string argument of `textBytes` bytes.
std::string beginOfRequest(std::uint32_t textBytes) {
  Message message(2, Message::Type::kRequest, true);
  message.number(1).octet(3).octet(0).octet(0).octet(0);  // id, reply expected
  message.number(0).octets("Key").text("_is_a");
  message.number(0).align(8).number(textBytes);  // service contexts, argument
  return message.align(8).bytes();
}

std::string fragment(bool last) {
  return Message(2, Message::Type::kFragment, !last)
      .number(1)
      .raw(std::string(kPiece, 'x'))
      .bytes();
}

// True under the address sanitizer, which keeps freed memory and reports the few bytes that ORBs
// leak when a request is refused or asks for a type.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressesChecked = true;
#else
constexpr bool kAddressesChecked = false;
#endif

constexpr long kMostKib = 20000;

long usedKib() {
  return support::residentKib(getpid());
}

class MessageLimit : public testing::Test {
 protected:
  MessageLimit() {
    published_ = object_->publish(servant_.in());
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
  }

  static orb::Options small() {
    orb::Options options;
    options.maxMessageBytes = 65536;
    return options;
  }

  bool serves() { return lengthOf(published_.in()) == 7; }

  std::unique_ptr<orb::Server> server_ = orb::startServer(small(), {"127.0.0.1", 0}, nullptr);
  std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  PortableServer::ServantBase_var servant_ = new Answering(7);
  CORBA::Object_var published_;
};

TEST_F(MessageLimit, BoundsAnEndlessRowOfFragments) {
  if (kAddressesChecked) {
    GTEST_SKIP() << "measures the memory of the ORB";
  }
  const RawClient client(server_->endpoint());
  const long before = usedKib();
  bool taken = client.send(beginOfRequest(2000000000));
  for (int i = 0; taken && i < 25000; ++i) {  // 200 MB
    taken = client.send(fragment(false));
  }
  EXPECT_TRUE(serves());
  EXPECT_LT(usedKib() - before, kMostKib);
}

TEST_F(MessageLimit, BoundsAnEndlessRowOfTinyFragments) {
  if (kAddressesChecked) {
    GTEST_SKIP() << "measures the memory of the ORB";
  }
  const RawClient client(server_->endpoint());
  const long before = usedKib();
  std::string many;
  for (int i = 0; i < 1000; ++i) {
    many += Message(2, Message::Type::kFragment, true).number(1).raw("12345678").bytes();
  }
  bool taken = client.send(beginOfRequest(2000000000));
  for (int i = 0; taken && i < 200; ++i) {
    taken = client.send(many);
  }
  EXPECT_TRUE(serves());
  EXPECT_LT(usedKib() - before, kMostKib);
}

TEST_F(MessageLimit, AcceptsFragmentsUpToTheLimit) {
  if (kAddressesChecked) {
    GTEST_SKIP() << "measures the memory of the ORB";
  }
  const RawClient client(server_->endpoint());
  for (int request = 0; request < 20; ++request) {  // their sum is over the limit
    ASSERT_TRUE(client.send(beginOfRequest(5 * kPiece - 8)));
    for (int i = 1; i <= 5; ++i) {
      ASSERT_TRUE(client.send(fragment(i == 5)));
    }
    ASSERT_TRUE(client.answer()) << request;
  }
}

TEST_F(MessageLimit, CountsOnlyAllocatedMemory) {
  const std::string elsewhere(30000, 'x');
  for (int i = 0; i < 20; ++i) {
    EXPECT_FALSE(published_->_is_a(elsewhere.c_str()));
  }
}

TEST_F(MessageLimit, RefusesFragmentsWhoseSumIsOversized) {
  if (kAddressesChecked) {
    GTEST_SKIP() << "measures the memory of the ORB";
  }
  for (const int pieces : {9, 12, 17, 20, 33, 40, 100}) {
    const RawClient client(server_->endpoint());
    bool taken = client.send(beginOfRequest(static_cast<std::uint32_t>(pieces * kPiece)));
    for (int i = 1; taken && i <= pieces; ++i) {
      taken = client.send(fragment(i == pieces));
    }
    EXPECT_TRUE(!taken || client.isAnswered()) << pieces;
    EXPECT_TRUE(serves()) << pieces;
  }
}

TEST_F(MessageLimit, BoundsAnImpossibleDeclaredSize) {
  if (kAddressesChecked) {
    GTEST_SKIP() << "measures the memory of the ORB";
  }
  const RawClient client(server_->endpoint());
  const long before = usedKib();
  std::string bytes = beginOfRequest(10);
  for (std::size_t i = 8; i < 12; ++i) {
    bytes[i] = '\x7f';  // the declared size
  }
  client.send(bytes + std::string(1000000, 'x'));
  EXPECT_TRUE(serves());
  EXPECT_LT(usedKib() - before, kMostKib);
}

TEST_F(MessageLimit, RejectsAnOversizedArgumentBeforeSending) {
  const orb_tests::SilentPeer peer;
  const CORBA::Object_var object = server_->get()->string_to_object(peer.corbaloc().c_str());
  for (const std::size_t bytes : {std::size_t{200000}, std::size_t{3000000}}) {
    try {
      object->_is_a(std::string(bytes, 'x').c_str());
      ADD_FAILURE() << bytes << " bytes were sent";
    } catch (const CORBA::SystemException& failure) {
      EXPECT_TRUE(orb::isMessageTooLarge(failure)) << orb::describe(failure);
    }
  }
  EXPECT_TRUE(serves());
}

}  // namespace
