#include "agent/formats/JsonExport.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace agent {
namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const std::vector<std::pair<std::string, std::string>>& pairs) {
  Json list = Json::array();
  for (const auto& [name, value] : pairs) {
    list.push_back({name, value});
  }
  return list;
}

Json jsonOf(const NS_DOMAIN::TopoNode_T& node) {
  Json object = {{"id", node.nodeId},
                 {"parent", node.parentId},
                 {"name", node.nativeName},
                 {"type", node.nodeType},
                 {"parentType", node.parentType},
                 {"params", Json::array({node.attribute3, node.attribute4})}};
  if (!node.extendedAttributes.empty()) {
    object["attributes"] = jsonOf(node.extendedAttributes);
  }
  return object;
}

Json jsonOf(const NetworkElement& element) {
  Json object = {{"number", element.number}, {"name", element.name}, {"shown", element.shown}};
  if (element.shownForNode) {
    object["shownForNode"] = true;
  }
  return object;
}

Json jsonOf(const NS_DOMAIN::ClockPositionInfo_T& position) {
  return {{"reference", position.reference},
          {"label", position.label},
          {"values", Json::array({position.value1, position.value2})}};
}

Json jsonOf(const NS_DOMAIN::ClockTopoLinkInfo_T& link) {
  return {{"id", link.linkId},
          {"name", link.nativeName},
          {"a", link.aEndReference},
          {"z", link.zEndReference}};
}

Json jsonOf(const ObjectLabel& label) {
  return {{"type", label.type}, {"id", label.id}, {"label", label.label}};
}

Json jsonOf(const ObjectAttributes& object) {
  return {{"type", object.type},
          {"id", object.id},
          {"owner", object.owner},
          {"info", jsonOf(object.info)}};
}

template <typename Record>
void append(std::string& text, const char* list, const std::vector<Record>& records) {
  text += std::string(",\n\"") + list + "\": [";
  const char* separator = "\n";
  for (const Record& record : records) {
    text += separator;
    text += jsonOf(record).dump();
    separator = ",\n";
  }
  text += "]";
}

}  // namespace

std::string writeJsonNetwork(const Network& network) {
  std::string text = "{\"format\": \"topo-network/1\",\n\"ems\": " + Json(network.ems).dump();
  append(text, "topoNodes", network.topoNodes);
  append(text, "networkElements", network.networkElements);
  append(text, "clockPositions", network.clockPositions);
  append(text, "clockLinks", network.clockLinks);
  append(text, "objectLabels", network.objectLabels);
  if (network.objectAttributes) {
    append(text, "objectAttributes", *network.objectAttributes);
  }
  text += "}\n";
  return text;
}

}  // namespace agent
