// The agent and topoctl over TLS.

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <fstream>
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

  // Runs topoctl with this host and the port of the agent's ready line.
  Ended topoctlAt(const std::string& host, const RunningAgent& agent) const {
    const std::string port = agent.endpoint().substr(agent.endpoint().rfind(':'));
    return support::Process(ownPrograms().client,
                            joined({"--agent", "tls:" + host + port, "capabilities"},
                                   tlsArguments(authority_, client_)))
        .wait();
  }

  // Runs topoctl until it ends with the status, because the agent reloads files some time after
  // SIGHUP.
  static Ended topoctlUntil(int status, const RunningAgent& agent,
                            const std::vector<std::string>& tls) {
    Ended ended = topoctl(agent, tls);
    for (int i = 0; i < 100 && ended.status != status; ++i) {
      ended = topoctl(agent, tls);
    }
    return ended;
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

TEST_F(TlsPrograms, ReadTheirFilesAgainOnHangup) {
  RunningAgent agent(joined(serving(server_), {"--tls-crl", authority_.revoked()}));
  EXPECT_EQ(0, topoctl(agent, tlsArguments(authority_, client_)).status);
  authority_.revoke(client_);
  authority_.revoked();
  agent.process().send(SIGHUP);
  expectRefusal(topoctlUntil(2, agent, tlsArguments(authority_, client_)),
                "failed: the other side answers 'certificate revoked'");
}

TEST_F(TlsPrograms, ReadEachFileAgainOnHangupWhenAnotherIsMalformed) {
  const Certificate other = authority_.issue("other");
  const std::string access = directory_.write("access", "certificate none\n");
  const std::string revoked = authority_.revoked();
  RunningAgent agent(joined(serving(server_), {"--tls-crl", revoked, "--access", access}));
  directory_.write("access", "certificate all\n");
  authority_.revoke(other);
  authority_.revoked();
  agent.process().send(SIGHUP);
  EXPECT_EQ(2, topoctlUntil(2, agent, tlsArguments(authority_, other)).status);
  directory_.write("access", "certificate read\n");
  std::ofstream(revoked) << "no list\n";
  agent.process().send(SIGHUP);
  EXPECT_EQ(0, topoctlUntil(0, agent, tlsArguments(authority_, client_)).status);
  const std::string log = agent.stop(SIGTERM).err;
  EXPECT_THAT(log, HasSubstr("the access rules stay as they were: " + access + ":1: \"all\""));
  EXPECT_THAT(log, HasSubstr("the TLS certificates stay as they were: " + revoked +
                             ": holds no revocation list in PEM form"));
}

TEST_F(TlsPrograms, ReadTheAuthoritiesOfOutgoingCallsAgainOnHangup) {
  RunningAgent agent({"--tls-ca", authority_.file()});
  std::ofstream(authority_.file()) << "no certificate\n";
  agent.process().send(SIGHUP);
  EXPECT_THAT(agent.stop(SIGTERM).err,
              HasSubstr("the TLS certificates stay as they were: " + authority_.file()));
}

TEST_F(TlsPrograms, RefuseARevokedAgent) {
  const RunningAgent agent(serving(server_));
  authority_.revoke(server_);
  expectRefusal(topoctl(agent, joined(tlsArguments(authority_, client_),
                                      {"--tls-crl", authority_.revoked()})),
                "failed: certificate revoked");
}

TEST_F(TlsPrograms, RefuseAClientOfAnotherAuthority) {
  const RunningAgent agent(serving(server_));
  Authority other(directory_, "other");
  const Certificate stranger = other.issue("operator");
  expectRefusal(topoctl(agent, tlsArguments(authority_, stranger)),
                "failed: the other side answers 'unknown CA'");
}

TEST_F(TlsPrograms, JudgeAClientOnTheLoopbackByItsCertificate) {
  const std::string audit = directory_.file("audit");
  RunningAgent agent(joined(serving(server_), {"--audit", audit}));
  const std::vector<std::string> tls = tlsArguments(authority_, client_);
  EXPECT_EQ(3, topoctl(agent, tls, {"test-switch", "on"}).status);
  EXPECT_EQ(0, topoctl(agent, tls).status);
  agent.stop(SIGTERM);
  std::ifstream lines(audit);
  const nlohmann::json line = nlohmann::json::parse(lines);  // the only one
  EXPECT_EQ("127.0.0.1", line["peer"]);
  EXPECT_EQ("tls", line["transport"]);
  EXPECT_EQ("CN=operator,O=Tests", line["certificate"]);
  EXPECT_EQ("TopoAgentConsole", line["object"]);
  EXPECT_EQ("refused", line["outcome"]);
}

TEST_F(TlsPrograms, SayThatClientsWithoutCertificatesHaveNoRole) {
  RunningAgent agent(joined(serving(server_), {"--tls-clients", "none"}));
  EXPECT_EQ(3, topoctl(agent, {"--tls-ca", authority_.file()}).status);
  EXPECT_THAT(agent.stop(SIGTERM).err, HasSubstr("no rule of access applies to a client on TLS"));
}

TEST_F(TlsPrograms, AcceptAnAgentOfTheNameInTheReference) {
  const RunningAgent agent(
      serving(authority_.issue("named", Authority::Validity::kToday, "localhost")));
  const Ended ended = topoctlAt("localhost", agent);
  EXPECT_EQ(0, ended.status) << ended.err;
  expectRefusal(topoctlAt("127.0.0.1", agent), "failed: IP address mismatch");
}

TEST_F(TlsPrograms, RefuseAnAgentOfAnotherName) {
  const RunningAgent agent(serving(server_));
  expectRefusal(topoctlAt("localhost", agent), "failed: hostname mismatch");
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
