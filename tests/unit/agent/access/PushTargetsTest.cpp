#include "agent/access/PushTargets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "agent/process/OwnAddresses.h"

namespace agent {
namespace {

using orb::Destination;
using orb::Peer;
using testing::HasSubstr;
using Kind = Destination::Kind;

const Peer kRemote{Peer::Transport::kTcp, "10.1.2.3", "", 0};
const Peer kLoopback{Peer::Transport::kTcp, "127.0.0.1", "", 0};
const Peer kUnix{Peer::Transport::kUnix, "", "", 0};

std::string refusalOf(const std::vector<Destination>& destinations, const Peer& client,
                      std::vector<AddressRange> ranges = {}) {
  return PushTargets(std::move(ranges)).refusalOf(destinations, client);
}

std::string refusalOfHost(const std::string& host, const Peer& client,
                          std::vector<AddressRange> ranges = {}) {
  return refusalOf({{Kind::kIp, host}}, client, std::move(ranges));
}

TEST(PushTarget, OfARemoteClientIsItsOwnAddress) {
  EXPECT_EQ("", refusalOfHost("10.1.2.3", kRemote));
  EXPECT_EQ("", refusalOfHost("::ffff:10.1.2.3", kRemote));
  for (const char* const host : {"10.1.2.4", "127.0.0.1", "::1", "2001:db8::1", "0.0.0.0"}) {
    EXPECT_EQ("the consumer is at \"" + std::string(host) +
                  "\", which is neither the address of its client nor in a range of --push-to",
              refusalOfHost(host, kRemote));
  }
}

TEST(PushTarget, OfAClientOnTlsIsItsOwnAddress) {
  const Peer client{Peer::Transport::kTls, "10.1.2.3", "CN=noc", 0};
  EXPECT_EQ("", refusalOfHost("10.1.2.3", client));
  EXPECT_NE("", refusalOfHost("10.1.2.4", client));
}

TEST(PushTarget, OfAClientOnThisHostIsThisHost) {
  for (const Peer& client : {kLoopback, kUnix, Peer()}) {
    EXPECT_EQ("", refusalOfHost("127.0.0.1", client));
    EXPECT_EQ("", refusalOfHost("127.3.4.5", client));
    EXPECT_EQ("", refusalOfHost("::1", client));
    for (const std::string& own : ownAddresses()) {
      EXPECT_EQ("", refusalOfHost(own, client)) << own;
    }
    EXPECT_NE("", refusalOfHost("192.0.2.1", client));
  }
}

TEST(PushTarget, MayBeInAConfiguredRange) {
  const std::vector<AddressRange> ranges = {AddressRange::parse("10.2.0.0/16"),
                                            AddressRange::parse("2001:db8::/32")};
  EXPECT_EQ("", refusalOfHost("10.2.3.4", kRemote, ranges));
  EXPECT_EQ("", refusalOfHost("2001:db8::1", kRemote, ranges));
  EXPECT_EQ("", refusalOfHost("10.1.2.3", kRemote, ranges));
  EXPECT_NE("", refusalOfHost("10.3.0.0", kRemote, ranges));
}

TEST(PushTarget, IsEveryAddressOfTheReference) {
  const std::vector<Destination> two = {{Kind::kIp, "10.1.2.3"}, {Kind::kIp, "10.9.9.9"}};
  EXPECT_THAT(refusalOf(two, kRemote), HasSubstr("10.9.9.9"));
  EXPECT_EQ("", refusalOf(two, kRemote, {AddressRange::parse("10.9.9.9")}));
  EXPECT_EQ("the reference of the consumer has no address", refusalOf({}, kRemote));
}

TEST(PushTarget, MayBeAHostNameOfAllowedAddresses) {
  EXPECT_EQ("", refusalOfHost("localhost", kLoopback));
  EXPECT_THAT(refusalOfHost("localhost", kRemote), HasSubstr("\"localhost\""));
  EXPECT_EQ("the host \"a..b\" of the consumer is unknown", refusalOfHost("a..b", kRemote));
}

TEST(PushTarget, HasFewNamesAndAddresses) {
  const Destination name{Kind::kIp, "localhost"};
  EXPECT_EQ("", refusalOf({name, name, name}, kLoopback));
  EXPECT_EQ("the reference of the consumer has more than 2 host names",
            refusalOf({name, {Kind::kIp, "localhost."}, {Kind::kIp, "LOCALHOST"}}, kLoopback));
  EXPECT_EQ("", refusalOf(std::vector<Destination>(100, {Kind::kIp, "127.0.0.1"}), kLoopback));
  EXPECT_EQ("the reference of the consumer has more than 100 addresses",
            refusalOf(std::vector<Destination>(101, {Kind::kIp, "127.0.0.1"}), kLoopback));
}

TEST(PushTarget, AtAUnixSocketIsForClientsOnThisHost) {
  const std::vector<Destination> socket = {{Kind::kUnix, "giop:unix:/run/consumer"}};
  EXPECT_EQ("", refusalOf(socket, kUnix));
  EXPECT_EQ("", refusalOf(socket, kLoopback));
  EXPECT_THAT(refusalOf(socket, kRemote), HasSubstr("no address of its client"));
}

TEST(PushTarget, OfAnUnknownTransportIsRefused) {
  EXPECT_NE("", refusalOf({{Kind::kOther, "transport 9"}}, kLoopback));
}

}  // namespace
}  // namespace agent
