#include "conformance/Records.h"

#include <map>
#include <set>

#include "client/base/Utf8.h"
#include "conformance/shared/Verdict.h"

namespace conformance {
namespace {

using globaldefs::NVSList_T;

const std::set<std::string> kNodeClasses = {"ManagedElement", "ONE", "OS", "TopoSubnetwork"};
const std::set<std::string> kLinkClasses = {"ClockTopoLinkId"};

void requireUtf8(const std::string& text) {
  require(isUtf8(text), "the text \"" + text + "\" is not UTF-8");
}

void requireUtf8(const NVSList_T& pairs) {
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    requireUtf8(pairs[i].name.in());
    requireUtf8(pairs[i].value.in());
  }
}

void requireName(const NVSList_T& name, const std::string& ems,
                 const std::set<std::string>& classes) {
  const std::string text = "the name \"" + toText(name) + "\" ";
  require(name.length() == 2, text + "has not two pairs");
  require(name[0].name.in() == std::string("EMS"), text + "does not begin with EMS");
  require(name[0].value.in() == ems, text + "has another EMS than \"" + ems + '"');
  require(classes.count(name[1].name.in()) == 1, text + "has an unknown class");
  require(name[1].value.in()[0] != '\0', text + "has an empty value");
  requireUtf8(name);
}

}  // namespace

std::string toText(const TopoManagementManager::Node_T& node) {
  return toText(node.name) + '\n' + node.nativeEMSName.in() + '\n' + std::to_string(node.nodeType) +
         ' ' + std::to_string(node.nodeParam1) + ' ' + std::to_string(node.nodeParam2) + '\n' +
         toText(node.relatedName) + '\n' + toText(node.additionalInfo);
}

std::string toText(const topologicalLink::TopologicalLink_T& link) {
  return toText(link.name) + '\n' + link.userLabel.in() + '\n' + link.nativeEMSName.in() + '\n' +
         link.owner.in() + '\n' + std::to_string(static_cast<int>(link.direction)) + ' ' +
         std::to_string(link.rate) + '\n' + toText(link.aEndTP) + '\n' + toText(link.zEndTP) +
         '\n' + toText(link.additionalInfo);
}

std::vector<TopoManagementManager::Node_T> sampleOf(
    const std::vector<TopoManagementManager::Node_T>& nodes, std::size_t limit) {
  std::map<CORBA::ULong, std::size_t> counts;
  std::vector<TopoManagementManager::Node_T> sample;
  for (const auto& node : nodes) {
    if (++counts[node.nodeType] <= limit) {
      sample.push_back(node);
    }
  }
  return sample;
}

bool isUtf8(const std::string& text) {
  return topoctl::validUtf8(text) == text;
}

void requireWellFormed(const TopoManagementManager::Node_T& node, const std::string& ems) {
  requireName(node.name, ems, kNodeClasses);
  if (node.relatedName.length() != 0) {
    requireName(node.relatedName, ems, kNodeClasses);
  }
  require(node.nodeType <= 1, "the node \"" + toText(node.name) + "\" has a nodeType over 1");
  requireUtf8(node.nativeEMSName.in());
  requireUtf8(node.additionalInfo);
}

void requireWellFormed(const topologicalLink::TopologicalLink_T& link, const std::string& ems) {
  requireName(link.name, ems, kLinkClasses);
  for (const NVSList_T* end : {&link.aEndTP, &link.zEndTP}) {
    if (end->length() != 0) {
      requireName(*end, ems, {"ManagedElement"});
    }
  }
  requireUtf8(link.userLabel.in());
  requireUtf8(link.nativeEMSName.in());
  requireUtf8(link.additionalInfo);
}

}  // namespace conformance
