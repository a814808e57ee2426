#include "agent/northbound/NamingEntry.h"

#include "agent/northbound/Log.h"

namespace agent {
namespace {

CosNaming::NamingContext_ptr resolveContext(CORBA::ORB_ptr orb, const std::string& service) {
  const CORBA::Object_var object = orb->string_to_object(service.c_str());
  CosNaming::NamingContext_var context = CosNaming::NamingContext::_narrow(object);
  if (CORBA::is_nil(context)) {
    throw NamingError("naming service " + service + ": the reference is not a naming context");
  }
  return context._retn();
}

}  // namespace

NamingEntry::NamingEntry(CORBA::ORB_ptr orb, const std::string& service, const std::string& name,
                         CORBA::Object_ptr object)
    : object_(CORBA::Object::_duplicate(object)) {
  name_.length(1);
  name_[0].id = CORBA::string_dup(name.c_str());
  try {
    context_ = resolveContext(orb, service);
    context_->rebind(name_, object);
  } catch (const CORBA::SystemException& failure) {
    throw NamingError("naming service " + service + ": " + orb::describe(failure));
  } catch (const CORBA::Exception& failure) {
    throw NamingError("naming service " + service + ": it refuses the name \"" + name + "\" with " +
                      failure._name());
  }
}

NamingEntry::~NamingEntry() {
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
