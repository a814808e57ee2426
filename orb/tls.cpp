#include "tls.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>

#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "addresses.h"

namespace orb {
namespace {

// The clause after the file name, with OpenSSL's reason.
[[noreturn]] void fail(const std::string& file, const std::string& what) {
  const unsigned long code = ERR_peek_last_error();
  const char* const reason = code == 0 ? nullptr : ERR_reason_error_string(code);
  throw TlsError(file + ": " + what + (reason == nullptr ? "" : " (" + std::string(reason) + ")"));
}

void checkReadable(const std::string& file) {
  errno = 0;
  const std::ifstream stream(file);
  if (!stream) {
    throw TlsError(file + ": " + std::generic_category().message(errno));
  }
}

// Without this callback OpenSSL asks for the password at the terminal.
int noPassword(char* /*buffer*/, int /*size*/, int /*writing*/, void* /*data*/) {
  return 0;
}

void loadCertificate(SSL_CTX& context, const TlsOptions& options) {
  if (options.certificate.empty()) {
    return;
  }
  checkReadable(options.certificate);
  if (SSL_CTX_use_certificate_chain_file(&context, options.certificate.c_str()) != 1) {
    fail(options.certificate, "holds no certificate in PEM form");
  }
  checkReadable(options.key);
  if (SSL_CTX_use_PrivateKey_file(&context, options.key.c_str(), SSL_FILETYPE_PEM) != 1) {
    const bool mismatch = ERR_GET_REASON(ERR_peek_last_error()) == X509_R_KEY_VALUES_MISMATCH;
    fail(options.key, mismatch ? "does not belong to the certificate in " + options.certificate
                               : "holds no private key in PEM form without a password");
  }
}

void loadAuthorities(SSL_CTX& context, const TlsOptions& options) {
  if (!options.authorities.empty()) {
    checkReadable(options.authorities);
    const char* const file = options.authorities.c_str();
    if (SSL_CTX_load_verify_file(&context, file) != 1) {
      fail(options.authorities, "holds no certificate in PEM form");
    }
    SSL_CTX_set_client_CA_list(&context, SSL_load_client_CA_file(file));
  }
  if (!options.revoked.empty()) {
    checkReadable(options.revoked);
    X509_STORE* const store = SSL_CTX_get_cert_store(&context);
    X509_LOOKUP* const lookup = X509_STORE_add_lookup(store, X509_LOOKUP_file());
    if (lookup == nullptr ||
        X509_load_crl_file(lookup, options.revoked.c_str(), X509_FILETYPE_PEM) < 1) {
      fail(options.revoked, "holds no revocation list in PEM form");
    }
    X509_STORE_set_flags(store, X509_V_FLAG_CRL_CHECK | X509_V_FLAG_CRL_CHECK_ALL);
  }
}

// No session is resumed: a resumed session would not see a certificate that was revoked since.
void setPolicy(SSL_CTX& context) {
  constexpr const char* kCiphers = "ECDHE+AESGCM:ECDHE+CHACHA20";  // of TLS 1.2
  SSL_CTX_set_min_proto_version(&context, TLS1_2_VERSION);
  SSL_CTX_set_cipher_list(&context, kCiphers);
  SSL_CTX_set_options(&context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_TICKET | SSL_OP_NO_COMPRESSION |
                                    SSL_OP_CIPHER_SERVER_PREFERENCE);
  SSL_CTX_set_session_cache_mode(&context, SSL_SESS_CACHE_OFF);
  SSL_CTX_set_num_tickets(&context, 0);
  SSL_CTX_set_mode(&context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
}

std::shared_ptr<SSL_CTX> makeContext(const TlsOptions& options) {
  ERR_clear_error();
  std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_method()), SSL_CTX_free);
  if (!context) {
    throw std::bad_alloc();
  }
  setPolicy(*context);
  SSL_CTX_set_default_passwd_cb(context.get(), noPassword);
  loadCertificate(*context, options);
  loadAuthorities(*context, options);
  ERR_clear_error();
  return context;
}

struct Outgoing {
  Mutex mutex;
  std::shared_ptr<TlsContext> context GUARDED_BY(mutex);
};

// Never destroyed, because an ORB may end at the exit of the process.
Outgoing& outgoing() {
  static auto* const instance = new Outgoing;
  return *instance;
}

std::shared_ptr<TlsContext> outgoingContext() {
  Outgoing& out = outgoing();
  const MutexLock lock(out.mutex);
  return out.context;
}

// The failure of the latest handshake that the thread began.
thread_local std::string latestFailure;

void recordFailure(std::string reason) {
  if (latestFailure.empty()) {
    latestFailure = std::move(reason);
  }
}

bool isNumeric(const std::string& host) {
  const std::unique_ptr<ASN1_OCTET_STRING, void (*)(ASN1_OCTET_STRING*)> address(
      a2i_IPADDRESS(host.c_str()), ASN1_OCTET_STRING_free);
  return address != nullptr;
}

// See expectHost().
thread_local std::string expectedHost;

void sendExpectedHost(SSL& connection) {
  if (!expectedHost.empty() && !isNumeric(expectedHost)) {
    SSL_ctrl(&connection, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name,
             expectedHost.data());
  }
}

// Sets the name or the address that the server's certificate must contain: the host in the
// reference. A host name is sent in the handshake, by the ORB or by sendExpectedHost(). Without a
// host name in the handshake, the reference has a numeric address, which is the address of the
// connection.
void expectServer(SSL& connection) {
  sendExpectedHost(connection);
  X509_VERIFY_PARAM* const expected = SSL_get0_param(&connection);
  const char* const name = SSL_get_servername(&connection, TLSEXT_NAMETYPE_host_name);
  if (name != nullptr) {
    X509_VERIFY_PARAM_set1_host(expected, name, 0);
  } else {
    const std::string address = peerEndpoint(SSL_get_fd(&connection)).host;
    X509_VERIFY_PARAM_set1_ip_asc(expected, address.c_str());
  }
}

void beginOutgoing(SSL& connection) {
  latestFailure.clear();
  SSL_set_verify(&connection, SSL_VERIFY_PEER, verifyOutgoing);
  const std::shared_ptr<TlsContext> context = outgoingContext();
  if (!context) {
    return;
  }
  SSL_set_SSL_CTX(&connection, context->current().get());
  SSL_set_info_callback(&connection, observeOutgoing);
  if (context->options().checkServerName) {
    expectServer(connection);
  }
}

std::string alertText(int alert) {
  // Alerts of TLS 1.3 that OpenSSL does not name.
  constexpr int kCertificateRequired = 116;
  return (alert & 0xff) == kCertificateRequired ? "certificate required"
                                                : SSL_alert_desc_string_long(alert);
}

void freeConnection(SSL* connection) {
  SSL_free(connection);
}

}  // namespace

TlsContext::TlsContext(TlsOptions options)
    : options_(std::move(options)), context_(makeContext(options_)) {}

void TlsContext::reload() {
  std::shared_ptr<SSL_CTX> context = makeContext(options_);
  const MutexLock lock(mutex_);
  context_.swap(context);
}

std::shared_ptr<SSL_CTX> TlsContext::current() const {
  const MutexLock lock(mutex_);
  return context_;
}

void checkTls(const TlsOptions& options) {
  makeContext(options);
}

std::shared_ptr<TlsContext> startTls(const TlsOptions& options) {
  const bool configured = !options.certificate.empty() || !options.authorities.empty();
  auto context = configured ? std::make_shared<TlsContext>(options) : nullptr;
  setOutgoingTls(context);
  return context;
}

void expectHost(const std::string& host) {
  expectedHost = host;
}

void setOutgoingTls(std::shared_ptr<TlsContext> context) {
  Outgoing& out = outgoing();
  const MutexLock lock(out.mutex);
  out.context = std::move(context);
}

bool isOutgoingTlsSet() {
  return outgoingContext() != nullptr;
}

std::string takeTlsFailure() {
  return std::exchange(latestFailure, {});
}

int verifyOutgoing(int ok, X509_STORE_CTX* chain) {
  if (ok == 0) {
    recordFailure(X509_verify_cert_error_string(X509_STORE_CTX_get_error(chain)));
  }
  return ok;
}

void observeOutgoing(const SSL* connection, int where, int result) {
  if (where == SSL_CB_HANDSHAKE_START) {
    // The ORB made the connection for this thread, which has just begun the handshake.
    beginOutgoing(*const_cast<SSL*>(connection));
  } else if (where == SSL_CB_READ_ALERT && (result >> 8) == SSL3_AL_FATAL) {
    recordFailure("the other side answers '" + alertText(result) + "'");
  } else if (where == SSL_CB_CONNECT_EXIT && result <= 0 && ERR_peek_last_error() != 0) {
    const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
    recordFailure(reason == nullptr ? "the handshake failed" : reason);
  }
}

void prepareOutgoing(SSL_CTX& context) {
  setPolicy(context);
  SSL_CTX_set_verify(&context, SSL_VERIFY_PEER, verifyOutgoing);
  SSL_CTX_set_info_callback(&context, observeOutgoing);
}

std::unique_ptr<SSL, void (*)(SSL*)> acceptingConnection(const TlsContext& context) {
  std::unique_ptr<SSL, void (*)(SSL*)> connection(SSL_new(context.current().get()), freeConnection);
  if (connection) {
    int mode = SSL_VERIFY_NONE;
    if (context.options().clients != TlsOptions::Clients::kNone) {
      mode = SSL_VERIFY_PEER;
    }
    if (context.options().clients == TlsOptions::Clients::kRequired) {
      mode |= SSL_VERIFY_FAIL_IF_NO_PEER_CERT;
    }
    SSL_set_verify(connection.get(), mode, nullptr);
    SSL_set_accept_state(connection.get());
  }
  return connection;
}

std::string handshakeFailure(const SSL& connection) {
  const long verified = SSL_get_verify_result(&connection);
  if (verified != X509_V_OK) {
    return X509_verify_cert_error_string(verified);
  }
  const unsigned long code = ERR_peek_last_error();
  const char* const reason = code == 0 ? nullptr : ERR_reason_error_string(code);
  return reason == nullptr ? "the client closed the connection" : reason;
}

std::string verifiedSubject(const SSL& connection) {
  const std::unique_ptr<X509, void (*)(X509*)> certificate(SSL_get1_peer_certificate(&connection),
                                                           X509_free);
  if (!certificate || SSL_get_verify_result(&connection) != X509_V_OK ||
      (SSL_get_verify_mode(&connection) & SSL_VERIFY_PEER) == 0) {
    return "";
  }
  const std::unique_ptr<BIO, void (*)(BIO*)> text(BIO_new(BIO_s_mem()), BIO_free_all);
  constexpr unsigned long kFormat = XN_FLAG_RFC2253 & ~ASN1_STRFLGS_ESC_MSB;
  if (!text ||
      X509_NAME_print_ex(text.get(), X509_get_subject_name(certificate.get()), 0, kFormat) < 0) {
    return "";
  }
  char* bytes = nullptr;
  const long size = BIO_get_mem_data(text.get(), &bytes);
  return {bytes, static_cast<std::size_t>(size)};
}

}  // namespace orb
