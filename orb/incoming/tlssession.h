// TLS on an incoming connection.

#ifndef ORB_INCOMING_TLSSESSION_H
#define ORB_INCOMING_TLSSESSION_H

#include <openssl/ssl.h>
#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

#include "../tls.h"
#include "sync/Mutex.h"

namespace orb {

// Performs the handshake within receive(). After a failed handshake the client receives the alert,
// and further bytes are dropped until the client closes the connection. No function blocks.
//
// Thread-safety: any thread; receive() and hasReceived() by one thread at a time. Borrows the
// socket. Errors of the socket appear in errno; the constructor throws std::bad_alloc.
class TlsSession {
 public:
  // REQUIRES: a connected socket.
  TlsSession(int socket, const TlsContext& context);
  ~TlsSession() = default;
  TlsSession(const TlsSession&) = delete;
  TlsSession& operator=(const TlsSession&) = delete;

  // As recv() and send(): -1 with EAGAIN in errno when the socket is not ready.
  ssize_t receive(char* to, std::size_t count);
  ssize_t send(const void* bytes, std::size_t count);

  // Whether receive() may return bytes although the socket is not readable.
  bool hasReceived() const;

  // Whether the handshake has succeeded, or has failed.
  bool isOpen() const { return open_; }
  bool hasFailed() const { return failed_; }

  // Returns and clears the reason of a failed handshake, as a clause; "" without a reason.
  std::string takeFailure();

  // The subject of the client's verified certificate; "" without one. REQUIRES: isOpen().
  const std::string& subject() const { return subject_; }

  // Tells the client that no further bytes follow.
  void end();

 private:
  enum class Step { kDone, kWaiting, kFailed };

  Step shakeHands() REQUIRES(mutex_);
  ssize_t dropBytes() const;

  const int socket_;
  mutable Mutex mutex_;
  const std::unique_ptr<SSL, void (*)(SSL*)> connection_ PT_GUARDED_BY(mutex_);
  std::string failure_ GUARDED_BY(mutex_);  // of the handshake, until takeFailure()
  std::string subject_;                     // written before open_
  std::atomic<bool> open_{false};
  std::atomic<bool> failed_{false};
};

}  // namespace orb

#endif
