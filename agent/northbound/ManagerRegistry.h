// The registered managers and their servants.

#ifndef AGENT_NORTHBOUND_MANAGERREGISTRY_H
#define AGENT_NORTHBOUND_MANAGERREGISTRY_H

#include <map>
#include <memory>
#include <string>

#include "agent/northbound/GuardedManager.h"
#include "orb/orb.h"
#include "platform/agent/AgentConfig.h"

namespace agent {

// Knows the registered managers by name, and serves their servants at the object key of the name.
//
// Thread-safety: one thread at a time, never within a request.
// Ownership: borrows the factories and the guard; owns the creation references of the servants.
// Errors: ProcessException, as platform/agent/AgentConfig.h says.
class ManagerRegistry {
 public:
  // guard: of topology managers; outlives this object. Null: no guard.
  explicit ManagerRegistry(orb::Server& server, const ViewGuard* guard = nullptr);

  ManagerRegistry(const ManagerRegistry&) = delete;
  ManagerRegistry& operator=(const ManagerRegistry&) = delete;

  void add(const std::string& name, NS_CORBA::MgrFactory* factory);
  void remove(const std::string& name);

  // Takes over the creation reference of the servant, also on failure. Serves the servant at the
  // object key `name`, in place of an earlier servant.
  void serve(const std::string& name, POA_common::Common_I* servant);

  // Waits until running requests have ended, then releases every servant.
  void retire();

  // A new reference to the object at the key `name`; nil when no servant is served there.
  CORBA::Object_ptr reference(const std::string& name);

  // Whether a manager with this name is registered and has a servant.
  bool serving(const std::string& name) const;

 private:
  struct Served {
    std::unique_ptr<orb::WellKnownObject> object;
    PortableServer::ServantBase_var servant;
    PortableServer::ServantBase_var guarded;  // forwards to the servant; null without a guard
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
