#include "requests.h"

#include <omniORB4/omniInterceptors.h>
#include <omniORB4/omniORB.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/giopStreamImpl.h>
#include <omniORB4/internal/GIOP_S.h>
// clang-format on

#include <mutex>
#include <shared_mutex>
#include <utility>

namespace orb {
namespace {

// Like the log function, an interceptor is a plain function without context.
std::shared_mutex observerMutex;
RequestObserver requestObserver;  // guarded by observerMutex

CORBA::Boolean observeRequest(omni::omniInterceptors::serverReceiveRequest_T::info_T& info) {
  const std::shared_lock<std::shared_mutex> lock(observerMutex);
  if (requestObserver) {
    const auto* key = reinterpret_cast<const char*>(info.giop_s.key());
    requestObserver(ObjectKey(key, static_cast<std::size_t>(info.giop_s.keysize())));
  }
  return true;
}

}  // namespace

void setRequestObserver(RequestObserver observer) {
  const std::unique_lock<std::shared_mutex> lock(observerMutex);
  requestObserver = std::move(observer);
}

void interceptRequests(bool on) {
  auto& interceptor = omniORB::getInterceptors()->serverReceiveRequest;
  if (on) {
    interceptor.add(observeRequest);
  } else {
    interceptor.remove(observeRequest);
  }
}

}  // namespace orb
