#include "agent/northbound/CosNamingEntry.h"

#include <chrono>

#include "agent/base/Log.h"

namespace agent {
namespace {

constexpr std::chrono::milliseconds kCallTimeout{2000};
constexpr int kMaxAttempts = 5;

NamingError failureOf(const std::string& service, const std::string& reason) {
  return NamingError("naming service " + service + ": " + reason);
}

CosNaming::NamingContext_ptr resolveContext(CORBA::ORB_ptr orb, const std::string& service) {
  const CORBA::Object_var object = orb->string_to_object(service.c_str());
  if (!CORBA::is_nil(object)) {
    orb::setCallTimeout(object, kCallTimeout);
  }
  CosNaming::NamingContext_var context = CosNaming::NamingContext::_narrow(object);
  if (CORBA::is_nil(context)) {
    throw failureOf(service, "the reference is not a naming context");
  }
  orb::setCallTimeout(context, kCallTimeout);
  return context._retn();
}

}  // namespace

CosNamingEntry::CosNamingEntry(CORBA::ORB_ptr orb, const std::string& service,
                               const std::string& name, CORBA::Object_ptr object,
                               const std::function<bool()>& stopRequested)
    : object_(CORBA::Object::_duplicate(object)) {
  name_.length(1);
  name_[0].id = CORBA::string_dup(name.c_str());
  for (int attempt = 1;; ++attempt) {
    try {
      bind(orb, service);
      return;
    } catch (const CORBA::SystemException& failure) {
      if (!orb::isTimeout(failure) || attempt == kMaxAttempts || stopRequested()) {
        throw failureOf(service, orb::describe(failure));
      }
    } catch (const CORBA::Exception& failure) {
      throw failureOf(service, "it refuses the name \"" + name + "\" with " + failure._name());
    }
  }
}

// Idempotent: a call that timed out may have bound the name.
void CosNamingEntry::bind(CORBA::ORB_ptr orb, const std::string& service) {
  context_ = resolveContext(orb, service);
  context_->rebind(name_, object_);
}

CosNamingEntry::~CosNamingEntry() {
  try {
    const CORBA::Object_var bound = context_->resolve(name_);
    if (bound->_is_equivalent(object_)) {
      context_->unbind(name_);
    }
  } catch (const CORBA::Exception& failure) {
    log(kLogErrors, std::string("the naming entry could not be removed: ") + failure._name());
  }
}

}  // namespace agent
