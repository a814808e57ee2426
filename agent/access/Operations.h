// The operations that the agent serves, and the roles that they need.

#ifndef AGENT_ACCESS_OPERATIONS_H
#define AGENT_ACCESS_OPERATIONS_H

#include <optional>
#include <string>
#include <vector>

#include "agent/access/Roles.h"
#include "orb/orb.h"

namespace agent {

enum class ObjectKind {
  kNetwork,  // managers, iterators and subscriptions
  kSession,
  kConsole,
};

// The session and the console are known by their keys.
ObjectKind kindOf(const orb::ObjectKey& key);

// What an operation needs. A plain value.
struct Operation {
  ObjectKind kind = ObjectKind::kNetwork;
  const char* interface = "";  // such as "Console_I"; "" for the operations of every object
  const char* name = "";
  std::optional<Role> role;  // empty: any role
  bool isChange = false;     // of the network or of the agent
};

// Every operation of the IDL, and the implicit operations of every object.
const std::vector<Operation>& operations();

// Returns the entry of an operation of an object. An operation that is not in the table needs
// kOperate and is a change, so that a new operation is closed until somebody decides.
// Thread-safety: any thread. Errors: none.
const Operation& operationOf(ObjectKind kind, const std::string& name);

}  // namespace agent

#endif
