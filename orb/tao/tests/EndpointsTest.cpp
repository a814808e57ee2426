// Endpoints in the notation of this ORB.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "orb/destinations.h"
#include "tests/support/Certificates.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb::Endpoint;
using orb::Transport;

TEST(TaoEndpoints, RefuseAPathThatTheOrbCannotParse) {
  const support::TemporaryDirectory folder;
  for (const char* const name : {"a;b", "a|b"}) {
    const Endpoint socket{(folder.path() / name).string(), 0, Transport::kUnix};
    try {
      orb::startServer({}, socket, nullptr);
      FAIL() << "the server listens";
    } catch (const orb::EndpointError& failure) {
      EXPECT_EQ("cannot listen on " + orb::format(socket) +
                    ": the path contains one of the characters ;|",
                std::string(failure.what()));
    }
  }
}

TEST(TaoEndpoints, WithAndWithoutTlsAreInTheSameReference) {
  if (!orb::hasTls()) {
    GTEST_SKIP() << "the ORB has no TLS";
  }
  const support::TemporaryDirectory directory;
  support::Authority authority(directory, "ca");
  const support::Certificate certificate = authority.issue("server");
  orb::Options options = orb_tests::quickOptions();
  options.tls.certificate = certificate.certificate;
  options.tls.key = certificate.key;
  options.tls.authorities = authority.file();
  const auto server =
      orb::startServer(options, {{"127.0.0.1", 0, Transport::kTls}, {"127.0.0.1", 0}}, nullptr);
  const CORBA::Object_var own = server->rootPoa()->create_reference("IDL:omg.org/CORBA/Object:1.0");
  const CORBA::String_var text = server->get()->object_to_string(own.in());
  const CORBA::Object_var received = server->get()->string_to_object(text.in());
  EXPECT_EQ(2U, orb::destinationsOf(received.in()).size());
  EXPECT_EQ(orb::format(server->endpoint()), orb::addressOf(received.in()));
}

}  // namespace
