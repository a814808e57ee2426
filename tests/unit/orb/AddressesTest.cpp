#include "orb/addresses.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

TEST(Addresses, ParsesAFormattedEndpoint) {
  for (const std::string address : {"127.0.0.1:2810", "host.example.net:0", "[::1]:65535"}) {
    EXPECT_EQ(address, orb::format(orb::parseEndpoint(address)));
  }
  EXPECT_EQ("::1", orb::parseEndpoint("[::1]:7").host);
}

TEST(Addresses, ReturnsNoHostForALocalSocket) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  EXPECT_EQ("", orb::localEndpoint(socket).host);
  EXPECT_EQ("", orb::peerEndpoint(socket).host);
  ::close(socket);
}

}  // namespace
