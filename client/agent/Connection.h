// Connects to the objects of the agent. Thread-safety of all functions: any thread.

#ifndef CLIENT_AGENT_CONNECTION_H
#define CLIENT_AGENT_CONNECTION_H

#include <string>

#include "client/base/AgentAccess.h"
#include "client/base/Failure.h"
#include "idl/ObjectKeys.h"
#include "orb/orb.h"

namespace topoctl {

// The options of an ORB that calls the agent.
orb::Options orbOptions(const AgentAccess& access);

// "the agent at 'REF'" or "the agent of the IOR file 'PATH'", for messages.
std::string describeAgent(const AgentAccess& access);

// "within N seconds; raise --timeout", for messages.
std::string describeTimeout(const AgentAccess& access);

// An object of the agent. Borrows its texts, which are literals.
struct Target {
  const char* key;      // at the first address of the manager's reference; null: the manager itself
  const char* type;     // the interface
  const char* missing;  // the end of the error about an agent without the object
};

inline constexpr Target kManager = {nullptr, "TopoMgr_I",
                                    "answers, but has no object of this name"};
inline constexpr Target kConsole = {
    object_key::kConsole, "Console_I",
    "answers, but has no console: it was started with --no-console, "
    "or it is another host than topo-agentd"};
inline constexpr Target kSession = {object_key::kSession, "Session_I",
                                    "answers, but sends no notifications to clients"};

// The agent answers, but has no object at the key of the target. Thread-safety, ownership and
// errors: as Failure.
class ObjectMissing : public Failure {
 public:
  explicit ObjectMissing(const std::string& text) : Failure(ExitCode::kUnreachable, text) {}
};

// ---- for callObject()

// Returns the object without a call, except that a corbaname takes a call to the naming service.
// The caller owns the result. Throws Failure: kUsage for a malformed reference, a reference without
// an address or an unreadable file, kUnreachable when a naming service does not answer or does not
// know the name.
CORBA::Object_ptr resolveTarget(CORBA::ORB_ptr orb, const AgentAccess& access,
                                const Target& target);

[[noreturn]] void throwWrongType(const AgentAccess& access, const Target& target);

// Throws Failure (kUnreachable) when `failure`, of a call to the object, means that no connection
// can be made or that the object does not exist (ObjectMissing). Returns otherwise.
void throwIfExplained(const CORBA::SystemException& failure, CORBA::Object_ptr object,
                      const AgentAccess& access, const Target& target);

// Resolves the target, asks the object for its type and returns the result of `call`, which gets a
// reference that is valid for the call.
//
// Throws what resolveTarget() and throwIfExplained() throw, and Failure (kCallFailed) for an object
// of another type; other exceptions of the calls pass.
template <typename Interface, typename Call>
auto callObject(CORBA::ORB_ptr orb, const AgentAccess& access, const Target& target, Call call) {
  const CORBA::Object_var object = resolveTarget(orb, access, target);
  try {
    const typename Interface::_var_type narrowed = Interface::_narrow(object);
    if (CORBA::is_nil(narrowed)) {
      throwWrongType(access, target);
    }
    return call(narrowed.in());
  } catch (const CORBA::SystemException& failure) {
    throwIfExplained(failure, object, access, target);
    throw;
  }
}

}  // namespace topoctl

#endif
