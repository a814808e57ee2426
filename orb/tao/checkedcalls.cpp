#include "orb/checkedcalls.h"

#include "checkedcalls.h"

namespace orb {
namespace {

thread_local const DestinationCheck* threadCheck = nullptr;

}  // namespace

void checkForward(CORBA::Object_ptr target) {
  if (threadCheck != nullptr && !CORBA::is_nil(target)) {
    (*threadCheck)(destinationsOf(target));
  }
}

void checkConnection(const std::string& address) {
  if (threadCheck != nullptr) {
    (*threadCheck)({Destination{Destination::Kind::kIp, address}});
  }
}

CheckedCalls::CheckedCalls(CORBA::Object_ptr /*reference*/,
                           const DestinationCheck& check) noexcept {
  threadCheck = &check;
}

CheckedCalls::~CheckedCalls() {
  threadCheck = nullptr;
}

}  // namespace orb
