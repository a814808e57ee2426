#include "requests.h"

#include <omniORB4/callHandle.h>
#include <omniORB4/minorCode.h>
#include <omniORB4/omniInterceptors.h>
#include <omniORB4/omniORB.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/giopStreamImpl.h>
#include <omniORB4/internal/GIOP_S.h>
#include <omniORB4/internal/omniCurrent.h>
// clang-format on

#include <utility>

#include "../addresses.h"
#include "../observerslot.h"
#include "incoming/connection.h"
#include "references.h"

namespace orb {
namespace {

// Global, because an interceptor has no context argument.
ObserverSlot requestObserver;

// The client of the latest request of the thread.
thread_local std::string peerOfThread;

// The numeric host of the ORB's address of a TCP peer.
std::string hostIn(const char* address) {
  return address == nullptr ? "" : parseEndpoint(withoutTransport(address)).host;
}

// The ORB received an empty substitute in place of a refused request, so nothing is dispatched.
void throwIfRefused(omni::giopConnection* connection) {
  const auto* const limited = dynamic_cast<Connection*>(connection);
  if (limited != nullptr && limited->isRefused()) {
    throw CORBA::MARSHAL(omni::MARSHAL_MessageSizeExceedLimitOnServer, CORBA::COMPLETED_NO);
  }
}

CORBA::Boolean observeRequest(omni::omniInterceptors::serverReceiveRequest_T::info_T& info) {
  throwIfRefused(info.giop_s.strand().connection);
  peerOfThread = hostIn(info.peeraddress());
  requestObserver.notify([&info] {
    const auto* key = reinterpret_cast<const char*>(info.giop_s.key());
    return ObjectKey(key, static_cast<std::size_t>(info.giop_s.keysize()));
  });
  return true;
}

}  // namespace

Request requestOf(omniCallHandle& call) {
  Request request;
  request.operation = call.operation_name();
  request.peer = hostIn(call.peeraddress());
  if (call.iop_s() != nullptr) {
    auto* const stream = omni::giopStream::downcast(&call.iop_s()->getStream());
    request.bytes = stream->currentInputPtr() + stream->impl()->inputRemaining(stream);
  }
  return request;
}

// omniCurrent has a call descriptor only within an operation.
std::string currentPeer() {
  omniCurrent* const current = omniCurrent::get();
  // The thread owns the object: omniCurrent::get() attaches a new one to the thread.
  // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
  return current != nullptr && current->callDescriptor() != nullptr ? peerOfThread : "";
}

void interceptRequests() {
  omniORB::getInterceptors()->serverReceiveRequest.add(observeRequest);
}

void setRequestObserver(RequestObserver observer) {
  requestObserver.set(std::move(observer));
}

}  // namespace orb
