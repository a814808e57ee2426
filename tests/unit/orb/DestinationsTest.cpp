#include "orb/destinations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orb/orb.h"
#include "orb/traits.h"

namespace {

using testing::Contains;
using testing::IsEmpty;

std::vector<std::string> hostsOf(const std::string& reference) {
  const auto client = orb::startClient({});
  const CORBA::Object_var object = client->get()->string_to_object(reference.c_str());
  std::vector<std::string> hosts;
  for (const orb::Destination& destination : orb::destinationsOf(object.in())) {
    EXPECT_EQ(orb::Destination::Kind::kIp, destination.kind);
    hosts.push_back(destination.host);
  }
  return hosts;
}

using Hosts = std::vector<std::string>;

TEST(Destinations, AreTheHostsOfAReference) {
  EXPECT_EQ(Hosts{"192.0.2.1"}, hostsOf("corbaloc:iiop:1.2@192.0.2.1:9/Key"));
  EXPECT_EQ(Hosts{"consumer.example"}, hostsOf("corbaloc:iiop:1.2@consumer.example:9/Key"));
}

TEST(Destinations, MayBeIpv6Addresses) {
  if (!orb::kHasIpv6) {
    GTEST_SKIP() << "the ORB has no IPv6";
  }
  EXPECT_EQ(Hosts{"2001:db8::1"}, hostsOf("corbaloc:iiop:1.2@[2001:db8::1]:9/Key"));
}

TEST(Destinations, AreAllAddressesOfAReference) {
  const Hosts expected = {"192.0.2.1", "192.0.2.2", "192.0.2.3"};
  EXPECT_EQ(expected, hostsOf("corbaloc:iiop:1.2@192.0.2.1:9,iiop:1.2@192.0.2.2:9,"
                              "iiop:1.2@192.0.2.3:10/Key"));
}

TEST(Destinations, OfAServerAreItsEndpoint) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const CORBA::Object_var object =
      server->rootPoa()->create_reference("IDL:omg.org/CORBA/Object:1.0");
  const auto destinations = orb::destinationsOf(object.in());
  ASSERT_EQ(1U, destinations.size());
  EXPECT_EQ("127.0.0.1", destinations[0].host);
}

TEST(NumericAddresses, OfAHostAreLookedUp) {
  EXPECT_THAT(orb::numericAddresses("localhost"), Contains("127.0.0.1"));
  EXPECT_EQ(Hosts{"192.0.2.1"}, orb::numericAddresses("192.0.2.1"));
  EXPECT_EQ(Hosts{"::1"}, orb::numericAddresses("::1"));
  EXPECT_THAT(orb::numericAddresses("a..b"), IsEmpty());
}

}  // namespace
