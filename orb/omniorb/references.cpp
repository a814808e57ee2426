#include "references.h"

#include <omniORB4/omniIOR.h>
#include <omniORB4/omniORB.h>

namespace orb {
namespace {

const std::string kTcp = "giop:tcp:";

// The first address of a reference in the ORB's notation; "" when the reference has none.
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

}  // namespace

std::string withoutTransport(const std::string& address) {
  return address.compare(0, kTcp.size(), kTcp) == 0 ? address.substr(kTcp.size()) : "";
}

std::string addressOf(CORBA::Object_ptr reference) {
  return withoutTransport(publishedAddress(reference));
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
