// Addresses and keys in references.

#include <tao/Object_KeyC.h>
#include <tao/Profile.h>
#include <tao/Stub.h>

#include <optional>
#include <string>

#include "../tls.h"
#include "orb/orb.h"
#include "profiles.h"

namespace orb {
namespace {

// Returns null for nil and for a reference to a local object.
TAO_Profile* firstProfile(CORBA::Object_ptr reference) {
  TAO_Stub* const stub = CORBA::is_nil(reference) ? nullptr : reference->_stubobj();
  return stub == nullptr ? nullptr : stub->base_profiles().get_profile(0);
}

// Returns the first address of a reference. If the reference has addresses with and without TLS:
// the first with TLS when outgoing calls have TLS, otherwise the first without TLS.
std::optional<Endpoint> endpointOf(CORBA::Object_ptr reference) {
  TAO_Stub* const stub = CORBA::is_nil(reference) ? nullptr : reference->_stubobj();
  if (stub == nullptr) {
    return std::nullopt;
  }
  const Transport unwanted = isOutgoingTlsSet() ? Transport::kTcp : Transport::kTls;
  std::optional<Endpoint> other;
  TAO_MProfile& profiles = stub->base_profiles();
  for (TAO_PHandle i = 0; i < profiles.profile_count(); ++i) {
    for (const Endpoint& each : endpointsIn(*profiles.get_profile(i))) {
      if (each.transport != unwanted) {
        return each;
      }
      other = other ? other : each;
    }
  }
  return other;
}

}  // namespace

std::string addressOf(CORBA::Object_ptr reference) {
  const std::optional<Endpoint> endpoint = endpointOf(reference);
  return endpoint ? format(*endpoint) : "";
}

std::string corbaloc(const Endpoint& endpoint, const std::string& key) {
  switch (endpoint.transport) {
    case Transport::kUnix:
      return "corbaloc:uiop:1.2@" + endpoint.host + "|/" + key;
    case Transport::kTls:
      return "corbaloc:ssliop:1.2@" + format(endpoint) + "/" + key;
    default:
      return "corbaloc:iiop:1.2@" + format(endpoint) + "/" + key;
  }
}

CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key) {
  const std::optional<Endpoint> endpoint = endpointOf(reference);
  if (!endpoint) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return orb->string_to_object(corbaloc(*endpoint, key).c_str());
}

ObjectKey objectKeyOf(CORBA::Object_ptr reference) {
  const TAO::ObjectKey& key = firstProfile(reference)->object_key();
  return {reinterpret_cast<const char*>(key.get_buffer()), key.length()};
}

}  // namespace orb
