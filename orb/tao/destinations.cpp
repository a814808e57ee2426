#include "orb/destinations.h"

#include <tao/Endpoint.h>
#include <tao/IIOP_Endpoint.h>
#include <tao/Profile.h>
#include <tao/Stub.h>

namespace orb {
namespace {

Destination destinationIn(TAO_Endpoint& endpoint) {
  if (auto* const iiop = dynamic_cast<TAO_IIOP_Endpoint*>(&endpoint)) {
    return {Destination::Kind::kIp, iiop->host()};
  }
  return {Destination::Kind::kOther, "transport " + std::to_string(endpoint.tag())};
}

}  // namespace

// A profile of an unknown kind has no endpoint.
std::vector<Destination> destinationsOf(CORBA::Object_ptr reference) {
  std::vector<Destination> result;
  TAO_Stub* const stub = reference->_stubobj();
  if (stub == nullptr) {
    return result;
  }
  const TAO_MProfile& profiles = stub->base_profiles();
  for (TAO_PHandle i = 0; i < profiles.profile_count(); ++i) {
    TAO_Profile* const profile = const_cast<TAO_Profile*>(profiles.get_profile(i));
    for (TAO_Endpoint* each = profile->endpoint(); each != nullptr; each = each->next()) {
      result.push_back(destinationIn(*each));
    }
  }
  return result;
}

}  // namespace orb
