#include "checkedcalls.h"

#include <omniORB4/CORBA.h>
#include <omniORB4/omniIOR.h>
#include <omniORB4/omniInterceptors.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/GIOP_C.h>
// clang-format on

#include "destinations.h"
#include "orb/checkedcalls.h"

namespace orb {
namespace {

// The check of a thread. A request with other addresses than those of the reference is forwarded.
struct ThreadCheck {
  const DestinationCheck* check = nullptr;
  const omniIOR* addresses = nullptr;
};

thread_local ThreadCheck threadCheck;

// Runs before a connection for the request is opened. Checks a forwarded request.
CORBA::Boolean checkRequest(omni::omniInterceptors::clientSendRequest_T::info_T& info) {
  if (threadCheck.check != nullptr && info.giop_c.ior() != threadCheck.addresses) {
    (*threadCheck.check)(destinationsIn(*info.giop_c.ior()));
  }
  return true;
}

// Runs for every new connection, before the first request. The ORB has no other hook for a
// forwarded LocateRequest.
CORBA::Boolean checkConnection(omni::omniInterceptors::clientOpenConnection_T::info_T& info) {
  if (threadCheck.check != nullptr) {
    omni::giopStrand& strand = info.giop_c.strand();
    try {
      (*threadCheck.check)({destinationIn(strand.connection->peeraddress())});
    } catch (...) {
      strand.state(omni::giopStrand::DYING);
      throw;
    }
  }
  return true;
}

}  // namespace

void interceptCalls() {
  omni::omniInterceptors* const interceptors = omniORB::getInterceptors();
  interceptors->clientSendRequest.add(checkRequest);
  interceptors->clientOpenConnection.add(checkConnection);
}

CheckedCalls::CheckedCalls(CORBA::Object_ptr reference, const DestinationCheck& check) noexcept {
  omniIOR* const ior = reference->_PR_getobj()->_getIOR();
  threadCheck = {&check, ior};
  ior->release();  // the reference keeps the IOR alive
}

CheckedCalls::~CheckedCalls() {
  threadCheck = {};
}

}  // namespace orb
