// Certificates for tests of TLS.

#ifndef TESTS_SUPPORT_CERTIFICATES_H
#define TESTS_SUPPORT_CERTIFICATES_H

#include <openssl/x509.h>

#include <memory>
#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace support {

// A certificate and its private key, as paths of PEM files.
struct Certificate {
  std::string certificate;
  std::string key;
  long serial = 0;
};

// A certificate authority. Its files are in the directory of the test.
//
// Thread-safety: one thread. Borrows the directory. Throws std::runtime_error.
class Authority {
 public:
  enum class Validity { kToday, kExpired };

  Authority(const TemporaryDirectory& directory, const std::string& name);

  // The path of the authority's own certificate.
  const std::string& file() const { return file_; }

  // A certificate with the subject O=Tests, CN=name for clients and servers. `host` is the IPv4
  // address or the DNS name of a server.
  Certificate issue(const std::string& name, Validity validity = Validity::kToday,
                    const std::string& host = "127.0.0.1");

  // Adds the certificate to the revocation list.
  void revoke(const Certificate& certificate);

  // Writes the revocation list. Returns its path.
  std::string revoked() const;

 private:
  const TemporaryDirectory& directory_;
  const std::string name_;
  std::shared_ptr<EVP_PKEY> key_;
  std::shared_ptr<X509> certificate_;
  std::shared_ptr<X509_CRL> list_;
  std::string file_;
  long lastSerial_ = 1;
};

}  // namespace support

#endif
