// Addresses and keys in references.

#include <tao/IIOP_Endpoint.h>
#include <tao/IIOP_Profile.h>
#include <tao/Object_KeyC.h>
#include <tao/Stub.h>

#include <string>

#include "orb/orb.h"

namespace orb {
namespace {

// Returns null for nil and for a reference to a local object.
TAO_Profile* firstProfile(CORBA::Object_ptr reference) {
  TAO_Stub* const stub = CORBA::is_nil(reference) ? nullptr : reference->_stubobj();
  return stub == nullptr ? nullptr : stub->base_profiles().get_profile(0);
}

}  // namespace

std::string addressOf(CORBA::Object_ptr reference) {
  auto* const profile = dynamic_cast<TAO_IIOP_Profile*>(firstProfile(reference));
  if (profile == nullptr) {
    return "";
  }
  auto* const endpoint = dynamic_cast<TAO_IIOP_Endpoint*>(profile->endpoint());
  return endpoint == nullptr ? "" : format(Endpoint{endpoint->host(), endpoint->port()});
}

std::string corbaloc(const Endpoint& endpoint, const std::string& key) {
  const char* const protocol = endpoint.transport == Transport::kTls ? "ssliop" : "iiop";
  return "corbaloc:" + (protocol + (":1.2@" + format(endpoint))) + "/" + key;
}

CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key) {
  const std::string address = addressOf(reference);
  if (address.empty()) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return orb->string_to_object(("corbaloc:iiop:1.2@" + address + "/" + key).c_str());
}

ObjectKey objectKeyOf(CORBA::Object_ptr reference) {
  const TAO::ObjectKey& key = firstProfile(reference)->object_key();
  return {reinterpret_cast<const char*>(key.get_buffer()), key.length()};
}

}  // namespace orb
