// The managers that modules register, and the servants that they are served by.

#ifndef AGENT_NORTHBOUND_MANAGERREGISTRY_H
#define AGENT_NORTHBOUND_MANAGERREGISTRY_H

#include <map>
#include <memory>
#include <string>

#include "agent/northbound/GuardedManager.h"
#include "orb/orb.h"
#include "platform/agent/AgentConfig.h"

namespace agent {

// Thread-safety: one thread at a time, never from within a request.
class ManagerRegistry {
 public:
  // Topology managers are served behind the guard, which outlives this object; null: unguarded.
  explicit ManagerRegistry(orb::Server& server, const ViewGuard* guard = nullptr);

  ManagerRegistry(const ManagerRegistry&) = delete;
  ManagerRegistry& operator=(const ManagerRegistry&) = delete;

  // Throw ProcessException, as the contract says.
  void add(const std::string& name, NS_CORBA::MgrFactory* factory);
  void remove(const std::string& name);

  // Takes over the servant's creation reference and serves it at the key that is its name, in place
  // of a servant that was there before. Throws ProcessException.
  void serve(const std::string& name, POA_common::Common_I* servant);

  // Stops serving: waits until running requests have ended, then drops every servant.
  void retire();

  // The object that is served under a name, a new reference for the caller; nil when there is none.
  CORBA::Object_ptr reference(const std::string& name);

  // Whether a manager of this name is registered and served.
  bool serving(const std::string& name) const;

 private:
  struct Served {
    std::unique_ptr<orb::WellKnownObject> object;
    PortableServer::ServantBase_var servant;
    PortableServer::ServantBase_var guarded;  // serves the servant; null for an unguarded one
    CORBA::Object_var reference;
  };

  Served& servedUnder(const std::string& name);
  void publish(Served& served, POA_common::Common_I* servant);
  void retire(Served& served);

  orb::Server& server_;
  const ViewGuard* const guard_;
  std::map<std::string, NS_CORBA::MgrFactory*> factories_;  // not owned
  std::map<std::string, Served> served_;
};

}  // namespace agent

#endif
