// The check of new connections.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orb/checkedcalls.h"
#include "tests/unit/orb/Answers.h"
#include "tests/unit/orb/RawPeer.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb::CheckedCalls;
using orb::Destination;
using orb_tests::booleanReply;
using orb_tests::RawPeer;

class CheckedConnections : public testing::Test {
 protected:
  const std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
};

TEST_F(CheckedConnections, RefuseAForwardedLocateRequest) {
  RawPeer target([](const std::string& request) { return booleanReply(request, true); },
                 "127.0.0.2");
  RawPeer forwarding([&](const std::string& request) {
    return orb_tests::isLocateRequest(request)
               ? orb_tests::forwardTo(server_->get(), target.corbaloc(), request)
               : booleanReply(request, true);
  });
  const CORBA::Object_var object = server_->get()->string_to_object(forwarding.corbaloc().c_str());
  bool refused = false;
  const orb::DestinationCheck check = [&refused](const std::vector<Destination>& destinations) {
    if (destinations.at(0).host == "127.0.0.2") {
      refused = true;
      throw CORBA::NO_PERMISSION(7, CORBA::COMPLETED_NO);
    }
  };
  const CheckedCalls checked(object.in(), check);
  EXPECT_THROW(orb_tests::lengthOf(object.in()), CORBA::NO_PERMISSION);
  EXPECT_TRUE(refused);
  EXPECT_EQ(0, target.requests());
}

}  // namespace
