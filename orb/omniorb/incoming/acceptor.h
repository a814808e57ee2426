// The listening socket.

#ifndef ORB_OMNIORB_INCOMING_ACCEPTOR_H
#define ORB_OMNIORB_INCOMING_ACCEPTOR_H

namespace orb {

// Accepts connections, also when file descriptors have run out: then a descriptor that is kept in
// reserve serves to accept and close them, so that clients do not hang and the socket does not stay
// readable.
//
// Thread-safety: none.
class Acceptor {
 public:
  enum class Outcome {
    kAccepted,
    kNone,     // nobody waits
    kRefused,  // no descriptor was left, the connection was closed
    kFailed,   // no descriptor was left, the connection still waits
  };

  // Owns the socket, which does not block. REQUIRES: it listens.
  explicit Acceptor(int socket);
  ~Acceptor();
  Acceptor(const Acceptor&) = delete;
  Acceptor& operator=(const Acceptor&) = delete;

  int socket() const { return socket_; }

  // The accepted socket is the caller's.
  Outcome accept(int& accepted);

 private:
  Outcome refuse();

  const int socket_;
  int reserve_;
};

}  // namespace orb

#endif
