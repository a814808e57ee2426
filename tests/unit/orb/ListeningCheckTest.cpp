// Detection of unexpected listening sockets.

#include <gmock/gmock.h>

#include "orb/listening.h"
#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb::EndpointError;
using orb::ListeningCheck;
using orb_tests::SilentPeer;

TEST(ListeningCheck, AcceptsTheSocketOfTheEndpoint) {
  const SilentPeer earlier;
  const ListeningCheck check;
  const SilentPeer endpoint;
  check.requireOnly({"127.0.0.1", endpoint.port()});
}

TEST(ListeningCheck, RejectsASecondSocket) {
  const ListeningCheck check;
  const SilentPeer endpoint;
  const SilentPeer second;
  const std::string address = "127.0.0.1:" + std::to_string(second.port());
  try {
    check.requireOnly({"127.0.0.1", endpoint.port()});
    FAIL() << "the second socket is accepted";
  } catch (const EndpointError& failure) {
    EXPECT_THAT(failure.what(), testing::HasSubstr("listens on " + address + " besides"));
  }
}

TEST(ListeningCheck, RejectsASocketAtAnotherPort) {
  const ListeningCheck check;
  const SilentPeer other;
  const auto port = static_cast<std::uint16_t>(other.port() - 1);
  EXPECT_THROW(check.requireOnly({"127.0.0.1", port}), EndpointError);
}

}  // namespace
