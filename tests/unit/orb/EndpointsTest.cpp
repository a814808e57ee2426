// Servers with several endpoints, Unix sockets and published addresses.

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "orb/destinations.h"
#include "orb/unixsocket.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/orb/EndpointFixture.h"
#include "tests/unit/orb/RawClient.h"

namespace {

using orb::Endpoint;
using orb::endpointFrom;
using orb::Transport;

TEST(EndpointTexts, HaveATransportAndAnAddress) {
  const auto text = [](const std::string& given) {
    const std::optional<Endpoint> endpoint = endpointFrom(given);
    return endpoint ? orb::format(*endpoint) : "none";
  };
  EXPECT_EQ("host:12", text("host:12"));
  EXPECT_EQ("[::1]:0", text("[::1]:0"));
  EXPECT_EQ("127.0.0.1:1", text("tcp:127.0.0.1:1"));
  EXPECT_EQ("[::1]:2810", text("tls:[::1]:2810"));
  EXPECT_EQ("unix:/run/a.sock", text("unix:/run/a.sock"));
  EXPECT_EQ(Transport::kTcp, endpointFrom("host:12")->transport);
  EXPECT_EQ(Transport::kTls, endpointFrom("host:12", Transport::kTls)->transport);
  EXPECT_EQ(Transport::kTcp, endpointFrom("tcp:host:12", Transport::kTls)->transport);
  EXPECT_EQ(Transport::kTls, endpointFrom("tls:host:12")->transport);
  EXPECT_EQ(Transport::kUnix, endpointFrom("unix:/a", Transport::kTls)->transport);
}

TEST(EndpointTexts, RejectPathsThatReferencesCannotContain) {
  for (const char* text : {"", "host", "host:", ":12", "host:65536", "::1:12", "unix:", "unix:/",
                           "unix:relative", "unix:/a:b", "unix:/a,b", "unix:/a#b", "tls:12"}) {
    EXPECT_FALSE(endpointFrom(text)) << text;
  }
}

class Endpoints : public orb_tests::EndpointFixture {
 protected:
  // Calls the object at an endpoint from this process, over the network.
  orb::Peer callAt(const Endpoint& endpoint) {
    const orb_tests::RawClient client(endpoint);
    EXPECT_TRUE(client.send(orb_tests::requestTo("Key", "getLength").bytes()));
    EXPECT_TRUE(client.answer());
    return peer();
  }
};

TEST_F(Endpoints, AreServedAtTheSameTimeAndNamedInThePeer) {
  start({{"127.0.0.1", 0}, {"127.0.0.1", 0}});
  ASSERT_EQ(2U, server_->endpoints().size());
  EXPECT_NE(server_->endpoints()[0].port, server_->endpoints()[1].port);
  EXPECT_EQ(0U, callAt(server_->endpoints()[0]).endpoint);
  EXPECT_EQ(1U, callAt(server_->endpoints()[1]).endpoint);
}

TEST_F(Endpoints, ShareTheLimitOfConnections) {
  orb::Options options = orb_tests::quickOptions();
  options.maxConnections = 1;
  start({{"127.0.0.1", 0}, {"127.0.0.1", 0}}, options);
  const orb_tests::RawClient first(server_->endpoints()[0]);
  ASSERT_TRUE(first.send(orb_tests::requestTo("Key", "getLength").bytes()));
  ASSERT_TRUE(first.answer());
  const orb_tests::RawClient second(server_->endpoints()[1]);
  EXPECT_TRUE(second.isClosedByPeer());
}

TEST_F(Endpoints, MayBeAbsentFromReferences) {
  Endpoint hidden{"127.0.0.1", 0};
  hidden.inReferences = false;
  Endpoint hiddenSocket{path(), 0, Transport::kUnix};
  hiddenSocket.inReferences = false;
  start({{"127.0.0.1", 0}, hidden, hiddenSocket});
  EXPECT_EQ(orb::format(server_->endpoint()), orb::addressOf(published_.in()));
  EXPECT_EQ(1U, orb::destinationsOf(published_.in()).size());
  EXPECT_EQ(1U, callAt(server_->endpoints()[1]).endpoint);
}

TEST_F(Endpoints, ThatAreAbsentFromReferencesKeepTheirAddress) {
  orb::Options options = orb_tests::quickOptions();
  options.publish = Endpoint{"192.0.2.7", 1234};
  Endpoint hidden{"127.0.0.1", 0};
  hidden.inReferences = false;
  start({{path(), 0, Transport::kUnix}, hidden}, options);
  EXPECT_EQ("127.0.0.1", server_->endpoints()[1].host);
}

TEST_F(Endpoints, ThatFailAreNamed) {
  const std::string file = path() + "/missing/a.sock";
  try {
    start({{"127.0.0.1", 0}, {file, 0, Transport::kUnix}});
    FAIL() << "the server listens";
  } catch (const orb::EndpointError& failure) {
    EXPECT_THAT(failure.what(), testing::StartsWith("cannot listen on unix:" + file + ": "));
  }
}

TEST_F(Endpoints, AppearInReferencesAtThePublishedAddress) {
  orb::Options options = orb_tests::quickOptions();
  options.publish = Endpoint{"192.0.2.7", 1234};
  start({{"127.0.0.1", 0}}, options);
  EXPECT_EQ("192.0.2.7:1234", orb::addressOf(published_.in()));
  EXPECT_EQ("192.0.2.7:1234", orb::format(server_->endpoint()));
}

TEST_F(Endpoints, KeepTheirPortWhenOnlyTheHostIsPublished) {
  orb::Options options = orb_tests::quickOptions();
  options.publish = Endpoint{"localhost", 0};
  start({{"127.0.0.1", 0}}, options);
  EXPECT_EQ("localhost", server_->endpoint().host);
  EXPECT_EQ("127.0.0.1", callAt(server_->endpoint()).address);
}

// Sockets of the test itself.
class UnixSockets : public testing::Test {
 protected:
  // The reason why the test cannot listen at the path; "" if it can.
  std::string reasonAgainst(const std::string& path) {
    try {
      ::close(orb::listenOnUnixSocket(path));
      return "";
    } catch (const orb::EndpointError& failure) {
      return failure.what();
    }
  }

  const support::TemporaryDirectory folder_;
  const std::string path_ = (folder_.path() / "a.sock").string();
};

TEST_F(UnixSockets, ReplaceTheSocketOfADeadProcess) {
  ::close(orb::listenOnUnixSocket(path_));
  ASSERT_TRUE(std::filesystem::is_socket(path_));
  EXPECT_EQ("", reasonAgainst(path_));
}

TEST_F(UnixSockets, RefuseTheSocketOfALiveProcess) {
  const int live = orb::listenOnUnixSocket(path_);
  EXPECT_EQ("another process listens there", reasonAgainst(path_));
  EXPECT_TRUE(std::filesystem::is_socket(path_));
  ::close(live);
}

TEST_F(UnixSockets, NeverReplaceAnotherFile) {
  std::ofstream(path_) << "kept";
  EXPECT_EQ("the file exists and is no socket", reasonAgainst(path_));
  std::string text;
  std::ifstream(path_) >> text;
  EXPECT_EQ("kept", text);
  const std::string link = (folder_.path() / "link").string();
  std::filesystem::create_symlink(folder_.path() / "nowhere", link);
  EXPECT_EQ("the file exists and is no socket", reasonAgainst(link));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(UnixSockets, RefuseAPathThatIsTooLong) {
  EXPECT_EQ("the path is longer than 107 characters", reasonAgainst("/" + std::string(107, 'x')));
}

TEST_F(UnixSockets, RemoveTheirOwnFileOnly) {
  const int first = orb::listenOnUnixSocket(path_);
  {
    const orb::SocketFile file(path_);
    std::filesystem::remove(path_);
    std::ofstream(path_) << "another";
  }
  EXPECT_TRUE(std::filesystem::exists(path_));
  std::filesystem::remove(path_);
  ::close(first);
  const int second = orb::listenOnUnixSocket(path_);
  { const orb::SocketFile file(path_); }
  EXPECT_FALSE(std::filesystem::exists(path_));
  ::close(second);
}

}  // namespace
