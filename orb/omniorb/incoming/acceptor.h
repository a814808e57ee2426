// Accepting connections on a listening socket.

#ifndef ORB_OMNIORB_INCOMING_ACCEPTOR_H
#define ORB_OMNIORB_INCOMING_ACCEPTOR_H

namespace orb {

// Accepts connections, and refuses connections when the process has no file descriptor left. A
// reserved descriptor is then used to accept and close a connection, so that its client does not
// block and the listening socket does not stay readable.
//
// Thread-safety: none. Owns the listening socket. Failures are returned as an Outcome.
class Acceptor {
 public:
  enum class Outcome {
    kAccepted,
    kNone,     // no connection is pending
    kRefused,  // no descriptor was left; the connection was closed
    kFailed,   // no descriptor was left; the connection is still pending
  };

  // REQUIRES: a non-blocking socket that listens.
  explicit Acceptor(int socket);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  int socket() const { return socket_; }

  // Stores the new socket in `accepted` for kAccepted; the caller owns the socket.
  Outcome accept(int& accepted);

 private:
  Outcome refuseConnection();

  const int socket_;
  int reserve_;
};

}  // namespace orb

#endif
