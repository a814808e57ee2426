// An incoming connection with TLS.

#ifndef ORB_OMNIORB_INCOMING_TLSSTREAM_H
#define ORB_OMNIORB_INCOMING_TLSSTREAM_H

#include <openssl/ssl.h>

#include <atomic>
#include <memory>
#include <string>

#include "../../tls.h"
#include "stream.h"
#include "sync/Mutex.h"

namespace orb {

// Performs the handshake within receive(). After a failed handshake the client receives the alert,
// and its further bytes are dropped until it closes the connection.
//
// Thread-safety, ownership and errors: as Stream. The constructor throws std::bad_alloc.
class TlsStream final : public Stream {
 public:
  TlsStream(Descriptor socket, Peer peer, const TlsContext& context);
  ~TlsStream() override = default;

  ssize_t receive(char* to, std::size_t count) override;
  ssize_t send(const void* bytes, std::size_t count) override;
  bool hasReceived() const override;
  bool isOpen() const override { return open_; }
  std::string takeFailure() override;
  bool hasFailed() const override { return failed_; }
  void shutDown() override;

 private:
  enum class Step { kDone, kWaiting, kFailed };

  Step shakeHands() REQUIRES(mutex_);
  ssize_t dropBytes();

  mutable Mutex mutex_;
  const std::unique_ptr<SSL, void (*)(SSL*)> connection_ PT_GUARDED_BY(mutex_);
  std::string failure_ GUARDED_BY(mutex_);  // of the handshake, until takeFailure()
  std::atomic<bool> open_{false};
  std::atomic<bool> failed_{false};
};

}  // namespace orb

#endif
