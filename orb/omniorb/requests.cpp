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

#include <chrono>
#include <optional>
#include <string_view>
#include <utility>

#include "../callbackslot.h"
#include "incoming/connection.h"

namespace orb {
namespace {

// Global, because an interceptor has no context argument.
CallbackSlot<RequestCheck> requestCheck;
CallbackSlot<RequestObserver> requestObserver;

// Global for the same reason. Written while no ORB listens.
RequestMeter requestMeter;

// The client of the latest request of the thread.
thread_local Peer peerOfThread;

using Clock = std::chrono::steady_clock;

// The beginning of the request of the thread whose outcome is not known yet.
thread_local std::optional<Clock::time_point> unfinished;

void finishRequest(omni::GIOP_S& request, const CORBA::Exception* exception) {
  if (!unfinished) {
    return;  // a reply that cannot be encoded becomes an exception
  }
  FinishedRequest finished;
  finished.operation = request.operation();
  finished.duration = Clock::now() - *unfinished;
  if (exception != nullptr) {
    finished.exception = exception->_name();
    finished.isSystemException = dynamic_cast<const CORBA::SystemException*>(exception) != nullptr;
  }
  unfinished.reset();
  requestMeter(finished);
}

CORBA::Boolean finishWithReply(omni::omniInterceptors::serverSendReply_T::info_T& info) {
  finishRequest(info.giop_s, nullptr);
  return true;
}

CORBA::Boolean finishWithException(omni::omniInterceptors::serverSendException_T::info_T& info) {
  finishRequest(info.giop_s, info.exception);
  return true;
}

Request requestOf(omni::IOP_S& call, const char* operation) {
  Request request;
  request.operation = operation;
  request.peer = peerOfThread;
  auto* const stream = omni::giopStream::downcast(&call.getStream());
  request.bytes = stream->currentInputPtr() + stream->impl()->inputRemaining(stream);
  return request;
}

ObjectKey keyOf(omni::GIOP_S& call) {
  return {reinterpret_cast<const char*>(call.key()), static_cast<std::size_t>(call.keysize())};
}

// Whether a key names a POA but lacks the suffix that the keys of transient POAs have. All POAs of
// a server are transient, and the ORB does not check that the suffix is there.
bool isOfPoaWithoutSuffix(const ObjectKey& key) {
  constexpr char kName = '\xff';
  constexpr std::string_view kEnds("\xfe\0", 2);  // of the POA's name: with, and without a suffix
  const std::size_t end = key.find_first_of(kEnds);
  return (key[0] == kName || end == 0) && end != ObjectKey::npos && key[end] == '\0';
}

CORBA::Boolean interceptRequest(omni::omniInterceptors::serverReceiveRequest_T::info_T& info) {
  if (requestMeter) {
    unfinished = Clock::now();
  }
  omni::GIOP_S& call = info.giop_s;
  // Not a Connection: a client's connection that also carries calls from its server.
  if (const auto* const incoming = dynamic_cast<Connection*>(call.strand().connection)) {
    if (incoming->isRefused()) {
      // The ORB received an empty substitute for the request, so nothing is dispatched.
      throw CORBA::MARSHAL(omni::MARSHAL_MessageSizeExceedLimitOnServer, CORBA::COMPLETED_NO);
    }
    peerOfThread = incoming->peer();
  } else {
    peerOfThread = Peer();
  }
  requestCheck.with([&call](const RequestCheck& check) {
    check(keyOf(call), requestOf(call, call.operation_name()));
  });
  if (isOfPoaWithoutSuffix(keyOf(call))) {
    throw CORBA::OBJECT_NOT_EXIST(omni::OBJECT_NOT_EXIST_NoMatch, CORBA::COMPLETED_NO);
  }
  requestObserver.with([&call](const RequestObserver& observe) { observe(keyOf(call)); });
  return true;
}

}  // namespace

Request requestOf(omniCallHandle& call) {
  if (call.iop_s() != nullptr) {
    return requestOf(*call.iop_s(), call.operation_name());
  }
  Request request;
  request.operation = call.operation_name();
  return request;
}

// omniCurrent has a call descriptor only within an operation.
Peer currentPeer() {
  omniCurrent* const current = omniCurrent::get();
  // The thread owns the object: omniCurrent::get() attaches a new one to the thread.
  // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
  const bool inOperation = current != nullptr && current->callDescriptor() != nullptr;
  return inOperation ? peerOfThread : Peer();
}

void interceptRequests(RequestMeter meter) {
  requestMeter = std::move(meter);
  omni::omniInterceptors* const interceptors = omniORB::getInterceptors();
  interceptors->serverReceiveRequest.add(interceptRequest);
  if (requestMeter) {
    interceptors->serverSendReply.add(finishWithReply);
    interceptors->serverSendException.add(finishWithException);
  }
}

void setRequestObserver(RequestObserver observer) {
  requestObserver.set(std::move(observer));
}

void setRequestCheck(RequestCheck check) {
  requestCheck.set(std::move(check));
}

}  // namespace orb
