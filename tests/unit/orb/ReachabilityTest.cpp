#include "orb/reachability.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb_tests::SilentPeer;
using std::chrono::milliseconds;
using testing::StartsWith;

TEST(Reachability, NamesAnUnknownHost) {
  // Two dots: the resolver asks no name server.
  EXPECT_THAT(orb::whyNotConnected("no..host:2810", milliseconds(100)),
              StartsWith("the host 'no..host' is unknown: "));
}

TEST(Reachability, NamesAPortThatRefusesConnections) {
  std::string address;
  {
    const SilentPeer closed;
    address = "127.0.0.1:" + std::to_string(closed.port());
  }
  EXPECT_EQ(orb::whyNotConnected(address, milliseconds(100)), "connection refused by " + address);
}

TEST(Reachability, NamesTheErrorOfTheSystem) {
  EXPECT_THAT(orb::whyNotConnected("255.255.255.255:1", milliseconds(100)),
              StartsWith("no connection to 255.255.255.255:1: "));
}

TEST(Reachability, FindsNoReasonWhenTheServerAccepts) {
  const SilentPeer peer;
  EXPECT_EQ(orb::whyNotConnected("127.0.0.1:" + std::to_string(peer.port()), milliseconds(0)), "");
}

}  // namespace
