// The TCP sockets on which this process listens, as the kernel reports them.

#ifndef ORB_LISTENING_H
#define ORB_LISTENING_H

#include <map>
#include <string>

#include "orb/orb.h"

namespace orb {

// Compares the sockets on which the process listens before and after the start of an ORB.
//
// Thread-safety: none. No other thread begins to listen in between.
class ListeningCheck {
 public:
  // Remembers the sockets of now.
  ListeningCheck();

  // Throws EndpointError unless one socket has been added and it has the port of the endpoint.
  // Passes where the system does not tell.
  void requireOnly(const Endpoint& endpoint) const;

 private:
  using Sockets = std::map<int, Endpoint>;  // by file descriptor

  static Sockets sockets();

  const Sockets before_;
};

}  // namespace orb

#endif
