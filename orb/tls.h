// Certificates, keys and contexts for TLS.

#ifndef ORB_TLS_H
#define ORB_TLS_H

#include <openssl/ssl.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

#include "orb/orb.h"
#include "sync/Mutex.h"

namespace orb {

// The context of TLS connections in both directions, made from the files of TlsOptions.
//
// Thread-safety: any thread. Owns its context; a connection keeps the context that it began with.
// Errors: the constructor and reload() throw TlsError.
class TlsContext {
 public:
  explicit TlsContext(TlsOptions options);
  TlsContext(const TlsContext&) = delete;
  TlsContext& operator=(const TlsContext&) = delete;

  const TlsOptions& options() const { return options_; }

  // Reads the files again, for later connections. Keeps the former context on TlsError.
  void reload();

  std::shared_ptr<SSL_CTX> current() const;

 private:
  const TlsOptions options_;
  mutable Mutex mutex_;
  std::shared_ptr<SSL_CTX> context_ GUARDED_BY(mutex_);
};

// The timeout of a TLS handshake: serveTimeout, but at most ten seconds.
inline std::chrono::milliseconds handshakeTime(const Options& options) {
  constexpr std::chrono::milliseconds kMost{10000};
  return options.serveTimeout.count() == 0 ? kMost : std::min(kMost, options.serveTimeout);
}

// Makes the context for the files of the options, sets it for outgoing calls and returns it; null
// without files. Throws TlsError.
std::shared_ptr<TlsContext> startTls(const TlsOptions& options);

// Sets the context of outgoing calls; null: no authority is trusted. Thread-safety: any thread.
void setOutgoingTls(std::shared_ptr<TlsContext> context);

// Whether setOutgoingTls() has set a context. Thread-safety: any thread.
bool isOutgoingTlsSet();

// Prepares the SSL_CTX of an ORB for its outgoing connections. They begin with the context of
// setOutgoingTls(), and their failures are recorded for takeTlsFailure().
void prepareOutgoing(SSL_CTX& context);

// Sets the host of the reference that the calling thread calls next. For an ORB that does not send
// the host name in the handshake.
void expectHost(const std::string& host);

// Callbacks of prepareOutgoing(), for an ORB that installs them itself.
int verifyOutgoing(int ok, X509_STORE_CTX* chain);
void observeOutgoing(const SSL* connection, int where, int result);

// Returns a new connection that the server accepts. Null without memory.
std::unique_ptr<SSL, void (*)(SSL*)> acceptingConnection(const TlsContext& context);

// Returns the reason of a failed handshake of a server, as a clause. REQUIRES: called after the
// handshake by the same thread.
std::string handshakeFailure(const SSL& connection);

// Returns the subject of the peer's verified certificate (RFC 4514); "" without one.
std::string verifiedSubject(const SSL& connection);

}  // namespace orb

#endif
