// Publishes the reference of the manager for clients.

#ifndef AGENT_MANAGERPUBLICATION_H
#define AGENT_MANAGERPUBLICATION_H

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "agent/Options.h"
#include "agent/northbound/CosNamingEntry.h"
#include "orb/orb.h"

namespace agent {

// Binds the manager in the naming service of the options and writes the IOR file of the options.
// The destructor unbinds the manager, and removes the IOR file unless another process has written
// another text into the file.
//
// Thread-safety: one thread. Ownership: owns the binding, borrows all arguments for the
// constructor. Errors: the constructor throws NamingError and FileError.
class ManagerPublication {
 public:
  // Calls stopRequested() repeatedly while the naming service does not answer.
  ManagerPublication(orb::Server& server, CORBA::Object_ptr manager, const Options& options,
                     const std::function<bool()>& stopRequested);
  ~ManagerPublication();

  ManagerPublication(const ManagerPublication&) = delete;
  ManagerPublication& operator=(const ManagerPublication&) = delete;

 private:
  std::filesystem::path iorFile_;  // empty: none
  std::string iorText_;
  std::optional<CosNamingEntry> entry_;
};

// An object reference as text.
std::string referenceText(orb::Server& server, CORBA::Object_ptr object);

}  // namespace agent

#endif
