// The entry of the agent in a CORBA naming service.

#ifndef AGENT_NORTHBOUND_COSNAMINGENTRY_H
#define AGENT_NORTHBOUND_COSNAMINGENTRY_H

#include <functional>
#include <stdexcept>
#include <string>

#include "orb/naming.h"
#include "orb/orb.h"

namespace agent {

// The reason why the naming service has no entry, in one line. A plain value.
class NamingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The constructor binds the name. The destructor unbinds the name unless another agent has bound
// the name to its own object, and waits for the naming service for at most 4 seconds.
//
// Thread-safety: constructed and destroyed by one thread.
// Ownership: holds references to the naming context and to the object.
// Errors: the constructor throws NamingError; the destructor logs failures.
class CosNamingEntry {
 public:
  // service: an object reference in any form. The constructor repeats a call without an answer
  // after 2 seconds, for about 10 seconds in all, until stopRequested() is true.
  CosNamingEntry(CORBA::ORB_ptr orb, const std::string& service, const std::string& name,
                 CORBA::Object_ptr object, const std::function<bool()>& stopRequested);
  ~CosNamingEntry();

  CosNamingEntry(const CosNamingEntry&) = delete;
  CosNamingEntry& operator=(const CosNamingEntry&) = delete;

 private:
  void bind(CORBA::ORB_ptr orb, const std::string& service);

  CosNaming::NamingContext_var context_;
  CosNaming::Name name_;
  CORBA::Object_var object_;
};

}  // namespace agent

#endif
