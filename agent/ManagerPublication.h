// Where clients find the reference of the manager.

#ifndef AGENT_MANAGERPUBLICATION_H
#define AGENT_MANAGERPUBLICATION_H

#include <functional>
#include <optional>
#include <string>

#include "agent/Options.h"
#include "agent/northbound/CosNamingEntry.h"
#include "orb/orb.h"

namespace agent {

// Binds the manager in the naming service of the options and writes the IOR file of the options.
// The destructor unbinds the manager; the IOR file stays.
//
// Thread-safety: constructed and destroyed by one thread.
class ManagerPublication {
 public:
  // stopRequested is asked while the naming service does not answer. Throws NamingError
  // and FileError.
  ManagerPublication(orb::Server& server, CORBA::Object_ptr manager, const Options& options,
                     const std::function<bool()>& stopRequested);

 private:
  std::optional<CosNamingEntry> entry_;
};

// An object reference as text.
std::string referenceText(orb::Server& server, CORBA::Object_ptr object);

}  // namespace agent

#endif
