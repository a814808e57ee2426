// Object references in text form.

#ifndef ORB_RESOLVE_H
#define ORB_RESOLVE_H

#include <chrono>
#include <stdexcept>
#include <string>

#include "orb/orb.h"

namespace orb {

// The text is not an object reference. what() is a clause about the text: "it has no #NAME".
// Thread-safety, ownership and errors: as std::runtime_error.
class MalformedReference : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The naming service of a corbaname answers, but gives no object. what() is a clause about the
// naming service: "has no object of the name 'X'". Thread-safety, ownership and errors: as
// std::runtime_error.
class NamingServiceError : public std::runtime_error {
 public:
  enum class Cause {
    kNotBound,          // no object is bound to the name
    kNotNamingService,  // the object at the address is not a NamingContextExt
  };

  NamingServiceError(Cause cause, const std::string& reason)
      : std::runtime_error(reason), cause_(cause) {}

  Cause cause() const { return cause_; }

 private:
  Cause cause_;
};

// Whether the reference has the scheme "corbaname:", so that resolve() calls a naming service.
bool isCorbaname(const std::string& reference);

// Returns the object of a reference, owned by the caller; nil for the IOR of nil. The call timeout
// of the object is `timeout`.
//
// Accepted forms, the scheme in upper or lower case:
//   IOR:HEX
//   corbaloc:ADDRESS,ADDRESS/KEY
//   corbaname:ADDRESS,ADDRESS/KEY#NAME   the KEY of the naming service is "NameService" by default
// An ADDRESS without a version is called with GIOP 1.2, because GIOP 1.0 carries no text beyond
// ISO-8859-1. In a NAME, %41 is the octet 0x41; a % without two hexadecimal digits is literal.
//
// A corbaname takes one call to the naming service, of at most `timeout`. The other forms take no
// call. Thread-safety: any thread. Throws MalformedReference, NamingServiceError, and the
// CORBA::SystemException of the call to the naming service.
CORBA::Object_ptr resolve(CORBA::ORB_ptr orb, const std::string& reference,
                          std::chrono::milliseconds timeout);

// Returns the naming service of a corbaname, owned by the caller. Makes no call. The call timeout
// of the object is `timeout`. Thread-safety: any thread. Throws MalformedReference. REQUIRES:
// isCorbaname(reference).
CORBA::Object_ptr namingServiceOf(CORBA::ORB_ptr orb, const std::string& reference,
                                  std::chrono::milliseconds timeout);

// Checks the form of a reference without a call. Throws MalformedReference for a text that
// resolve() does not accept, and for the IOR of nil. Thread-safety: any thread.
void checkReference(CORBA::ORB_ptr orb, const std::string& reference);

}  // namespace orb

#endif
