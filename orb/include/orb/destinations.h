// The addresses to which calls through a reference connect.

#ifndef ORB_DESTINATIONS_H
#define ORB_DESTINATIONS_H

#include <string>
#include <vector>

#include "orb/corba.h"

namespace orb {

// An address in a reference. A plain value.
struct Destination {
  enum class Kind {
    kIp,     // a host: TCP or TLS
    kUnix,   // a Unix socket
    kOther,  // a transport that this interface does not know
  };

  Kind kind = Kind::kOther;
  std::string host;  // kIp: a name or a numeric address; otherwise for messages
};

// Returns every address of the reference to which the ORB can connect. Makes no call and looks no
// name up. Thread-safety: any thread. Throws std::bad_alloc. REQUIRES: not nil.
std::vector<Destination> destinationsOf(CORBA::Object_ptr reference);

// Looks a host up. Returns its numeric addresses; none for an unknown host. Blocks as long as the
// name service takes. Thread-safety: any thread. Throws std::bad_alloc.
std::vector<std::string> numericAddresses(const std::string& host);

}  // namespace orb

#endif
