#include "client/commands/Commands.h"

#include <algorithm>
#include <memory>

#include "client/agent/Connection.h"
#include "client/agent/Fetch.h"
#include "client/commands/Backup.h"
#include "client/commands/ConsoleCommands.h"
#include "client/commands/ObjectNames.h"
#include "client/commands/SetAttribute.h"
#include "client/commands/Status.h"
#include "client/output/PrintFunctions.h"
#include "client/output/Tree.h"

namespace topoctl {
namespace {

// What a view delivers.
struct Nodes {
  using List = TopoManagementManager::NodeList_T;
  using ListOut = TopoManagementManager::NodeList_T_out;
  using Iterator = TopoManagementManager::NodeIterator_I;
  using IteratorOut = TopoManagementManager::NodeIterator_I_out;
  static const auto& description() { return nodeDescription(); }
};
struct Links {
  using List = topologicalLink::TopologicalLinkList_T;
  using ListOut = topologicalLink::TopologicalLinkList_T_out;
  using Iterator = topologicalLink::TopologicalLinkIterator_I;
  using IteratorOut = topologicalLink::TopologicalLinkIterator_I_out;
  static const auto& description() { return linkDescription(); }
};

// The first call of a view.
template <typename Records>
using Operation = std::function<void(CORBA::ULong, const typename Records::ListOut&,
                                     const typename Records::IteratorOut&)>;

// A view's operation, made ready for a session.
template <typename Records>
using Prepare = Operation<Records> (*)(const Session&);

template <typename Records>
Batches<typename Records::List> fetchView(const Session& session, Prepare<Records> prepare) {
  return fetchAll<typename Records::List, typename Records::Iterator>(
      session.options.howMany, prepare(session), session.progress);
}

// `function` is called with a Session.
template <typename Function>
RunFunction atManager(Function function) {
  return [function](const Call& call) {
    const auto manager = connect(call.orb, call.options);
    return function({manager.in(), call.options, call.progress});
  };
}

template <typename Records>
RunFunction view(Prepare<Records> prepare) {
  return atManager([prepare](const Session& session) {
    return printer(fetchView<Records>(session, prepare), Records::description(),
                   session.options.format);
  });
}

using ConsoleFunction = PrintFunction (*)(TopoAgent::Console_I_ptr, const Options&);

RunFunction atConsole(ConsoleFunction function) {
  return [function](const Call& call) {
    const auto console = connectConsole(call.orb, call.options);
    return function(console.in(), call.options);
  };
}

Operation<Nodes> topo(const Session& session) {
  return [&session](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    session.manager->getTopoSubnetworkViewInfo(howMany, list, iterator);
  };
}

Operation<Nodes> protect(const Session& session) {
  return [&session](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    session.manager->getProtectSubnetworkViewInfo(howMany, list, iterator);
  };
}

Operation<Nodes> below(const Session& session) {
  return [&session, name = objectName(session)](CORBA::ULong howMany, const auto& list,
                                                const auto& iterator) {
    session.manager->getViewInfoByTopoSubnetwork(name, howMany, list, iterator);
  };
}

Operation<Nodes> clocks(const Session& session) {
  return [&session](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    session.manager->getClockSourceSubnetworkViewInfo(howMany, list, iterator);
  };
}

Operation<Links> clockLinks(const Session& session) {
  return [&session](CORBA::ULong howMany, const auto& list, const auto& iterator) {
    session.manager->getAllClockSourceViewlTopologicalLinks(howMany, list, iterator);
  };
}

PrintFunction tree(const Session& session) {
  const auto nodes = std::make_shared<const Batches<Nodes::List>>(fetchView<Nodes>(session, topo));
  return [nodes](std::ostream& out) { printTree(*nodes, out); };
}

PrintFunction capabilities(const Session& session) {
  common::CapabilityList_T_var list;
  session.manager->getCapabilities(list.out());
  return pairPrinter(list._retn(), session.options.format);
}

}  // namespace

const std::vector<Command>& commands() {
  static const std::vector<Command> table = {
      {"topo", "The topology subnetwork view: its nodes", Takes::kNothing, Formats::kAll, nullptr,
       view<Nodes>(topo)},
      {"protect", "The protect subnetwork view: its nodes", Takes::kNothing, Formats::kAll, nullptr,
       view<Nodes>(protect)},
      {"below", "The nodes below a topology subnetwork", Takes::kSubnetwork, Formats::kAll, nullptr,
       view<Nodes>(below)},
      {"clocks", "The clock source view: its nodes", Takes::kNothing, Formats::kAll, nullptr,
       view<Nodes>(clocks)},
      {"clock-links", "The clock source view: its topological links", Takes::kNothing,
       Formats::kAll, nullptr, view<Links>(clockLinks)},
      {"tree", "The topology subnetwork view as a tree by parents", Takes::kNothing,
       Formats::kTable, "a tree is drawn for people; topo has the same nodes as records",
       atManager(tree)},
      {"set", "Sets an attribute of an object: user-label, owner, native-name or info",
       Takes::kAttribute, Formats::kAll, nullptr, atManager(setAttribute)},
      {"capabilities", "The operations that the agent's manager supports", Takes::kNothing,
       Formats::kAll, nullptr, atManager(capabilities)},
      {"watch", "Prints what changes, until it is interrupted", Takes::kWatch,
       Formats::kTableAndJson, "events of different kinds have no columns in common", nullptr},
      {"node create", "Creates a topology node", Takes::kNewNode, Formats::kAll, nullptr,
       atConsole(createNode)},
      {"node delete", "Deletes a topology node and what is below it", Takes::kNode, Formats::kAll,
       nullptr, atConsole(deleteNode)},
      {"node rename", "Gives a topology node another name", Takes::kNewName, Formats::kAll, nullptr,
       atConsole(renameNode)},
      {"import", "Adds the network of a file to the agent's", Takes::kFile, Formats::kAll, nullptr,
       atConsole(importNetwork)},
      {"backup", "Writes a copy of the agent's store to a new file", Takes::kNewFile, Formats::kAll,
       nullptr, atConsole(backup)},
      {"test-switch", "Turns the agent's test switch on or off", Takes::kSwitch, Formats::kAll,
       nullptr, atConsole(setTestSwitch)},
      {"status", "How the agent is, and who receives its notifications", Takes::kNothing,
       Formats::kAll, nullptr, atConsole(status)},
      {"module reload", "Takes the module out of the agent and puts it in again", Takes::kNothing,
       Formats::kAll, nullptr, atConsole(reloadModule)},
  };
  return table;
}

namespace {

auto findCommand(const std::string& name) {
  return std::find_if(commands().begin(), commands().end(),
                      [&name](const Command& command) { return command.name == name; });
}

}  // namespace

bool isCommand(const std::string& name) {
  return findCommand(name) != commands().end();
}

const Command& commandNamed(const std::string& name) {
  return *findCommand(name);
}

const std::vector<Group>& commandGroups() {
  static const std::vector<Group> table = {
      {"node", "Changes the topology: node create, node delete, node rename"},
      {"module", "The agent's module: module reload"},
  };
  return table;
}

}  // namespace topoctl
