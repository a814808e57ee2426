#include "agent/console/ObjectDetails.h"

#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

namespace agent {
namespace {

using globaldefs::NVSList_T;
using Pairs = std::vector<std::pair<std::string, std::string>>;

void append(NVSList_T& list, const std::string& name, const std::string& value) {
  const CORBA::ULong at = list.length();
  list.length(at + 1);
  list[at].name = name.c_str();
  list[at].value = value.c_str();
}

NVSList_T listOf(const Pairs& pairs) {
  NVSList_T list;
  list.length(static_cast<CORBA::ULong>(pairs.size()));
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    list[i].name = pairs[i].first.c_str();
    list[i].value = pairs[i].second.c_str();
  }
  return list;
}

std::string pairText(std::int32_t first, std::int32_t second) {
  return std::to_string(first) + ',' + std::to_string(second);
}

// Appends records to the details.
class RecordAppender {
 public:
  explicit RecordAppender(TopoAgent::ObjectRecordList_T& records) : records_(records) {}

  void add(const NS_DOMAIN::TopoNode_T& node) {
    add("topoNodes", {{"id", node.nodeId},
                      {"parent", node.parentId},
                      {"name", node.nativeName},
                      {"type", std::to_string(node.nodeType)},
                      {"parentType", std::to_string(node.parentType)},
                      {"params", pairText(node.attribute3, node.attribute4)}});
    records_[records_.length() - 1].attributes = listOf(node.extendedAttributes);
  }

  void add(const NetworkElement& element) {
    add("networkElements", {{"number", std::to_string(element.number)},
                            {"name", element.name},
                            {"shown", element.shown ? "true" : "false"}});
  }

  void add(const NS_DOMAIN::ClockPositionInfo_T& position) {
    add("clockPositions", {{"reference", position.reference},
                           {"label", position.label},
                           {"values", pairText(position.value1, position.value2)}});
  }

  void add(const NS_DOMAIN::ClockTopoLinkInfo_T& link) {
    add("clockLinks", {{"id", link.linkId},
                       {"name", link.nativeName},
                       {"a", link.aEndReference},
                       {"z", link.zEndReference}});
  }

 private:
  void add(const char* list, const Pairs& fields) {
    const CORBA::ULong at = records_.length();
    records_.length(at + 1);
    records_[at].list = list;
    records_[at].fields = listOf(fields);
  }

  TopoAgent::ObjectRecordList_T& records_;
};

}  // namespace

TopoAgent::ObjectDetails_T tmfDetails(const ObjectDetails& details, const std::string& ems) {
  TopoAgent::ObjectDetails_T result;
  append(result.name, tmf::kEms, ems);
  append(result.name, std::string(classOf(details.key)), std::string(valueOf(details.key)));
  result.userLabel = details.view.label.c_str();
  result.owner = details.owner.c_str();
  result.additionalInfo = listOf(details.info);
  RecordAppender records(result.records);
  for (const NS_DOMAIN::TopoNode_T& node : details.view.nodes) {
    records.add(node);
  }
  if (details.view.element) {
    records.add(*details.view.element);
  }
  for (const NS_DOMAIN::ClockPositionInfo_T& position : details.view.positions) {
    records.add(position);
  }
  if (details.view.link) {
    records.add(*details.view.link);
  }
  return result;
}

}  // namespace agent
