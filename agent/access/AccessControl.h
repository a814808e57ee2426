// The decision whether a client may call an operation.

#ifndef AGENT_ACCESS_ACCESSCONTROL_H
#define AGENT_ACCESS_ACCESSCONTROL_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "agent/access/AccessRules.h"
#include "agent/access/Operations.h"
#include "agent/base/RefusalLog.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

struct AccessSettings {
  bool readOnly = false;  // refuse every change
  // The endpoint that serves the console and the session; empty: every endpoint.
  std::optional<std::size_t> consoleEndpoint;
};

// Checks every request from another process. Logs refusals at a limited rate.
//
// Thread-safety: any thread.
// Ownership: owns the rules.
// Errors: check throws CORBA::NO_PERMISSION, with a minor code of permission_minor.
class AccessControl {
 public:
  AccessControl(AccessRules rules, AccessSettings settings, RefusalLog::Clock clock);

  AccessControl(const AccessControl&) = delete;
  AccessControl& operator=(const AccessControl&) = delete;

  // The check of the server: orb::RequestCheck.
  void check(const orb::ObjectKey& key, const orb::Request& request);

  // Later requests follow the new rules.
  void replaceRules(AccessRules rules);

 private:
  struct Refusal {
    unsigned long minor = 0;
    std::string reason;
  };

  std::optional<Refusal> refusalOf(ObjectKind kind, const orb::Request& request) const;
  std::shared_ptr<const AccessRules> rules() const;

  const AccessSettings settings_;
  RefusalLog log_;
  mutable Mutex mutex_;
  std::shared_ptr<const AccessRules> rules_ GUARDED_BY(mutex_);
};

}  // namespace agent

#endif
