// The bytes of an incoming connection.

#ifndef ORB_TAO_REQUESTSTREAM_H
#define ORB_TAO_REQUESTSTREAM_H

#include <sys/types.h>
#include <sys/uio.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "../incoming/assembler.h"
#include "../incoming/tlssession.h"
#include "connections.h"

namespace orb {

// Assembles requests before the ORB reads them, so that the ORB never waits for the rest of a
// message. The connection is registered from admit() until the destructor.
//
// Thread-safety: none; used by the thread of the connection. Shares the connections, borrows the
// socket. Errors: as described.
class RequestStream {
 public:
  explicit RequestStream(std::shared_ptr<Connections> connections);
  ~RequestStream();
  RequestStream(const RequestStream&) = delete;
  RequestStream& operator=(const RequestStream&) = delete;

  // Registers the accepted connection. Returns false if the connection is refused.
  bool admit(int socket);

  // As recv(), for the bytes of complete requests. Ends the connection when a request is incomplete
  // after serveTimeout, or after idleTimeout: -1 with ECONNRESET in errno.
  ssize_t recv(char* to, std::size_t count);

  // As TAO_Transport::send(). Ends the connection when the reply is not sent within serveTimeout,
  // or, while the server drains, within drainGrace: -1 with ECONNRESET in errno.
  ssize_t send(iovec* pieces, int count, std::size_t& sent);

 private:
  using Clock = std::chrono::steady_clock;

  ssize_t write(iovec* pieces, int count);
  bool awaitWritable() const;
  bool receiveRequest();
  bool assembleRequest();
  void recordRequest();
  bool receiveBytes();
  ssize_t receiveSome();
  void observeHandshake();
  bool awaitBudget();
  bool timedOut() const;
  bool shakesHands() const { return session_ && !session_->isOpen(); }
  std::optional<Clock::time_point> deadline() const;
  bool awaitSocket(short event, std::optional<Clock::time_point> until) const;

  const std::shared_ptr<Connections> connections_;
  std::shared_ptr<Connection> connection_;
  std::unique_ptr<TlsSession> session_;  // null without TLS
  Assembler assembler_;
  std::optional<Assembler::Request> request_;  // the request that the ORB reads
  std::array<char, 16384> buffer_;             // received bytes
  std::size_t begin_ = 0;                      // [begin_, end_): bytes that are not assembled yet
  std::size_t end_ = 0;
  std::optional<Clock::time_point> handshakeUntil_;
  std::optional<Clock::time_point> idleUntil_;
  std::optional<Clock::time_point> replyBegun_;
};

}  // namespace orb

#endif
