// The bytes of an incoming connection.

#ifndef ORB_OMNIORB_INCOMING_STREAM_H
#define ORB_OMNIORB_INCOMING_STREAM_H

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <utility>

#include "../../descriptor.h"
#include "orb/orb.h"

namespace orb {

// The bytes of a connected socket. No function blocks.
//
// Thread-safety: any thread; receive() and hasReceived() by one thread at a time. Ownership: owns
// the socket. Errors of the socket appear in errno.
class Stream {
 public:
  // REQUIRES: a connected socket.
  Stream(Descriptor socket, Peer peer);
  virtual ~Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  int socket() const { return socket_.get(); }

  // As recv() and send(): -1 with EAGAIN in errno when the socket is not ready.
  virtual ssize_t receive(char* to, std::size_t count);
  virtual ssize_t send(const void* bytes, std::size_t count);

  // Whether receive() may return bytes although the socket is not readable.
  virtual bool hasReceived() const { return false; }

  // Whether requests can be received and replies can be sent.
  virtual bool isOpen() const { return true; }

  // Returns once why the connection cannot be used, as a clause; "" without such a reason.
  virtual std::string takeFailure() { return ""; }

  virtual bool hasFailed() const { return false; }

  // Ends the connection in both directions.
  virtual void shutDown();

  // The numeric address of the client, also after the client has closed the connection; "" for a
  // Unix socket.
  const std::string& address() const { return peer_.address; }

  // The client. REQUIRES: isOpen().
  const Peer& peer() const { return peer_; }

 protected:
  // Sets the subject of the client's certificate. REQUIRES: not isOpen().
  void setSubject(std::string subject) { peer_.subject = std::move(subject); }

 private:
  const Descriptor socket_;
  Peer peer_;
};

}  // namespace orb

#endif
