#include "agent/northbound/CosNamingEntry.h"

#include <system_error>
#include <utility>

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

CosNaming::Name nameOf(const std::string& id) {
  CosNaming::Name name;
  name.length(1);
  name[0].id = CORBA::string_dup(id.c_str());
  return name;
}

}  // namespace

CosNamingEntry::CosNamingEntry(CORBA::ORB_ptr orb, std::string service, const std::string& name,
                               CORBA::Object_ptr object, const std::function<bool()>& stopRequested,
                               std::chrono::milliseconds checkInterval)
    : orb_(orb),
      service_(std::move(service)),
      nameText_(name),
      checkInterval_(checkInterval),
      name_(nameOf(name)),
      object_(CORBA::Object::_duplicate(object)) {
  bindFirst(stopRequested);
  try {
    checks_ = std::thread([this] { checkUntilStop(); });
  } catch (const std::system_error&) {
    unbind();
    throw;
  }
}

// A call that timed out may have bound the name, so the repeated call replaces a binding.
void CosNamingEntry::bindFirst(const std::function<bool()>& stopRequested) {
  for (int attempt = 1;; ++attempt) {
    try {
      context_ = resolveContext(orb_, service_);
      context_->rebind(name_, object_);
      return;
    } catch (const CORBA::SystemException& failure) {
      if (!orb::isTimeout(failure) || attempt == kMaxAttempts || stopRequested()) {
        throw failureOf(service_, orb::describe(failure));
      }
    } catch (const CORBA::Exception& failure) {
      throw failureOf(service_,
                      "it refuses the name \"" + nameText_ + "\" with " + failure._name());
    }
  }
}

void CosNamingEntry::checkUntilStop() {
  MutexLock lock(mutex_);
  while (!changed_.wait_for(lock.native(), checkInterval_,
                            [this]() REQUIRES(mutex_) { return stopping_; })) {
    lock.unlock();
    check();
    lock.lock();
  }
}

// A failure, such as a naming service that is away, is left to the next check.
void CosNamingEntry::check() noexcept {
  try {
    try {
      checkOnce();
      failed_ = false;
    } catch (const NamingError& failure) {
      logOnce(failure.what());
    } catch (const CORBA::SystemException& failure) {
      logOnce(failureOf(service_, orb::describe(failure)).what());
    } catch (const CORBA::Exception& failure) {
      logOnce(failureOf(service_, failure._name()).what());
    }
  } catch (...) {
    return;  // no memory for a line of the log
  }
}

// The first call after a restart of the service fails on the connection to the former process.
void CosNamingEntry::checkOnce() {
  try {
    bindIfMissing();
  } catch (const CORBA::SystemException& failure) {
    if (!orb::isConnectionClosed(failure)) {
      throw;
    }
    bindIfMissing();
  }
}

// The service is resolved anew: after a restart its root context may be another object.
void CosNamingEntry::bindIfMissing() {
  context_ = resolveContext(orb_, service_);
  try {
    const CORBA::Object_var bound = context_->resolve(name_);
    return;
  } catch (const CosNaming::NamingContext::NotFound&) {
    context_->bind(name_, object_);  // fails when another process has bound the name meanwhile
  }
  log(kLogErrors, "naming service " + service_ + " had lost the entry \"" + nameText_ +
                      "\", which is bound again");
}

void CosNamingEntry::logOnce(const std::string& failure) {
  if (!failed_) {
    failed_ = true;
    log(kLogErrors, failure);
  }
}

void CosNamingEntry::stopChecks() {
  {
    const MutexLock lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_one();
  checks_.join();
}

// Removes the binding, unless another process has replaced it. Logs a failure.
void CosNamingEntry::unbind() {
  try {
    const CORBA::Object_var bound = context_->resolve(name_);
    if (bound->_is_equivalent(object_)) {
      context_->unbind(name_);
    }
  } catch (const CORBA::Exception& failure) {
    log(kLogErrors, std::string("the naming entry could not be removed: ") + failure._name());
  }
}

CosNamingEntry::~CosNamingEntry() {
  stopChecks();
  unbind();
}

}  // namespace agent
