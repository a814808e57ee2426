#include "agent/ManagerPublication.h"

#include "agent/process/ReplaceFile.h"
#include "idl/ObjectKeys.h"

namespace agent {

ManagerPublication::ManagerPublication(orb::Server& server, CORBA::Object_ptr manager,
                                       const Options& options,
                                       const std::function<bool()>& stopRequested) {
  if (!options.naming.empty()) {
    entry_.emplace(server.get(), options.naming, object_key::kManager, manager, stopRequested);
  }
  if (!options.iorFile.empty()) {
    replaceFile("IOR file", options.iorFile, referenceText(server, manager) + '\n');
  }
}

std::string referenceText(orb::Server& server, CORBA::Object_ptr object) {
  const CORBA::String_var text = server.get()->object_to_string(object);
  return text.in();
}

}  // namespace agent
