// Check of the sockets on which this process listens.

#ifndef ORB_LISTENING_H
#define ORB_LISTENING_H

#include <map>
#include <string>
#include <vector>

#include "orb/orb.h"

namespace orb {

// Compares the listening sockets of the process before and after the start of an ORB, so that an
// endpoint from the environment or from a configuration file is detected.
//
// Thread-safety: none. Owns its copy of the addresses. Errors: std::bad_alloc; see also
// requireOnly(). REQUIRES: no other thread opens a listening socket in between.
class ListeningCheck {
 public:
  // Records the present listening sockets.
  ListeningCheck();

  // Throws EndpointError if the process listens on a new socket that does not belong to one of the
  // endpoints, one socket each. Without a /proc file system no socket is found and the check
  // passes.
  void requireOnly(const std::vector<Endpoint>& endpoints) const;

 private:
  using Sockets = std::map<int, Endpoint>;  // by file descriptor

  static Sockets sockets();

  const Sockets before_;
};

}  // namespace orb

#endif
