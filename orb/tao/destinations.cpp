#include "orb/destinations.h"

#include <tao/Profile.h>
#include <tao/Stub.h>

#include "profiles.h"

namespace orb {
namespace {

Destination destinationAt(const Endpoint& endpoint) {
  return endpoint.transport == Transport::kUnix
             ? Destination{Destination::Kind::kUnix, format(endpoint)}
             : Destination{Destination::Kind::kIp, endpoint.host};
}

}  // namespace

std::vector<Destination> destinationsOf(CORBA::Object_ptr reference) {
  std::vector<Destination> result;
  TAO_Stub* const stub = reference->_stubobj();
  if (stub == nullptr) {
    return result;
  }
  const TAO_MProfile& profiles = stub->base_profiles();
  for (TAO_PHandle i = 0; i < profiles.profile_count(); ++i) {
    for (const Endpoint& each : endpointsIn(const_cast<TAO_Profile&>(*profiles.get_profile(i)))) {
      result.push_back(destinationAt(each));
    }
  }
  return result;
}

}  // namespace orb
