#include "bench/Networks.h"

namespace bench {
namespace {

using NS_DOMAIN::TopoNode_T;

constexpr std::size_t kFanOut = 10;

std::string subnetworkId(std::size_t number) {
  return "subnetwork-" + std::to_string(number);
}

std::string elementId(std::size_t number) {
  return "NE=" + std::to_string(number);
}

TopoNode_T node(const std::string& id, const std::string& parent, std::uint32_t type) {
  TopoNode_T result;
  result.nodeId = id;
  result.parentId = parent;
  result.nativeName = "Name of " + id;
  result.nodeType = type;
  result.parentType = NS_DOMAIN::kTopoSubnetwork;
  result.attribute3 = 8682;
  result.attribute4 = 50111;
  return result;
}

TopoNode_T subnetwork(std::size_t number, std::size_t parent) {
  return node(subnetworkId(number), number == 0 ? "" : subnetworkId(parent),
              NS_DOMAIN::kTopoSubnetwork);
}

void addElement(agent::Network& network, std::size_t number, std::size_t parent) {
  network.topoNodes.push_back(
      node(elementId(number), subnetworkId(parent), NS_DOMAIN::kTopoElement));
  network.networkElements.push_back(
      {static_cast<std::int32_t>(number), network.topoNodes.back().nativeName, true});
}

// A tree whose top is the subnetwork of this number.
void addTree(agent::Network& network, std::size_t top, std::size_t nodes) {
  for (std::size_t i = 0; i < nodes; ++i) {
    const std::size_t group = i / kFanOut;
    if (i % kFanOut != 0) {
      addElement(network, top * kFanOut + i, top + group);
    } else if (group == 0) {
      network.topoNodes.push_back(node(subnetworkId(top), "", NS_DOMAIN::kTopoSubnetwork));
    } else {
      network.topoNodes.push_back(subnetwork(top + group, top + (group - 1) / kFanOut));
    }
  }
}

}  // namespace

agent::Network tree(std::size_t nodes) {
  agent::Network network;
  network.ems = kEms;
  addTree(network, 0, nodes);
  return network;
}

agent::Network chains(std::size_t nodes, std::size_t depth) {
  agent::Network network;
  network.ems = kEms;
  for (std::size_t i = 0; i < nodes; ++i) {
    network.topoNodes.push_back(subnetwork(i, i % depth == 1 || depth == 1 ? 0 : i - 1));
  }
  return network;
}

agent::Network forest(std::size_t nodes) {
  agent::Network network;
  network.ems = kEms;
  const std::size_t first = nodesBelowTopOfForest(nodes) + 1;
  addTree(network, 0, first);
  addTree(network, first / kFanOut + 1, nodes - first);
  return network;
}

std::size_t nodesBelowTopOfForest(std::size_t nodes) {
  return nodes * 9 / 10 - 1;
}

agent::Network chain(std::size_t nodes) {
  agent::Network network;
  network.ems = kEms;
  for (std::size_t i = 0; i < nodes; ++i) {
    network.topoNodes.push_back(subnetwork(i, i == 0 ? 0 : i - 1));
  }
  return network;
}

agent::Network clock(std::size_t positions) {
  agent::Network network;
  network.ems = kEms;
  for (std::size_t i = 0; i < positions; ++i) {
    auto& position = network.clockPositions.emplace_back();
    position.reference = elementId(i);
    position.label = "Clock of " + position.reference;
    auto& link = network.clockLinks.emplace_back();
    link.linkId = "clock-" + std::to_string(i);
    link.nativeName = "SDH/" + link.linkId;
    link.aEndReference = position.reference;
    link.zEndReference = elementId(i + 1);
  }
  return network;
}

std::string networkFile(const agent::Network& network) {
  std::string text =
      std::string(R"({"format":"topo-network/1","ems":")") + kEms + R"(","topoNodes":[)";
  for (const TopoNode_T& each : network.topoNodes) {
    text += text.back() == '[' ? "" : ",";
    text += R"({"id":")" + each.nodeId + R"(","parent":")" + each.parentId + R"(","name":")" +
            each.nativeName + R"(","type":)" + std::to_string(each.nodeType) + R"(,"params":[)" +
            std::to_string(each.attribute3) + ',' + std::to_string(each.attribute4) + "]}";
  }
  return text + "]}\n";
}

}  // namespace bench
