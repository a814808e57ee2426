#include "orb/reachability.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

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

TEST(Reachability, EndsAtTheTimeout) {
  const SilentPeer peer(0);
  const std::string address = "127.0.0.1:" + std::to_string(peer.port());
  EXPECT_EQ(orb::whyNotConnected(address, milliseconds(1000)), "");
  const std::string reason = "no connection to " + address + ": Connection timed out";
  EXPECT_EQ(orb::whyNotConnected(address, milliseconds(20)), reason);
  // The timeout 0 stands for one second.
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(orb::whyNotConnected(address, milliseconds(0)), reason);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(1000));
}

}  // namespace
