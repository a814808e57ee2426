#include "orb/checkedcalls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orb/orb.h"
#include "tests/unit/orb/Answers.h"
#include "tests/unit/orb/RawPeer.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb::CheckedCalls;
using orb::Destination;
using orb_tests::booleanReply;
using orb_tests::RawPeer;

// Throws for the address of the peer to which calls are forwarded.
void refuseForwards(const std::vector<Destination>& destinations) {
  if (destinations.at(0).host == "127.0.0.2") {
    throw CORBA::NO_PERMISSION(7, CORBA::COMPLETED_NO);
  }
}

// Whether the object does not exist. The peers close a connection after each reply; an ORB may
// notice the end only in the next call.
bool isMissing(CORBA::Object_ptr object) {
  try {
    return object->_non_existent();
  } catch (const CORBA::SystemException& failure) {
    if (!orb::isConnectionClosed(failure)) {
      throw;
    }
    return object->_non_existent();
  }
}

class CheckedCallsTest : public testing::Test {
 protected:
  CORBA::Object_var object() {
    return server_->get()->string_to_object(forwarding_.corbaloc().c_str());
  }

  const std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  RawPeer target_{[](const std::string& request) { return booleanReply(request, false); },
                  "127.0.0.2"};
  RawPeer forwarding_{[this](const std::string& request) {
    return orb_tests::forwardTo(server_->get(), target_.corbaloc(), request);
  }};
};

TEST_F(CheckedCallsTest, AreForwardedToAnAdmittedAddress) {
  const CORBA::Object_var object = this->object();
  std::vector<std::string> hosts;
  const orb::DestinationCheck check = [&hosts](const std::vector<Destination>& destinations) {
    hosts.push_back(destinations.at(0).host);
  };
  const CheckedCalls checked(object.in(), check);
  EXPECT_FALSE(object->_non_existent());
  EXPECT_EQ(1, target_.requests());
  EXPECT_THAT(hosts, testing::Contains("127.0.0.2"));
}

TEST_F(CheckedCallsTest, AreNotForwardedToAnotherAddress) {
  const CORBA::Object_var object = this->object();
  const orb::DestinationCheck check = refuseForwards;
  const CheckedCalls checked(object.in(), check);
  for (int call = 0; call < 2; ++call) {
    try {
      isMissing(object.in());
      ADD_FAILURE() << "the call succeeded";
    } catch (const CORBA::NO_PERMISSION& refused) {
      EXPECT_EQ(7U, refused.minor());
    }
  }
  EXPECT_GT(forwarding_.connections(), 0);
  EXPECT_EQ(0, target_.connections());
}

TEST_F(CheckedCallsTest, AreCheckedUntilTheEndOfTheScope) {
  const CORBA::Object_var object = this->object();
  const orb::DestinationCheck check = refuseForwards;
  {
    const CheckedCalls checked(object.in(), check);
    EXPECT_THROW(object->_non_existent(), CORBA::NO_PERMISSION);
  }
  EXPECT_FALSE(isMissing(object.in()));
  EXPECT_EQ(1, target_.requests());
}

// The ORB looks the host name up again, so a check of an earlier look-up is not enough.
TEST_F(CheckedCallsTest, AreCheckedForTheAddressOfAHostName) {
  RawPeer peer([](const std::string& request) { return booleanReply(request, false); });
  const CORBA::Object_var object =
      server_->get()->string_to_object(peer.corbaloc("localhost").c_str());
  std::vector<std::string> hosts;
  const orb::DestinationCheck check = [&hosts](const std::vector<Destination>& destinations) {
    EXPECT_EQ(Destination::Kind::kIp, destinations.at(0).kind);
    hosts.push_back(destinations.at(0).host);
    throw CORBA::NO_PERMISSION(7, CORBA::COMPLETED_NO);
  };
  const CheckedCalls checked(object.in(), check);
  EXPECT_THROW(object->_non_existent(), CORBA::NO_PERMISSION);
  EXPECT_THAT(hosts, testing::ElementsAre("127.0.0.1"));
  EXPECT_EQ(0, peer.requests());
}

}  // namespace
