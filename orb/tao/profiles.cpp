#include "profiles.h"

#include <tao/CDR.h>
#include <tao/Codeset_Manager.h>
#include <tao/Connector_Registry.h>
#include <tao/IIOP_Endpoint.h>
#include <tao/IIOP_Profile.h>
#include <tao/MProfile.h>
#include <tao/ORB_Core.h>
#include <tao/Strategies/UIOP_Endpoint.h>
#include <tao/Strategies/UIOP_Profile.h>
#include <tao/Tagged_Components.h>
#include <tao/Transport_Acceptor.h>

#include <algorithm>

#include "transports.h"

namespace orb {
namespace {

constexpr IOP::ComponentId kTls = 20;  // TAG_SSL_SEC_TRANS

// The port of TLS in a profile; 0: none.
std::uint16_t tlsPort(TAO_Profile& profile) {
  IOP::TaggedComponent component;
  component.tag = kTls;
  if (profile.tagged_components().get_component(component) == 0) {
    return 0;
  }
  TAO_InputCDR data(reinterpret_cast<const char*>(component.component_data.get_buffer()),
                    component.component_data.length());
  CORBA::Boolean order = false;
  if (!data.read_boolean(order)) {
    return 0;
  }
  data.reset_byte_order(order);
  CORBA::UShort supported = 0;
  CORBA::UShort required = 0;
  CORBA::UShort port = 0;
  return data.read_ushort(supported) && data.read_ushort(required) && data.read_ushort(port) ? port
                                                                                             : 0;
}

}  // namespace

// A profile with TLS is of a class derived from TAO_IIOP_Profile, whose endpoint() is not a
// TAO_IIOP_Endpoint. The profile of a corbaloc has no component, so the endpoint has the port of
// TLS.
std::vector<Endpoint> endpointsIn(TAO_Profile& profile) {
  std::vector<Endpoint> result;
  if (auto* const local = dynamic_cast<TAO_UIOP_Profile*>(&profile)) {
    for (TAO_Endpoint* each = local->endpoint(); each != nullptr; each = each->next()) {
      const char* const path = static_cast<TAO_UIOP_Endpoint*>(each)->rendezvous_point();
      result.push_back({path, 0, Transport::kUnix});
    }
  } else if (auto* const iiop = dynamic_cast<TAO_IIOP_Profile*>(&profile)) {
    const std::uint16_t component = tlsPort(profile);
    const std::uint16_t port = component == 0 ? tlsPortOf(*profile.endpoint()) : component;
    for (TAO_Endpoint* each = iiop->TAO_IIOP_Profile::endpoint(); each != nullptr;
         each = each->next()) {
      const auto* const endpoint = static_cast<TAO_IIOP_Endpoint*>(each);
      if (port != 0) {
        result.push_back({endpoint->host(), port, Transport::kTls});
      }
      if (endpoint->port() != 0 && endpoint->port() != port) {
        result.push_back({endpoint->host(), endpoint->port(), Transport::kTcp});
      }
    }
  }
  return result;
}

void addOrbComponents(TAO_Profile& profile, TAO_ORB_Core& core) {
  profile.tagged_components().set_orb_type(TAO_ORB_TYPE);
  if (TAO_Codeset_Manager* const codeSets = core.codeset_manager()) {
    codeSets->set_codeset(profile.tagged_components());
  }
}

void addTlsComponent(TAO_Profile& profile, std::uint16_t port) {
  constexpr CORBA::UShort kSupported = 0x66;  // integrity, confidentiality, trust in both sides
  constexpr CORBA::UShort kRequired = 0x06;   // integrity, confidentiality
  TAO_OutputCDR data;
  data.write_boolean(TAO_ENCAP_BYTE_ORDER);
  data.write_ushort(kSupported);
  data.write_ushort(kRequired);
  data.write_ushort(port);
  const ACE_Message_Block& bytes = *data.begin();
  IOP::TaggedComponent component;
  component.tag = kTls;
  component.component_data.length(static_cast<CORBA::ULong>(bytes.length()));
  std::copy_n(bytes.rd_ptr(), bytes.length(), component.component_data.get_buffer());
  profile.tagged_components().set_component(component);
}

TAO_Profile* decoded(TAO_Profile* profile, TAO_ORB_Core& core) {
  TAO_OutputCDR encoded;
  const bool valid = profile->encode(encoded) == 1;
  profile->_decr_refcnt();
  TAO_InputCDR bytes(encoded);
  return valid ? core.connector_registry()->create_profile(bytes) : nullptr;
}

int giveProfile(TAO_MProfile& profiles, TAO_Profile* profile) {
  if (profile == nullptr) {
    return -1;
  }
  const CORBA::ULong count = profiles.profile_count();
  if (profiles.size() > count || profiles.grow(count + 1) == 0) {
    if (profiles.give_profile(profile) != -1) {
      return 0;
    }
  }
  profile->_decr_refcnt();
  return -1;
}

}  // namespace orb
