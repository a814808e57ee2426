#include "client/commands/ObjectIds.h"

#include "client/agent/Connection.h"
#include "client/agent/Fetch.h"
#include "orb/idl/TopoManagementManager.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;
using TopoManagementManager::TopoMgr_I;

constexpr const char* kElementClass = "ManagedElement";
constexpr const char* kSubnetworkClass = "TopoSubnetwork";

// The form in which a command takes the id of an object whose name ends with this pair; "" for an
// object that the command does not take.
std::string idOf(const TypedPair& pair, Values values) {
  const bool isElement = pair.name == kElementClass;
  switch (values) {
    case Values::kNode:
    case Values::kClockPosition:
      return isElement ? "NE=" + pair.value : pair.value;
    case Values::kSubnetwork:
      return pair.name == kSubnetworkClass ? pair.value : "";
    case Values::kElement:
      return isElement ? pair.value : "";
    case Values::kObject:
      return pair.name + "=" + pair.value;
    default:
      return pair.value;
  }
}

void addId(const NVSList_T& name, Values values, std::set<std::string>& ids) {
  if (name.length() == 0) {
    return;
  }
  const auto& last = name[name.length() - 1];
  const std::string id = idOf({last.name.in(), last.value.in()}, values);
  if (!id.empty()) {
    ids.insert(id);
  }
}

// `view(n, list, iterator)` is an operation of the manager.
template <typename List, typename Iterator, typename View>
void addIds(const AgentAccess& access, Values values, View view, std::set<std::string>& ids) {
  typename List::_var_type list;
  typename Iterator::_var_type iterator;
  view(access.howMany, list.out(), iterator.out());
  const IteratorGuard<Iterator> guard(iterator.in());
  for (CORBA::ULong i = 0; i < list->length(); ++i) {
    addId(list[i].name, values, ids);
  }
}

void addLinks(TopoManagementManager::TopoMgr_I_ptr manager, const AgentAccess& access,
              Values values, std::set<std::string>& ids) {
  using topologicalLink::TopologicalLinkIterator_I;
  using topologicalLink::TopologicalLinkList_T;
  addIds<TopologicalLinkList_T, TopologicalLinkIterator_I>(
      access, values,
      [manager](CORBA::ULong howMany, auto& list, auto& iterator) {
        manager->getAllClockSourceViewlTopologicalLinks(howMany, list, iterator);
      },
      ids);
}

void addNodes(TopoManagementManager::TopoMgr_I_ptr manager, const AgentAccess& access,
              Values values, std::set<std::string>& ids) {
  addIds<TopoManagementManager::NodeList_T, TopoManagementManager::NodeIterator_I>(
      access, values,
      [manager, values](CORBA::ULong howMany, auto& list, auto& iterator) {
        if (values == Values::kClockPosition) {
          manager->getClockSourceSubnetworkViewInfo(howMany, list, iterator);
        } else {
          manager->getTopoSubnetworkViewInfo(howMany, list, iterator);
        }
      },
      ids);
}

}  // namespace

std::set<std::string> objectIds(CORBA::ORB_ptr orb, const AgentAccess& access, Values values) {
  std::set<std::string> ids;
  if (!isObject(values)) {
    return ids;
  }
  callObject<TopoMgr_I>(orb, access, kManager, [&](TopoManagementManager::TopoMgr_I_ptr manager) {
    if (values != Values::kClockLink) {
      addNodes(manager, access, values, ids);
    }
    if (values == Values::kClockLink || values == Values::kObject) {
      addLinks(manager, access, values, ids);
    }
  });
  return ids;
}

}  // namespace topoctl
