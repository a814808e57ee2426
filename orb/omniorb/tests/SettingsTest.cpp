// The sources of the settings of the ORB.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "orb/orb.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

// An endpoint without a listening address: a start with this setting fails.
constexpr const char* kUnwanted = "giop:tcp:192.0.2.1:4711";

TEST(Settings, OfTheEnvironmentAreIgnored) {
  setenv("ORBendPoint", kUnwanted, 1);
  setenv("ORBgiopMaxMsgSize", "no number", 1);
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  EXPECT_EQ("127.0.0.1", server->endpoint().host);
}

TEST(Settings, OfAConfigurationFileAreIgnored) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("orb.cfg");
  std::ofstream(file) << "endPoint = " << kUnwanted << "\n";
  setenv("OMNIORB_CONFIG", file.c_str(), 1);
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  EXPECT_EQ("127.0.0.1", server->endpoint().host);
}

TEST(Settings, OfTheEnvironmentAreIgnoredByClients) {
  setenv("ORBgiopMaxMsgSize", "no number", 1);
  EXPECT_NO_THROW(orb::startClient({}));
}

}  // namespace
