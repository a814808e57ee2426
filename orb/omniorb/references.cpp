#include <omniORB4/CORBA.h>
#include <omniORB4/omniIOR.h>
#include <omniORB4/omniORB.h>

#include <algorithm>
#include <string>
#include <vector>

#include "../tls.h"
#include "orb/orb.h"

namespace orb {
namespace {

// An address of a reference in the ORB's notation, and in the notation of a corbaloc.
struct Notation {
  const char* own;
  const char* corbaloc;
  const char* end = "";  // follows the address in a corbaloc
};

constexpr Notation kTcp{"giop:tcp:", "iiop:1.2@"};
constexpr Notation kTls{"giop:ssl:", "ssliop:1.2@"};
constexpr Notation kUnix{"giop:unix:", "omniunix:", ":"};

// A reference without a TCP address has port 0 in place of it.
bool hasNoPort(const std::string& address) {
  return address.size() > 2 && address.compare(address.size() - 2, 2, ":0") == 0;
}

// The addresses of a reference in the ORB's notation.
std::vector<std::string> addressesOf(CORBA::Object_ptr reference) {
  std::vector<std::string> result;
  if (CORBA::is_nil(reference)) {
    return result;
  }
  omniIOR* ior = reference->_PR_getobj()->_getIOR();
  for (const omni::giopAddress* address : ior->getIORInfo()->addresses()) {
    const std::string text = address->address();
    if (!hasNoPort(text)) {
      result.push_back(text);
    }
  }
  ior->release();
  return result;
}

// The part of an address after its prefix; "" for another prefix.
std::string withoutPrefix(const std::string& address, const std::string& prefix) {
  return address.compare(0, prefix.size(), prefix) == 0 ? address.substr(prefix.size()) : "";
}

// An address in the notation of a corbaloc; "" for another transport.
std::string corbalocAddress(const std::string& address) {
  for (const Notation& notation : {kTcp, kTls, kUnix}) {
    const std::string place = withoutPrefix(address, notation.own);
    if (!place.empty()) {
      return notation.corbaloc + place + notation.end;
    }
  }
  return "";
}

}  // namespace

std::string addressOf(CORBA::Object_ptr reference) {
  for (const std::string& address : addressesOf(reference)) {
    for (const Notation& notation : {kTcp, kTls}) {
      std::string place = withoutPrefix(address, notation.own);
      if (!place.empty()) {
        return place;
      }
    }
    const std::string path = withoutPrefix(address, kUnix.own);
    if (!path.empty()) {
      return format(Endpoint{path, 0, Transport::kUnix});
    }
  }
  return "";
}

std::string corbaloc(const Endpoint& endpoint, const std::string& key) {
  switch (endpoint.transport) {
    case Transport::kUnix:
      return "corbaloc:" + (kUnix.corbaloc + endpoint.host) + ":/" + key;
    case Transport::kTls:
      return "corbaloc:" + (kTls.corbaloc + format(endpoint)) + "/" + key;
    default:
      return "corbaloc:" + (kTcp.corbaloc + format(endpoint)) + "/" + key;
  }
}

CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key) {
  // In a corbaloc every TLS address has the host of the first address, so TLS and TCP are not
  // mixed.
  std::vector<std::string> all = addressesOf(reference);
  const char* const unwanted = isOutgoingTlsSet() ? kTcp.own : kTls.own;
  const auto isUnwanted = [unwanted](const std::string& address) {
    return !withoutPrefix(address, unwanted).empty();
  };
  if (!std::all_of(all.begin(), all.end(), isUnwanted)) {
    all.erase(std::remove_if(all.begin(), all.end(), isUnwanted), all.end());
  }
  std::string addresses;
  for (const std::string& address : all) {
    addresses += (addresses.empty() ? "" : ",") + corbalocAddress(address);
  }
  if (addresses.empty()) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return orb->string_to_object(("corbaloc:" + addresses + "/" + key).c_str());
}

void setCallTimeout(CORBA::Object_ptr reference, std::chrono::milliseconds timeout) {
  omniORB::setClientCallTimeout(reference, static_cast<CORBA::ULong>(timeout.count()));
}

ObjectKey objectKeyOf(CORBA::Object_ptr reference) {
  _CORBA_Unbounded_Sequence_Octet key;
  omniIOR* ior = reference->_PR_getobj()->_getIOR();
  IIOP::unmarshalObjectKey(ior->iopProfiles()[0], key);
  ior->release();
  return ObjectKey(reinterpret_cast<const char*>(key.get_buffer()), key.length());
}

}  // namespace orb
