// An incoming connection with TLS.

#ifndef ORB_OMNIORB_INCOMING_TLSSTREAM_H
#define ORB_OMNIORB_INCOMING_TLSSTREAM_H

#include <atomic>
#include <string>
#include <utility>

#include "../../incoming/tlssession.h"
#include "stream.h"

namespace orb {

// A stream whose bytes a TlsSession encrypts. Thread-safety, ownership and errors: as Stream. The
// constructor throws std::bad_alloc.
class TlsStream final : public Stream {
 public:
  TlsStream(Descriptor socket, Peer peer, const TlsContext& context)
      : Stream(std::move(socket), std::move(peer)), session_(this->socket(), context) {}
  ~TlsStream() override = default;

  ssize_t receive(char* to, std::size_t count) override {
    const ssize_t received = session_.receive(to, count);
    if (!open_ && session_.isOpen()) {
      setSubject(session_.subject());
      open_ = true;
    }
    return received;
  }

  ssize_t send(const void* bytes, std::size_t count) override {
    return session_.send(bytes, count);
  }

  bool hasReceived() const override { return session_.hasReceived(); }
  bool isOpen() const override { return open_; }
  std::string takeFailure() override { return session_.takeFailure(); }
  bool hasFailed() const override { return session_.hasFailed(); }

  void shutDown() override {
    session_.end();
    Stream::shutDown();
  }

 private:
  TlsSession session_;
  std::atomic<bool> open_{false};  // after setSubject()
};

}  // namespace orb

#endif
