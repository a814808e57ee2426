// The addresses to which the agent pushes notifications.

#ifndef AGENT_ACCESS_PUSHTARGETS_H
#define AGENT_ACCESS_PUSHTARGETS_H

#include <string>
#include <utility>
#include <vector>

#include "agent/access/AddressRange.h"
#include "orb/destinations.h"
#include "orb/orb.h"

namespace agent {

// Decides whether a consumer may be at an address, because the reference of a consumer may point
// anywhere: a client could make the agent connect to any host.
//
// A consumer may be at the address of its client, and in the configured ranges. The consumer of a
// client on this host may also be at the loopback, at an address of this host, and at a Unix
// socket. Every address of the reference is checked, and every address of a host name. A reference
// may have 100 addresses and two host names.
//
// Thread-safety: any thread. Ownership: owns the ranges. Errors: std::bad_alloc.
class PushTargets {
 public:
  explicit PushTargets(std::vector<AddressRange> ranges) : ranges_(std::move(ranges)) {}

  // Returns the reason why the agent does not push to a consumer at these addresses; "" if it does.
  // Looks host names up, and blocks meanwhile.
  std::string refusalOf(const std::vector<orb::Destination>& destinations,
                        const orb::Peer& client) const;

 private:
  std::string refusalOf(const orb::Destination& destination, const orb::Peer& client) const;
  bool allows(const std::string& address, const orb::Peer& client) const;

  const std::vector<AddressRange> ranges_;
};

}  // namespace agent

#endif
