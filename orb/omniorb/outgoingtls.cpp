#include "outgoingtls.h"

#include <omniORB4/CORBA.h>
#include <omniORB4/sslContext.h>

#include "../tls.h"

namespace orb {
namespace {

// The ORB reads nothing from files: a connection takes its certificates from setOutgoingTls().
class OutgoingContext final : public sslContext {
 public:
  OutgoingContext() = default;

 private:
  void set_supported_versions() override { prepareOutgoing(*get_SSL_CTX()); }
  void set_CA() override {}
  void set_certificate() override {}
  void set_cipher() override {}
  void set_privatekey() override {}
  void seed_PRNG() override {}
  void set_DH() override {}
  void set_ephemeralRSA() override {}
  int set_verify_mode() override { return SSL_VERIFY_PEER; }
};

}  // namespace

// The ORB sets the static callbacks after the calls of the functions above.
void installTls() {
  sslContext::verify_callback = verifyOutgoing;
  sslContext::info_callback = observeOutgoing;
  if (sslContext::singleton == nullptr) {
    sslContext::singleton = new OutgoingContext;
  }
}

bool hasTls() {
  return true;
}

}  // namespace orb
