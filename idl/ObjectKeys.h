// The keys of the agent's objects: corbaloc::HOST:PORT/KEY reaches them.

#ifndef IDL_OBJECTKEYS_H
#define IDL_OBJECTKEYS_H

namespace object_key {

constexpr const char* kManager = "TopoManagement";
constexpr const char* kConsole = "TopoAgentConsole";
constexpr const char* kSession = "TopoAgentSession";

}  // namespace object_key

#endif
