// The commands that call the manager.

#include <functional>
#include <memory>

#include "client/agent/CallFailure.h"
#include "client/agent/Fetch.h"
#include "client/commands/Commands.h"
#include "client/commands/CompletionScript.h"
#include "client/commands/ObjectNames.h"
#include "client/commands/SetAttribute.h"
#include "client/output/PrintFunctions.h"
#include "client/output/Table.h"
#include "client/output/Tree.h"

namespace topoctl {
namespace {

// The types of a view of nodes and of a view of links.
struct Nodes {
  using List = TopoManagementManager::NodeList_T;
  using ListOut = TopoManagementManager::NodeList_T_out;
  using Iterator = TopoManagementManager::NodeIterator_I;
  using IteratorOut = TopoManagementManager::NodeIterator_I_out;
  static const auto& fields() { return nodeFields(); }
};
struct Links {
  using List = topologicalLink::TopologicalLinkList_T;
  using ListOut = topologicalLink::TopologicalLinkList_T_out;
  using Iterator = topologicalLink::TopologicalLinkIterator_I;
  using IteratorOut = topologicalLink::TopologicalLinkIterator_I_out;
  static const auto& fields() { return linkFields(); }
};

// The operation of a view: how many records, then the _out arguments for records and iterator.
template <typename Records>
using Operation = std::function<void(CORBA::ULong, const typename Records::ListOut&,
                                     const typename Records::IteratorOut&)>;

// Binds the operation of a view to a context.
template <typename Records>
using Prepare = Operation<Records> (*)(const ManagerContext&);

template <typename Records>
Batches<typename Records::List> fetchView(const ManagerContext& context, Prepare<Records> prepare) {
  return fetchAll<typename Records::List, typename Records::Iterator>(
      context.options.access.howMany, prepare(context), context.progress);
}

// A command that connects to the manager and calls `function` with a ManagerContext. The function
// runs again when it meets a reload of the module.
template <typename Function>
CallFunction atManager(Function function) {
  return [function](const CommandContext& context) {
    return callManager(context.orb, context.options.access, context.retry,
                       [&](TopoManagementManager::TopoMgr_I_ptr manager) -> PrintFunction {
                         return function({manager, context.options, context.progress});
                       });
  };
}

template <typename Records>
CallFunction view(Prepare<Records> prepare) {
  return atManager([prepare](const ManagerContext& context) {
    return listPrinter(fetchView<Records>(context, prepare), Records::fields(),
                       context.options.style());
  });
}

Operation<Nodes> topo(const ManagerContext& context) {
  return [&context](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    context.manager->getTopoSubnetworkViewInfo(howMany, list, iterator);
  };
}

Operation<Nodes> protect(const ManagerContext& context) {
  return [&context](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    context.manager->getProtectSubnetworkViewInfo(howMany, list, iterator);
  };
}

// The agent's reason does not name the object.
[[noreturn]] void refuseSubnetwork(const globaldefs::NVSList_T& name, const Failure& refusal) {
  throw Failure(refusal.code(), refusal.what() + (" (there is no topology subnetwork {" +
                                                  tableText(InfoPairs{&name}) + "})"));
}

Operation<Nodes> below(const ManagerContext& context) {
  return [&context, name = objectName(context)](CORBA::ULong howMany, const auto& list,
                                                const auto& iterator) {
    try {
      context.manager->getViewInfoByTopoSubnetwork(name, howMany, list, iterator);
    } catch (const globaldefs::ProcessingFailureException& refusal) {
      if (refusal.exceptionType != globaldefs::EXCPT_INVALID_INPUT) {
        throw;
      }
      refuseSubnetwork(name, currentFailure(context.options.access));
    }
  };
}

Operation<Nodes> clocks(const ManagerContext& context) {
  return [&context](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    context.manager->getClockSourceSubnetworkViewInfo(howMany, list, iterator);
  };
}

Operation<Links> clockLinks(const ManagerContext& context) {
  return [&context](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    context.manager->getAllClockSourceViewlTopologicalLinks(howMany, list, iterator);
  };
}

PrintFunction tree(const ManagerContext& context) {
  const auto nodes = std::make_shared<const Batches<Nodes::List>>(fetchView<Nodes>(context, topo));
  return [nodes](std::ostream& out) { printTree(*nodes, out); };
}

PrintFunction capabilities(const ManagerContext& context) {
  common::CapabilityList_T_var list;
  context.manager->getCapabilities(list.out());
  return pairPrinter(list._retn(), context.options.style());
}

}  // namespace

std::vector<Command> managerCommands() {
  return {
      {"topo", view<Nodes>(topo)},
      {"protect", view<Nodes>(protect)},
      {"below", view<Nodes>(below)},
      {"clocks", view<Nodes>(clocks)},
      {"clock-links", view<Links>(clockLinks)},
      {"tree", atManager(tree)},
      {"set", atManager(setAttribute)},
      {"completion", nullptr, printCompletionScript},
      {"capabilities", atManager(capabilities)},
  };
}

}  // namespace topoctl
