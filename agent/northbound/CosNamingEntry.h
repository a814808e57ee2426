// An entry of this agent in a CORBA naming service.

#ifndef AGENT_NORTHBOUND_COSNAMINGENTRY_H
#define AGENT_NORTHBOUND_COSNAMINGENTRY_H

#include <functional>
#include <stdexcept>
#include <string>

#include "orb/naming.h"
#include "orb/orb.h"

namespace agent {

// The naming service cannot be reached or refuses the entry. One line.
class NamingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Bound by the constructor, unbound by the destructor unless somebody else has taken the name over.
// The destructor waits for the naming service for at most 4 seconds.
class CosNamingEntry {
 public:
  // The service as an object reference of any form. A service that does not answer within 2 seconds
  // is asked again, for about 10 seconds in all, unless stopRequested. Throws NamingError.
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
