// TLS endpoints.

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>

#include "tests/support/Certificates.h"
#include "tests/unit/orb/LogLines.h"
#include "tests/unit/orb/Servants.h"
#include "tests/unit/orb/TlsClient.h"

namespace {

using orb::Endpoint;
using orb::TlsOptions;
using orb::Transport;
using orb_tests::Answering;
using orb_tests::RawClient;
using orb_tests::requestTo;
using orb_tests::TlsClient;
using support::Authority;
using support::Certificate;
using testing::HasSubstr;

class TlsFiles : public testing::Test {
 protected:
  TlsFiles() {
    tls_.certificate = server_.certificate;
    tls_.key = server_.key;
    tls_.authorities = authority_.file();
  }

  // The reason against the files; "" for good files.
  std::string reason() const {
    try {
      orb::checkTls(tls_);
      return "";
    } catch (const orb::TlsError& failure) {
      return failure.what();
    }
  }

  const support::TemporaryDirectory directory_;
  Authority authority_{directory_, "ca"};
  const Certificate server_ = authority_.issue("server");
  TlsOptions tls_;
};

TEST_F(TlsFiles, AreAcceptedWhenTheyFit) {
  EXPECT_EQ("", reason());
  tls_.revoked = authority_.revoked();
  EXPECT_EQ("", reason());
}

TEST_F(TlsFiles, ThatAreMissingAreNamed) {
  tls_.certificate = directory_.file("none.pem");
  EXPECT_EQ(tls_.certificate + ": No such file or directory", reason());
  tls_.certificate = server_.certificate;
  tls_.key = directory_.file("none.key");
  EXPECT_EQ(tls_.key + ": No such file or directory", reason());
  tls_.key = server_.key;
  tls_.authorities = directory_.file("none.ca");
  EXPECT_EQ(tls_.authorities + ": No such file or directory", reason());
  tls_.authorities = authority_.file();
  tls_.revoked = directory_.file("none.crl");
  EXPECT_EQ(tls_.revoked + ": No such file or directory", reason());
}

TEST_F(TlsFiles, OfAnotherFormAreNamed) {
  const std::string text = directory_.write("text", "no PEM\n");
  tls_.certificate = text;
  EXPECT_THAT(reason(), testing::StartsWith(text + ": holds no certificate in PEM form"));
  tls_.certificate = server_.certificate;
  tls_.key = text;
  EXPECT_THAT(reason(), testing::StartsWith(text + ": holds no private key in PEM form"));
  tls_.key = server_.key;
  tls_.revoked = text;
  EXPECT_THAT(reason(), testing::StartsWith(text + ": holds no revocation list in PEM form"));
}

TEST_F(TlsFiles, MustBelongTogether) {
  tls_.key = authority_.issue("other").key;
  EXPECT_THAT(reason(),
              HasSubstr(tls_.key + ": does not belong to the certificate in " + tls_.certificate));
}

class TlsEndpoints : public TlsFiles {
 protected:
  void start(std::size_t maxConnections = 10) {
    if (!orb::hasTls()) {
      GTEST_SKIP() << "the ORB has no TLS";
    }
    orb::Options options = orb_tests::quickOptions();
    options.tls = tls_;
    options.serveTimeout = std::chrono::milliseconds(500);
    options.maxConnections = maxConnections;
    options.maxRequestBytes = orb::kMinMaxMessageBytes;
    orb_ = orb::startServer(options, Endpoint{"127.0.0.1", 0, Transport::kTls}, log_.function());
    object_ = orb_->wellKnownObject("Key");
    published_ = object_->publish(servant_.in(), [this](const orb::Request& request) {
      const std::lock_guard<std::mutex> lock(mutex_);
      peer_ = request.peer;
      return nullptr;
    });
    const PortableServer::POAManager_var manager = orb_->rootPoa()->the_POAManager();
    manager->activate();
  }

  // Whether a client with the certificate, or without one, is served.
  bool serves(const Certificate* certificate) const {
    return TlsClient(orb_->endpoint(), certificate).isServed();
  }

  orb::Peer peer() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return peer_;
  }

  const Certificate client_ = authority_.issue("operator");
  const PortableServer::ServantBase_var servant_ = new Answering(7);
  orb_tests::LogLines log_;
  std::mutex mutex_;
  orb::Peer peer_;
  std::unique_ptr<orb::Server> orb_;
  std::unique_ptr<orb::WellKnownObject> object_;
  CORBA::Object_var published_;
};

#define START_OR_SKIP(...) \
  start(__VA_ARGS__);      \
  if (IsSkipped()) {       \
    return;                \
  }

TEST_F(TlsEndpoints, ServeAVerifiedClientAndNameItsCertificate) {
  START_OR_SKIP();
  EXPECT_TRUE(serves(&client_));
  EXPECT_EQ(Transport::kTls, peer().transport);
  EXPECT_EQ("127.0.0.1", peer().address);
  EXPECT_EQ("CN=operator,O=Tests", peer().subject);
  EXPECT_EQ(orb::format(orb_->endpoint()), orb::addressOf(published_.in()));
}

TEST_F(TlsEndpoints, RefuseAClientWithoutACertificate) {
  START_OR_SKIP();
  EXPECT_FALSE(serves(nullptr));
  EXPECT_TRUE(
      log_.await("the TLS handshake of 127.0.0.1 failed: peer did not return a certificate"));
}

TEST_F(TlsEndpoints, RefuseAnExpiredCertificate) {
  START_OR_SKIP();
  const Certificate expired = authority_.issue("old", Authority::Validity::kExpired);
  const TlsClient client(orb_->endpoint(), &expired);
  EXPECT_FALSE(client.isServed());
  EXPECT_THAT(TlsClient::alert(), HasSubstr("certificate expired"));
  EXPECT_TRUE(log_.await("the TLS handshake of 127.0.0.1 failed: certificate has expired"));
}

TEST_F(TlsEndpoints, RefuseARevokedCertificate) {
  authority_.revoke(client_);
  tls_.revoked = authority_.revoked();
  START_OR_SKIP();
  EXPECT_FALSE(serves(&client_));
  EXPECT_TRUE(log_.await("the TLS handshake of 127.0.0.1 failed: certificate revoked"));
  const Certificate other = authority_.issue("other");
  EXPECT_TRUE(serves(&other));
}

TEST_F(TlsEndpoints, RefuseACertificateOfAnUnknownAuthority) {
  START_OR_SKIP();
  Authority unknown(directory_, "unknown");
  const Certificate stranger = unknown.issue("stranger");
  EXPECT_FALSE(serves(&stranger));
  EXPECT_TRUE(
      log_.await("the TLS handshake of 127.0.0.1 failed: unable to get local issuer certificate"));
}

TEST_F(TlsEndpoints, MayAcceptClientsWithoutACertificate) {
  tls_.clients = TlsOptions::Clients::kOptional;
  START_OR_SKIP();
  EXPECT_TRUE(serves(nullptr));
  EXPECT_EQ(Transport::kTls, peer().transport);
  EXPECT_EQ("", peer().subject);
  EXPECT_TRUE(serves(&client_));
  EXPECT_EQ("CN=operator,O=Tests", peer().subject);
  const Certificate expired = authority_.issue("old", Authority::Validity::kExpired);
  EXPECT_FALSE(serves(&expired));
}

TEST_F(TlsEndpoints, MayAskNoClientForACertificate) {
  tls_.clients = TlsOptions::Clients::kNone;
  START_OR_SKIP();
  EXPECT_TRUE(serves(&client_));
  EXPECT_EQ("", peer().subject);
}

TEST_F(TlsEndpoints, RefuseVersionsBefore12) {
  START_OR_SKIP();
  EXPECT_TRUE(TlsClient(orb_->endpoint(), &client_, TLS1_2_VERSION).isServed());
  EXPECT_FALSE(TlsClient(orb_->endpoint(), &client_, TLS1_1_VERSION).isServed());
  EXPECT_TRUE(log_.await("the TLS handshake of 127.0.0.1 failed: unsupported protocol"));
}

TEST_F(TlsEndpoints, RefusePlainRequests) {
  START_OR_SKIP();
  const RawClient client(orb_->endpoint());
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").bytes()));
  EXPECT_LT(client.receive().size(), 12U);  // an alert at most
  EXPECT_TRUE(log_.await("the TLS handshake of 127.0.0.1 failed: wrong version number"));
}

TEST_F(TlsEndpoints, CloseAStalledHandshake) {
  START_OR_SKIP(1);
  const RawClient silent(orb_->endpoint());
  EXPECT_TRUE(silent.isClosedByPeer());
  EXPECT_TRUE(log_.await("the TLS handshake of 127.0.0.1 failed: it was not complete in time"));
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  bool served = false;  // the only connection is free again, when the server has noticed the end
  while (!served && std::chrono::steady_clock::now() < end) {
    served = serves(&client_);
  }
  EXPECT_TRUE(served);
}

TEST_F(TlsEndpoints, CloseAConnectionWithAnIncompleteRequest) {
  START_OR_SKIP();
  const TlsClient client(orb_->endpoint(), &client_);
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").bytes().substr(0, 20)));
  EXPECT_EQ("", client.receive());
  EXPECT_TRUE(log_.await("a connection was closed: its request was not complete in time"));
}

TEST_F(TlsEndpoints, RefuseALargeRequest) {
  START_OR_SKIP();
  const TlsClient client(orb_->endpoint(), &client_);
  const std::string arguments(orb::kMinMaxMessageBytes, 'x');
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").text(arguments).bytes()));
  EXPECT_THAT(client.receive(), HasSubstr("IDL:omg.org/CORBA/MARSHAL:1.0"));
}

TEST_F(TlsEndpoints, ServeRequestsThatArriveInOneRecord) {
  START_OR_SKIP();
  const TlsClient client(orb_->endpoint(), &client_);
  const std::string request = requestTo("Key", "getLength").bytes();
  std::string several;
  constexpr int kRequests = 100;  // more bytes than the server reads at once
  for (int i = 0; i < kRequests; ++i) {
    several += request;
  }
  ASSERT_TRUE(client.send(several));
  constexpr std::size_t kReply = 28;
  std::size_t received = 0;
  for (std::string reply = " "; received < kRequests * kReply && !reply.empty();) {
    reply = client.receive();
    received += reply.size();
  }
  EXPECT_EQ(kRequests * kReply, received);
}

TEST_F(TlsEndpoints, ReloadCertificatesWithoutClosingConnections) {
  tls_.revoked = authority_.revoked();
  START_OR_SKIP();
  const TlsClient open(orb_->endpoint(), &client_);
  ASSERT_TRUE(open.isServed());
  EXPECT_EQ(server_.serial, open.serverSerial());
  const Certificate next = authority_.issue("next");
  std::filesystem::copy_file(next.certificate, server_.certificate,
                             std::filesystem::copy_options::overwrite_existing);
  std::filesystem::copy_file(next.key, server_.key,
                             std::filesystem::copy_options::overwrite_existing);
  authority_.revoke(client_);
  authority_.revoked();
  orb_->reloadTls();
  EXPECT_TRUE(open.isServed());
  EXPECT_FALSE(serves(&client_));
  const Certificate other = authority_.issue("other");
  const TlsClient later(orb_->endpoint(), &other);
  EXPECT_TRUE(later.isServed());
  EXPECT_EQ(next.serial, later.serverSerial());
}

TEST_F(TlsEndpoints, KeepTheirCertificatesWhenAReloadFails) {
  START_OR_SKIP();
  std::ofstream(server_.certificate) << "no PEM\n";
  EXPECT_THROW(orb_->reloadTls(), orb::TlsError);
  EXPECT_TRUE(serves(&client_));
}

}  // namespace
