#include "agent/access/Operations.h"

#include <algorithm>
#include <initializer_list>

#include "idl/ObjectKeys.h"

namespace agent {
namespace {

constexpr bool kChange = true;

void add(std::vector<Operation>& table, ObjectKind kind, const char* interface,
         std::optional<Role> role, bool isChange, std::initializer_list<const char*> names) {
  for (const char* const name : names) {
    table.push_back({kind, interface, name, role, isChange});
  }
}

void addNetwork(std::vector<Operation>& table) {
  constexpr ObjectKind kKind = ObjectKind::kNetwork;
  add(table, kKind, "TopoMgr_I", Role::kRead, !kChange,
      {"getTopoSubnetworkViewInfo", "getProtectSubnetworkViewInfo", "getViewInfoByTopoSubnetwork",
       "getClockSourceSubnetworkViewInfo", "getAllClockSourceViewlTopologicalLinks"});
  add(table, kKind, "Common_I", Role::kRead, !kChange, {"getCapabilities"});
  add(table, kKind, "Common_I", Role::kWrite, kChange,
      {"setNativeEMSName", "setUserLabel", "setOwner", "setAdditionalInfo"});
  for (const char* const iterator : {"NodeIterator_I", "TopologicalLinkIterator_I"}) {
    add(table, kKind, iterator, Role::kRead, !kChange, {"next_n", "getLength", "destroy"});
  }
  add(table, kKind, "Subscription_I", Role::kRead, !kChange, {"ping", "unsubscribe"});
}

void addConsole(std::vector<Operation>& table) {
  constexpr ObjectKind kKind = ObjectKind::kConsole;
  constexpr const char* kInterface = "Console_I";
  add(table, kKind, kInterface, Role::kOperate, kChange,
      {"createNode", "deleteNode", "renameNode", "moveNode", "changeNode"});
  add(table, kKind, kInterface, Role::kOperate, kChange,
      {"createElement", "renameElement", "setElementShown", "deleteElement"});
  add(table, kKind, kInterface, Role::kOperate, kChange,
      {"createClockPosition", "changeClockPosition", "deleteClockPosition", "createClockLink",
       "changeClockLink", "deleteClockLink"});
  add(table, kKind, kInterface, Role::kOperate, kChange,
      {"setLabel", "deleteLabel", "importNetwork", "setTestSwitch", "reloadModule"});
  add(table, kKind, kInterface, Role::kOperate, !kChange,
      {"getObject", "beginBackup", "beginExport", "continueBackup", "endBackup", "getStatus"});
}

// The operations that the ORB answers for every object. The console answers operators only.
void addImplicit(std::vector<Operation>& table) {
  for (const ObjectKind kind : {ObjectKind::kNetwork, ObjectKind::kSession, ObjectKind::kConsole}) {
    const auto role = kind == ObjectKind::kConsole ? std::optional(Role::kOperate) : std::nullopt;
    add(table, kind, "", role, !kChange,
        {"_is_a", "_non_existent", "_not_existent", "_interface", "_component", "_repository_id"});
  }
}

std::vector<Operation> makeTable() {
  std::vector<Operation> table;
  addNetwork(table);
  add(table, ObjectKind::kSession, "Session_I", Role::kRead, !kChange,
      {"subscribe", "getEventAccess"});
  addConsole(table);
  addImplicit(table);
  return table;
}

}  // namespace

ObjectKind kindOf(const orb::ObjectKey& key) {
  if (key == object_key::kConsole) {
    return ObjectKind::kConsole;
  }
  return key == object_key::kSession ? ObjectKind::kSession : ObjectKind::kNetwork;
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = makeTable();
  return table;
}

const Operation& operationOf(ObjectKind kind, const std::string& name) {
  static const Operation unknown{ObjectKind::kConsole, "", "", Role::kOperate, kChange};
  const std::vector<Operation>& table = operations();
  const auto found =
      std::find_if(table.begin(), table.end(), [kind, &name](const Operation& operation) {
        return operation.kind == kind && name == operation.name;
      });
  return found == table.end() ? unknown : *found;
}

}  // namespace agent
