// The agent and topoctl over TLS.

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "orb/orb.h"
#include "tests/integration/Programs.h"
#include "tests/support/Certificates.h"

namespace {

using integration::ownPrograms;
using integration::RunningAgent;
using support::Authority;
using support::Certificate;
using support::Ended;
using testing::HasSubstr;
using testing::StartsWith;

class TlsPrograms : public testing::Test {
 protected:
  void SetUp() override {
    if (!orb::hasTls()) {
      GTEST_SKIP() << "the ORB has no TLS";
    }
  }

  static std::vector<std::string> tlsArguments(const Authority& authority,
                                               const Certificate& certificate) {
    return {"--tls-cert", certificate.certificate, "--tls-key", certificate.key,
            "--tls-ca",   authority.file()};
  }

  std::vector<std::string> serving(const Certificate& certificate) const {
    return tlsArguments(authority_, certificate);
  }

  static std::vector<std::string> joined(std::vector<std::string> first,
                                         const std::vector<std::string>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  }

  static Ended topoctl(const RunningAgent& agent, const std::vector<std::string>& tls,
                       const std::vector<std::string>& command = {"capabilities"}) {
    const std::vector<std::string> at = {"--agent", "tls:" + agent.endpoint()};
    return support::Process(ownPrograms().client, joined(joined(at, tls), command)).wait();
  }

  // topoctl cannot call the agent and says so in one line with this text.
  static void expectRefusal(const Ended& ended, const std::string& text) {
    EXPECT_EQ(2, ended.status);
    EXPECT_EQ(1, std::count(ended.err.begin(), ended.err.end(), '\n')) << ended.err;
    EXPECT_THAT(ended.err, HasSubstr(text));
  }

  const support::TemporaryDirectory directory_;
  Authority authority_{directory_, "ca"};
  const Certificate server_ = authority_.issue("agent");
  const Certificate client_ = authority_.issue("operator");
};

TEST_F(TlsPrograms, ServeAClientWithACertificate) {
  const RunningAgent agent(serving(server_));
  EXPECT_THAT(agent.readyLine(),
              HasSubstr("reference corbaloc:ssliop:1.2@" + agent.endpoint() + "/TopoManagement"));
  const Ended ended = topoctl(agent, tlsArguments(authority_, client_));
  EXPECT_EQ(0, ended.status) << ended.err;
}

TEST_F(TlsPrograms, RefuseAClientWithoutACertificate) {
  const RunningAgent agent(serving(server_));
  expectRefusal(topoctl(agent, {"--tls-ca", authority_.file()}),
                "cannot be reached: TLS with " + agent.endpoint() +
                    " failed: the other side answers 'certificate required'");
}

TEST_F(TlsPrograms, RefuseAnExpiredClient) {
  const RunningAgent agent(serving(server_));
  const Certificate expired = authority_.issue("old", Authority::Validity::kExpired);
  expectRefusal(topoctl(agent, tlsArguments(authority_, expired)),
                "failed: the other side answers 'certificate expired'");
}

TEST_F(TlsPrograms, RefuseAnAgentOfAnotherAuthority) {
  const RunningAgent agent(serving(server_));
  const Authority other(directory_, "other");
  expectRefusal(topoctl(agent, {"--tls-ca", other.file()}),
                "failed: self-signed certificate in certificate chain");
}

TEST_F(TlsPrograms, RefuseAnAgentAtAnotherAddress) {
  const Certificate elsewhere =
      authority_.issue("elsewhere", Authority::Validity::kToday, "192.0.2.1");
  const RunningAgent agent(serving(elsewhere));
  expectRefusal(topoctl(agent, tlsArguments(authority_, client_)), "failed: IP address mismatch");
}

TEST_F(TlsPrograms, PushOverTls) {
  const std::string access = directory_.write("access", "certificate read operate\n");
  const RunningAgent agent(joined(serving(server_), {"--access", access}));
  const std::vector<std::string> at = {"--agent", "tls:" + agent.endpoint(), "--format", "json"};
  const std::vector<std::string> tls = tlsArguments(authority_, client_);
  support::Process watch(ownPrograms().client, joined(joined(at, tls), {"watch", "--count", "1"}));
  EXPECT_THAT(watch.readLine(), HasSubstr("watching"));
  const Ended created =
      topoctl(agent, tls, {"node", "create", "top", "--name", "Top", "--params", "3,-4"});
  EXPECT_EQ(0, created.status) << created.err;
  EXPECT_THAT(watch.readLine(), HasSubstr("creation"));
  EXPECT_EQ(0, watch.wait().status);
}

TEST_F(TlsPrograms, ListenOnPlainEndpointsOnlyByName) {
  const RunningAgent agent(joined(serving(server_), {"--endpoint", "tcp:127.0.0.1:0"}));
  EXPECT_THAT(agent.readyLine(), HasSubstr("also at 127.0.0.1:"));
  const std::string plain = agent.readyLine().substr(agent.readyLine().rfind(' ') + 1);
  const Ended ended =
      support::Process(ownPrograms().client, {"--agent", "tcp:" + plain, "capabilities"}).wait();
  EXPECT_EQ(0, ended.status) << ended.err;
}

TEST_F(TlsPrograms, NameAFileThatCannotBeUsed) {
  Certificate wrong = server_;
  wrong.key = directory_.file("missing.key");
  const Ended ended =
      support::Process(ownPrograms().agent,
                       joined({"--store", ":memory:", "--endpoint", "127.0.0.1:0"}, serving(wrong)))
          .wait();
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("topo-agentd: TLS: " + wrong.key + ": No such file or directory\n", ended.err);
  const Ended client = support::Process(ownPrograms().client,
                                        joined(tlsArguments(authority_, wrong), {"capabilities"}))
                           .wait();
  EXPECT_EQ(1, client.status);
  EXPECT_THAT(client.err, StartsWith("topoctl: TLS: " + wrong.key + ": No such file"));
}

}  // namespace
