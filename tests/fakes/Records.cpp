#include "tests/fakes/Records.h"

#include <tuple>

#include "tests/fakes/Journal.h"

namespace fakes {
namespace {

auto tied(const NodeFields& node) {
  return std::tie(node.name, node.nativeEMSName, node.nodeType, node.nodeParam1, node.nodeParam2,
                  node.relatedName, node.additionalInfo);
}

auto tied(const LinkFields& link) {
  return std::tie(link.name, link.userLabel, link.nativeEMSName, link.aEndTP, link.zEndTP,
                  link.additionalInfo, link.owner, link.direction, link.rate);
}

}  // namespace

NodeFields fieldsOf(const TopoManagementManager::Node_T& node) {
  return {printed(node.name),
          node.nativeEMSName.in(),
          node.nodeType,
          node.nodeParam1,
          node.nodeParam2,
          printed(node.relatedName),
          printed(node.additionalInfo)};
}

bool operator==(const NodeFields& left, const NodeFields& right) {
  return tied(left) == tied(right);
}

void PrintTo(const NodeFields& node, std::ostream* out) {
  *out << "name " << node.name << ", nativeEMSName " << quoted(node.nativeEMSName) << ", nodeType "
       << node.nodeType << ", nodeParam1 " << node.nodeParam1 << ", nodeParam2 " << node.nodeParam2
       << ", relatedName " << node.relatedName << ", additionalInfo " << node.additionalInfo;
}

std::vector<std::string> labelsOf(const TopoManagementManager::NodeList_T& nodes) {
  std::vector<std::string> labels;
  for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
    labels.emplace_back(nodes[i].nativeEMSName.in());
  }
  return labels;
}

LinkFields fieldsOf(const topologicalLink::TopologicalLink_T& link) {
  return {printed(link.name),   link.userLabel.in(),  link.nativeEMSName.in(),
          printed(link.aEndTP), printed(link.zEndTP), printed(link.additionalInfo),
          link.owner.in(),      link.direction,       link.rate};
}

bool operator==(const LinkFields& left, const LinkFields& right) {
  return tied(left) == tied(right);
}

void PrintTo(const LinkFields& link, std::ostream* out) {
  *out << "name " << link.name << ", userLabel " << quoted(link.userLabel) << ", nativeEMSName "
       << quoted(link.nativeEMSName) << ", owner " << quoted(link.owner) << ", direction "
       << link.direction << ", rate " << link.rate << ", aEndTP " << link.aEndTP << ", zEndTP "
       << link.zEndTP << ", additionalInfo " << link.additionalInfo;
}

}  // namespace fakes
