#include "references.h"

#include <omniORB4/omniIOR.h>
#include <omniORB4/omniORB.h>

namespace orb {
namespace {

const std::string kTcp = "giop:tcp:";

}  // namespace

// What the ORB publishes in its references: "giop:tcp:HOST:PORT".
std::string publishedAddress(CORBA::Object_ptr reference) {
  if (CORBA::is_nil(reference)) {
    return "";
  }
  omniIOR* ior = reference->_PR_getobj()->_getIOR();
  std::string address;
  omni::giopAddressList& addresses = ior->getIORInfo()->addresses();
  if (!addresses.empty()) {
    address = addresses.front()->address();
  }
  ior->release();
  return address;
}

Endpoint parseAddress(const std::string& address) {
  const std::size_t host = kTcp.size();
  const std::size_t colon = address.rfind(':');
  std::string name = address.substr(host, colon - host);
  if (name.size() > 2 && name.front() == '[') {
    name = name.substr(1, name.size() - 2);
  }
  return {name, static_cast<std::uint16_t>(std::stoul(address.substr(colon + 1)))};
}

std::string addressOf(CORBA::Object_ptr reference) {
  const std::string address = publishedAddress(reference);
  return address.compare(0, kTcp.size(), kTcp) == 0 ? address.substr(kTcp.size()) : "";
}

CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key) {
  const std::string address = addressOf(reference);
  if (address.empty()) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return orb->string_to_object(("corbaloc:iiop:1.2@" + address + "/" + key).c_str());
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
