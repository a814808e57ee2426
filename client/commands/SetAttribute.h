// The attributes of an object that can be set: one row an attribute.

#ifndef CLIENT_COMMANDS_SETATTRIBUTE_H
#define CLIENT_COMMANDS_SETATTRIBUTE_H

#include <vector>

#include "client/commands/Session.h"

namespace topoctl {

struct Attribute {
  const char* name;
  bool isPairs;      // set a pair at a time; otherwise a text
  bool mayBeUnique;  // among the objects of a kind
  PrintFunction (*set)(const Session&, const globaldefs::NVSList_T& object);
};

const std::vector<Attribute>& attributes();

// Runs `set` on the object and the attribute of the session's options.
PrintFunction setAttribute(const Session& session);

}  // namespace topoctl

#endif
