#include "client/Commands.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "client/Printer.h"
#include "client/Records.h"

namespace topoctl {
namespace {

using common::CapabilityList_T;
using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;

template <typename List>
PrintFunction printer(Batches<List> batches,
                      const Description<typename DescribedRows<List>::Record>& description,
                      Format format) {
  // Shared because a std::function must be copyable; batches are not.
  const auto shared = std::make_shared<const Batches<List>>(std::move(batches));
  return [shared, &description, format](std::ostream& out) {
    print(DescribedRows<List>(*shared, description), format, out);
  };
}

PrintFunction topoView(const Session& session) {
  auto nodes = fetchAll<NodeList_T, NodeIterator_I>(
      session.options.howMany,
      [&session](CORBA::ULong howMany, const NodeList_T_out& list,
                 const NodeIterator_I_out& iterator) {
        session.manager->getTopoSubnetworkViewInfo(howMany, list, iterator);
      },
      session.progress);
  return printer(std::move(nodes), nodeDescription(), session.options.format);
}

PrintFunction capabilities(const Session& session) {
  common::CapabilityList_T_var list;
  session.manager->getCapabilities(list.out());
  Batches<CapabilityList_T> batches;
  batches.add(list._retn());
  return printer(std::move(batches), capabilityDescription(), session.options.format);
}

}  // namespace

const std::vector<Command>& commands() {
  static const std::vector<Command> table = {
      {"topo", "The topology subnetwork view: its nodes", topoView},
      {"capabilities", "The operations that the agent's manager supports", capabilities},
  };
  return table;
}

const Command& commandNamed(const std::string& name) {
  return *std::find_if(commands().begin(), commands().end(),
                       [&name](const Command& command) { return command.name == name; });
}

}  // namespace topoctl
