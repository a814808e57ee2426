// Settings in the environment.

#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::RawClient;

TEST(Environment, AddsNoEndpoint) {
  // A port that was free when it was chosen.
  const std::uint16_t port =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr)->endpoint().port;
  setenv("TAO_ORBENDPOINT", ("iiop://127.0.0.1:" + std::to_string(port)).c_str(), 1);
  const auto server = orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  ASSERT_NE(port, server->endpoint().port);
  const RawClient client({"127.0.0.1", port});
  EXPECT_FALSE(client.send("anything"));
}

}  // namespace
