#include "client/agent/RecordFields.h"

namespace topoctl {

using globaldefs::NameAndStringValue_T;
using topologicalLink::TopologicalLink_T;
using TopoManagementManager::Node_T;

const RecordFields<Node_T>& nodeFields() {
  static const RecordFields<Node_T> fields = {
      {"name", [](const Node_T& node) -> Value { return NamePairs{&node.name}; }},
      {"nativeEMSName",
       [](const Node_T& node) -> Value { return std::string_view(node.nativeEMSName.in()); }},
      {"nodeType", [](const Node_T& node) -> Value { return std::int64_t{node.nodeType}; }},
      {"nodeParam1", [](const Node_T& node) -> Value { return std::int64_t{node.nodeParam1}; }},
      {"nodeParam2", [](const Node_T& node) -> Value { return std::int64_t{node.nodeParam2}; }},
      {"relatedName", [](const Node_T& node) -> Value { return NamePairs{&node.relatedName}; }},
      {"additionalInfo",
       [](const Node_T& node) -> Value { return InfoPairs{&node.additionalInfo}; }},
  };
  return fields;
}

const RecordFields<TopologicalLink_T>& linkFields() {
  using Link = TopologicalLink_T;
  static const RecordFields<Link> fields = {
      {"name", [](const Link& link) -> Value { return NamePairs{&link.name}; }},
      {"userLabel",
       [](const Link& link) -> Value { return std::string_view(link.userLabel.in()); }},
      {"nativeEMSName",
       [](const Link& link) -> Value { return std::string_view(link.nativeEMSName.in()); }},
      {"owner", [](const Link& link) -> Value { return std::string_view(link.owner.in()); }},
      {"direction", [](const Link& link) -> Value { return std::int64_t{link.direction}; }},
      {"rate", [](const Link& link) -> Value { return std::int64_t{link.rate}; }},
      {"aEndTP", [](const Link& link) -> Value { return NamePairs{&link.aEndTP}; }},
      {"zEndTP", [](const Link& link) -> Value { return NamePairs{&link.zEndTP}; }},
      {"additionalInfo", [](const Link& link) -> Value { return InfoPairs{&link.additionalInfo}; }},
  };
  return fields;
}

const RecordFields<NameAndStringValue_T>& pairFields() {
  using Pair = NameAndStringValue_T;
  static const RecordFields<Pair> fields = {
      {"name", [](const Pair& pair) -> Value { return std::string_view(pair.name.in()); }},
      {"value", [](const Pair& pair) -> Value { return std::string_view(pair.value.in()); }},
  };
  return fields;
}

}  // namespace topoctl
