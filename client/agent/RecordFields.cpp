#include "client/agent/RecordFields.h"

namespace topoctl {

using globaldefs::NameAndStringValue_T;
using topologicalLink::TopologicalLink_T;
using TopoManagementManager::Node_T;

const Description<Node_T>& nodeDescription() {
  static const Description<Node_T> description = {
      {"name", [](const Node_T& node) -> Value { return ObjectName{&node.name}; }},
      {"nativeEMSName",
       [](const Node_T& node) -> Value { return std::string_view(node.nativeEMSName.in()); }},
      {"nodeType", [](const Node_T& node) -> Value { return std::int64_t{node.nodeType}; }},
      {"nodeParam1", [](const Node_T& node) -> Value { return std::int64_t{node.nodeParam1}; }},
      {"nodeParam2", [](const Node_T& node) -> Value { return std::int64_t{node.nodeParam2}; }},
      {"relatedName", [](const Node_T& node) -> Value { return ObjectName{&node.relatedName}; }},
      {"additionalInfo",
       [](const Node_T& node) -> Value { return Information{&node.additionalInfo}; }},
  };
  return description;
}

const Description<TopologicalLink_T>& linkDescription() {
  using Link = TopologicalLink_T;
  static const Description<Link> description = {
      {"name", [](const Link& link) -> Value { return ObjectName{&link.name}; }},
      {"userLabel",
       [](const Link& link) -> Value { return std::string_view(link.userLabel.in()); }},
      {"nativeEMSName",
       [](const Link& link) -> Value { return std::string_view(link.nativeEMSName.in()); }},
      {"owner", [](const Link& link) -> Value { return std::string_view(link.owner.in()); }},
      {"direction", [](const Link& link) -> Value { return std::int64_t{link.direction}; }},
      {"rate", [](const Link& link) -> Value { return std::int64_t{link.rate}; }},
      {"aEndTP", [](const Link& link) -> Value { return ObjectName{&link.aEndTP}; }},
      {"zEndTP", [](const Link& link) -> Value { return ObjectName{&link.zEndTP}; }},
      {"additionalInfo",
       [](const Link& link) -> Value { return Information{&link.additionalInfo}; }},
  };
  return description;
}

const Description<NameAndStringValue_T>& pairDescription() {
  using Pair = NameAndStringValue_T;
  static const Description<Pair> description = {
      {"name", [](const Pair& pair) -> Value { return std::string_view(pair.name.in()); }},
      {"value", [](const Pair& pair) -> Value { return std::string_view(pair.value.in()); }},
  };
  return description;
}

}  // namespace topoctl
