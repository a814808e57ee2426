// Detection of unexpected listening sockets.

#include "orb/listening.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <memory>
#include <utility>

#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb::EndpointError;
using orb::ListeningCheck;
using orb_tests::SilentPeer;

// Set: the next call of listen() in this process opens another listening socket first.
bool opensUnwanted = false;
std::unique_ptr<SilentPeer> unwanted;

}  // namespace

// Replaces the function of the C library, also for the library of the ORB.
extern "C" __attribute__((visibility("default"))) int listen(int socket, int backlog) noexcept {
  static const auto original = reinterpret_cast<int (*)(int, int)>(dlsym(RTLD_NEXT, "listen"));
  if (std::exchange(opensUnwanted, false)) {
    unwanted = std::make_unique<SilentPeer>();
  }
  return original(socket, backlog);
}

namespace {

TEST(ListeningCheck, AcceptsTheSocketOfTheEndpoint) {
  const SilentPeer earlier;
  const ListeningCheck check;
  const SilentPeer endpoint;
  check.requireOnly({{"127.0.0.1", endpoint.port()}});
}

TEST(ListeningCheck, RejectsASecondSocket) {
  const ListeningCheck check;
  const SilentPeer endpoint;
  const SilentPeer second;
  const std::string address = "127.0.0.1:" + std::to_string(second.port());
  try {
    check.requireOnly({{"127.0.0.1", endpoint.port()}});
    FAIL() << "the second socket is accepted";
  } catch (const EndpointError& failure) {
    EXPECT_THAT(failure.what(), testing::HasSubstr("listens on " + address + " besides"));
  }
}

TEST(ListeningCheck, RejectsASocketAtAnotherPort) {
  const ListeningCheck check;
  const SilentPeer other;
  const auto port = static_cast<std::uint16_t>(other.port() - 1);
  EXPECT_THROW(check.requireOnly({{"127.0.0.1", port}}), EndpointError);
}

TEST(ListeningCheck, RunsAtTheStartOfAServer) {
  opensUnwanted = true;
  EXPECT_THROW(orb::startServer({}, {"127.0.0.1", 0}, nullptr), EndpointError);
  EXPECT_NE(nullptr, unwanted);
  unwanted.reset();
}

}  // namespace
