#include "client/Records.h"

namespace topoctl {

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

const Description<common::Capability_T>& capabilityDescription() {
  using common::Capability_T;
  static const Description<Capability_T> description = {
      {"name",
       [](const Capability_T& entry) -> Value { return std::string_view(entry.name.in()); }},
      {"value",
       [](const Capability_T& entry) -> Value { return std::string_view(entry.value.in()); }},
  };
  return description;
}

}  // namespace topoctl
