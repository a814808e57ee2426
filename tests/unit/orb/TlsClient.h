// A client of TLS endpoints without an ORB.

#ifndef TESTS_UNIT_ORB_TLSCLIENT_H
#define TESTS_UNIT_ORB_TLSCLIENT_H

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <memory>
#include <string>

#include "tests/support/Certificates.h"
#include "tests/unit/orb/RawClient.h"

namespace orb_tests {

// Blocks for at most 20 seconds in each call. Thread-safety: one thread. Owns the connection.
class TlsClient {
 public:
  // certificate: null for none. newest: the newest protocol version; 0: every version.
  TlsClient(const orb::Endpoint& endpoint, const support::Certificate* certificate, int newest = 0)
      : raw_(endpoint) {
    timeval patience{20, 0};
    setsockopt(raw_.socket(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    SSL_CTX_set_max_proto_version(context_.get(), newest);
    SSL_CTX_set_security_level(context_.get(), 0);
    if (certificate != nullptr) {
      SSL_CTX_use_certificate_chain_file(context_.get(), certificate->certificate.c_str());
      SSL_CTX_use_PrivateKey_file(context_.get(), certificate->key.c_str(), SSL_FILETYPE_PEM);
    }
    connection_.reset(SSL_new(context_.get()));
    SSL_set_fd(connection_.get(), raw_.socket());
    connected_ = SSL_connect(connection_.get()) == 1;
  }

  // Whether the handshake succeeded for the client. With TLS 1.3 the server may refuse later.
  bool isConnected() const { return connected_; }

  bool send(const std::string& bytes) const {
    return connected_ &&
           SSL_write(connection_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
  }

  // Returns up to 4096 bytes of a reply; "" at the end of the connection.
  std::string receive() const {
    char bytes[4096];
    ERR_clear_error();
    const int count = connected_ ? SSL_read(connection_.get(), bytes, sizeof bytes) : 0;
    return std::string(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
  }

  // Whether a request is answered.
  bool isServed() const {
    return send(requestTo("Key", "getLength").bytes()) && receive().size() > 12;
  }

  // The alert that the server has sent, after receive(); "" without one.
  static std::string alert() {
    const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
    return reason == nullptr ? "" : reason;
  }

  // The serial number of the server's certificate.
  long serverSerial() const {
    const std::unique_ptr<X509, void (*)(X509*)> certificate(
        SSL_get1_peer_certificate(connection_.get()), X509_free);
    return certificate ? ASN1_INTEGER_get(X509_get0_serialNumber(certificate.get())) : 0;
  }

 private:
  const RawClient raw_;
  const std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> context_{SSL_CTX_new(TLS_client_method()),
                                                              SSL_CTX_free};
  std::unique_ptr<SSL, void (*)(SSL*)> connection_{nullptr, SSL_free};
  bool connected_ = false;
};

}  // namespace orb_tests

#endif
