#include "tests/unit/agent/support/NetworkFiles.h"

#include <stdexcept>
#include <tuple>
#include <utility>

#include "agent/formats/NetworkReader.h"
#include "tests/support/TemporaryDirectory.h"

agent::Network valueOf(agent::Result<agent::Network> network) {
  if (!network.ok()) {
    throw std::runtime_error(network.outcome().reason);
  }
  return std::move(network.value());
}

agent::Network readText(const std::string& content, const std::string& name) {
  const support::TemporaryDirectory directory;
  return valueOf(agent::readNetworkFile(directory.write(name, content)));
}

std::string refusalOf(const std::string& content, const std::string& name) {
  const support::TemporaryDirectory directory;
  const std::string text = agent::readNetworkFile(directory.write(name, content)).outcome().reason;
  const std::string prefix = directory.path().string() + '/';
  if (text.empty()) {
    return {};
  }
  return text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : "without the file: " + text;
}

std::string withFormat(const std::string& fields) {
  return R"({"format":"topo-network/1",)" + fields + '}';
}

std::string longText(char character) {
  std::string text;
  text.resize(10000000, character);
  return text;
}

NS_DOMAIN::TopoNode_T nodeOf(const std::string& id, const std::string& parent, std::uint32_t type,
                             const std::string& name) {
  NS_DOMAIN::TopoNode_T node;
  node.nodeId = id;
  node.parentId = parent;
  node.nativeName = name;
  node.nodeType = type;
  node.parentType = NS_DOMAIN::kTopoSubnetwork;
  return node;
}

NS_DOMAIN::ClockPositionInfo_T positionOf(const std::string& reference, const std::string& label,
                                          std::int32_t value1, std::int32_t value2) {
  NS_DOMAIN::ClockPositionInfo_T position;
  position.reference = reference;
  position.label = label;
  position.value1 = value1;
  position.value2 = value2;
  return position;
}

NS_DOMAIN::ClockTopoLinkInfo_T linkOf(const std::string& id, const std::string& name,
                                      const std::string& aEnd, const std::string& zEnd) {
  NS_DOMAIN::ClockTopoLinkInfo_T link;
  link.linkId = id;
  link.nativeName = name;
  link.aEndReference = aEnd;
  link.zEndReference = zEnd;
  return link;
}

namespace NS_DOMAIN {

bool operator==(const TopoNode_T& left, const TopoNode_T& right) {
  const auto fields = [](const TopoNode_T& node) {
    return std::tie(node.nodeId, node.parentId, node.nativeName, node.nodeType, node.parentType,
                    node.attribute3, node.attribute4, node.extendedAttributes);
  };
  return fields(left) == fields(right);
}

bool operator==(const ClockPositionInfo_T& left, const ClockPositionInfo_T& right) {
  const auto fields = [](const ClockPositionInfo_T& position) {
    return std::tie(position.reference, position.label, position.value1, position.value2);
  };
  return fields(left) == fields(right);
}

bool operator==(const ClockTopoLinkInfo_T& left, const ClockTopoLinkInfo_T& right) {
  const auto fields = [](const ClockTopoLinkInfo_T& link) {
    return std::tie(link.linkId, link.nativeName, link.aEndReference, link.zEndReference);
  };
  return fields(left) == fields(right);
}

}  // namespace NS_DOMAIN

namespace agent {

bool operator==(const NetworkElement& left, const NetworkElement& right) {
  return left.number == right.number && left.name == right.name && left.shown == right.shown &&
         left.shownForNode == right.shownForNode;
}

bool operator==(const ObjectLabel& left, const ObjectLabel& right) {
  return left.type == right.type && left.id == right.id && left.label == right.label;
}

bool operator==(const ObjectAttributes& left, const ObjectAttributes& right) {
  return left.type == right.type && left.id == right.id && left.owner == right.owner &&
         left.info == right.info;
}

bool operator==(const Network& left, const Network& right) {
  return left.ems == right.ems && left.topoNodes == right.topoNodes &&
         left.networkElements == right.networkElements &&
         left.clockPositions == right.clockPositions && left.clockLinks == right.clockLinks &&
         left.objectLabels == right.objectLabels && left.objectAttributes == right.objectAttributes;
}

void PrintTo(const Network& network, std::ostream* stream) {
  std::ostream& out = *stream;
  out << "\nems " << network.ems << '\n';
  for (const auto& node : network.topoNodes) {
    out << "node " << node.nodeId << '|' << node.parentId << '|' << node.nativeName << '|'
        << node.nodeType << '|' << node.parentType << '|' << node.attribute3 << '|'
        << node.attribute4;
    for (const auto& [key, value] : node.extendedAttributes) {
      out << '|' << key << '=' << value;
    }
    out << '\n';
  }
  for (const auto& element : network.networkElements) {
    out << "element " << element.number << '|' << element.name << '|' << element.shown
        << element.shownForNode << '\n';
  }
  for (const auto& position : network.clockPositions) {
    out << "position " << position.reference << '|' << position.label << '|' << position.value1
        << '|' << position.value2 << '\n';
  }
  for (const auto& link : network.clockLinks) {
    out << "link " << link.linkId << '|' << link.nativeName << '|' << link.aEndReference << '|'
        << link.zEndReference << '\n';
  }
  for (const auto& label : network.objectLabels) {
    out << "label " << label.type << '|' << label.id << '|' << label.label << '\n';
  }
}

}  // namespace agent

agent::Network sampleNetwork() {
  return readText(withFormat(R"(
    "ems": "Köln \"1\"",
    "topoNodes": [
      {"id": "root", "parent": "0", "params": [-2147483648, 2147483647],
       "attributes": [["location", "Hall4||3"], ["location", "again"], ["", ""]]},
      {"id": "b\nb", "parent": "root", "name": "tab\there", "type": 4294967295, "parentType": 0},
      {"id": "NE=5", "parent": "b\nb", "name": "'; DROP TABLE topo_node; --", "type": 1},
      {"id": "a", "parent": "root", "name": "\ud83d\ude00", "attributes": [["k", "v"]]}],
    "networkElements": [
      {"number": 7, "name": "seven"}, {"number": -5, "shown": true},
      {"number": 6, "name": "six", "shown": true}],
    "clockPositions": [
      {"reference": "NE=7", "label": "seven", "values": [-1, 2]}, {"reference": ""}],
    "clockLinks": [
      {"id": "z", "name": "SDH/x", "a": "NE=7", "z": "NE=6"}, {"id": "a"}],
    "objectLabels": [
      {"type": 201, "id": "z", "label": "stored"}, {"type": -1, "id": "z"}])"));
}

agent::Network wideNetwork(std::size_t nodes) {
  agent::Network network;
  for (std::size_t i = 0; i < nodes; ++i) {
    NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
    node.nodeId = "node " + std::to_string(i);
    node.parentId = i == 0 ? "" : "node 0";
    node.nodeType = NS_DOMAIN::kTopoSubnetwork;
    node.parentType = NS_DOMAIN::kTopoSubnetwork;
  }
  return network;
}
