// An entry of this agent in a CORBA naming service.

#ifndef AGENT_NORTHBOUND_NAMINGENTRY_H
#define AGENT_NORTHBOUND_NAMINGENTRY_H

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
class NamingEntry {
 public:
  // The service as an object reference of any form. Throws NamingError.
  NamingEntry(CORBA::ORB_ptr orb, const std::string& service, const std::string& name,
              CORBA::Object_ptr object);
  ~NamingEntry();

  NamingEntry(const NamingEntry&) = delete;
  NamingEntry& operator=(const NamingEntry&) = delete;

 private:
  CosNaming::NamingContext_var context_;
  CosNaming::Name name_;
  CORBA::Object_var object_;
};

}  // namespace agent

#endif
