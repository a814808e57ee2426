#include "agent/access/AccessControl.h"

#include <utility>

#include "agent/base/PrintableText.h"
#include "agent/base/RequestLog.h"
#include "idl/ObjectKeys.h"
#include "idl/PermissionMinors.h"

namespace agent {
namespace {

constexpr std::size_t kLogLines = 20;  // refusals in an interval
constexpr std::chrono::seconds kLogInterval{10};

const char* nameOf(Role role) {
  switch (role) {
    case Role::kRead:
      return "read";
    case Role::kWrite:
      return "write";
    case Role::kOperate:
      break;
  }
  return "operate";
}

std::string missingRole(const std::optional<Role>& role) {
  return role ? std::string("the client does not have the role ") + nameOf(*role)
              : "the client has no role";
}

// The object in the log: "the network" for managers, iterators and subscriptions.
const char* nameOf(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::kConsole:
      return "the console";
    case ObjectKind::kSession:
      return "the session";
    case ObjectKind::kNetwork:
      break;
  }
  return "the network";
}

// The object in the audit log: the key of a well-known object, or "the network". Other keys are
// random, or the client has invented them.
std::string recordedObject(const orb::ObjectKey& key) {
  const bool isPublic =
      key == object_key::kManager || key == object_key::kSession || key == object_key::kConsole;
  return isPublic ? key : nameOf(ObjectKind::kNetwork);
}

}  // namespace

AccessControl::AccessControl(AccessRules rules, AccessSettings settings, RefusalLog::Clock clock)
    : settings_(settings),
      log_(std::move(clock), kLogLines, kLogInterval),
      rules_(std::make_shared<const AccessRules>(std::move(rules))) {}

void AccessControl::replaceRules(AccessRules rules) {
  auto replacement = std::make_shared<const AccessRules>(std::move(rules));
  const MutexLock lock(mutex_);
  rules_ = std::move(replacement);
}

std::shared_ptr<const AccessRules> AccessControl::rules() const {
  const MutexLock lock(mutex_);
  return rules_;
}

void AccessControl::check(const orb::ObjectKey& key, const orb::Request& request) {
  const ObjectKind kind = kindOf(key);
  const std::optional<Refusal> refusal = refusalOf(kind, request);
  if (!refusal) {
    return;
  }
  log_.refused(orb::format(request.peer) + ": " + inQuotes(request.operation) + " of " +
               nameOf(kind) + " is refused: " + refusal->reason);
  recordRequest({request.peer, recordedObject(key), request.operation, "",
                 RequestRecord::Outcome::kRefused, refusal->reason});
  throw CORBA::NO_PERMISSION(static_cast<CORBA::ULong>(refusal->minor), CORBA::COMPLETED_NO);
}

std::optional<AccessControl::Refusal> AccessControl::refusalOf(ObjectKind kind,
                                                               const orb::Request& request) const {
  const Operation& operation = operationOf(kind, request.operation);
  const Roles roles = rules()->rolesOf(request.peer);
  if (operation.role ? !roles.has(*operation.role) : roles.empty()) {
    return Refusal{permission_minor::kNoRole, missingRole(operation.role)};
  }
  if (kind != ObjectKind::kNetwork && settings_.consoleEndpoint &&
      *settings_.consoleEndpoint != request.peer.endpoint) {
    return Refusal{permission_minor::kOtherEndpoint, "another endpoint serves it"};
  }
  if (settings_.readOnly && operation.isChange) {
    return Refusal{permission_minor::kReadOnly, "the agent is read-only"};
  }
  return std::nullopt;
}

}  // namespace agent
