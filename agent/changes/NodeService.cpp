#include "agent/changes/NodeService.h"

#include <exception>
#include <utility>
#include <vector>

#include "agent/base/FailureCodes.h"
#include "agent/base/Text.h"
#include "agent/changes/AttributeService.h"
#include "agent/network/NetworkChecks.h"
#include "agent/network/NetworkError.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

using NS_DOMAIN::TopoNode_T;

[[noreturn]] void refuse(std::uint32_t code, const std::string& reason) {
  throw Outcome{code, reason};
}

std::string nodeNamed(const std::string& id) {
  return "node " + inQuotes(id);
}

// Failures of any kind end here. The subject is a function that says what the change is about.
template <typename Subject, typename Work>
Outcome outcomeOf(Subject subject, Work work) {
  try {
    work();
    return {};
  } catch (Outcome& refusal) {
    return std::move(refusal);
  } catch (const std::exception& failure) {
    return internalError(subject, failure.what());
  }
}

void requireText(const std::string& place, std::string_view text) {
  const std::string problem = problemWith(text);
  if (!problem.empty()) {
    refuse(kInvalidName, place + ' ' + problem);
  }
}

// --- Networks: what cannot stand in a file, however they were made.

void requireTexts(const TopoNode_T& node, const std::string& place) {
  requireText(place + ".id", node.nodeId);
  requireText(place + ".parent", node.parentId);
  requireText(place + ".name", node.nativeName);
  for (const auto& [key, value] : node.extendedAttributes) {
    requireText(place + ".attributes", key);
    requireText(place + ".attributes", value);
  }
  if (node.nodeId.empty()) {
    refuse(kInvalidName, place + ".id must not be empty");
  }
}

void requireTexts(const NetworkElement& element, const std::string& place) {
  requireText(place + ".name", element.name);
}

void requireTexts(const NS_DOMAIN::ClockPositionInfo_T& position, const std::string& place) {
  requireText(place + ".reference", position.reference);
  requireText(place + ".label", position.label);
}

void requireTexts(const NS_DOMAIN::ClockTopoLinkInfo_T& link, const std::string& place) {
  requireText(place + ".id", link.linkId);
  requireText(place + ".name", link.nativeName);
  requireText(place + ".a", link.aEndReference);
  requireText(place + ".z", link.zEndReference);
}

void requireTexts(const ObjectLabel& label, const std::string& place) {
  requireText(place + ".id", label.id);
  requireText(place + ".label", label.label);
}

// Calls a function with every record of a list and its place.
template <typename Record, typename UseRecord>
void forEachPlace(const std::vector<Record>& records, const char* list, UseRecord use) {
  for (std::size_t i = 0; i < records.size(); ++i) {
    use(records[i], i, list);
  }
}

void requireSound(const Network& network) {
  const auto require = [](const auto& record, std::size_t index, const char* list) {
    requireTexts(record, placeOf(list, index));
  };
  forEachPlace(network.topoNodes, "topoNodes", require);
  forEachPlace(network.networkElements, "networkElements", require);
  forEachPlace(network.clockPositions, "clockPositions", require);
  forEachPlace(network.clockLinks, "clockLinks", require);
  forEachPlace(network.objectLabels, "objectLabels", require);
  try {
    checkPart(network);
  } catch (const Refusal& refusal) {
    refuse(kInvalidName, printable(refusal.place) + ": " + printable(refusal.reason));
  }
}

// Refuses what the model has already. Its answers are good for as long as the change lasts.
class Clashes {
 public:
  explicit Clashes(const NetworkModel& model) : model_(model) {}

  void refuseAny(const Network& network) const {
    const auto refuseThis = [this](const auto& record, std::size_t index, const char* list) {
      if (isKnown(record)) {
        refuse(kAlreadyExists, placeOf(list, index) + ": " + shown(record) + " exists already");
      }
    };
    forEachPlace(network.topoNodes, "topoNodes", refuseThis);
    forEachPlace(network.networkElements, "networkElements", refuseThis);
    forEachPlace(network.clockPositions, "clockPositions", refuseThis);
    forEachPlace(network.clockLinks, "clockLinks", refuseThis);
    forEachPlace(network.objectLabels, "objectLabels", refuseThis);
  }

 private:
  bool isKnown(const TopoNode_T& node) const { return model_.hasTopoNode(node.nodeId); }
  bool isKnown(const NetworkElement& element) const {
    return model_.hasNetworkElement(element.number);
  }
  bool isKnown(const NS_DOMAIN::ClockPositionInfo_T& position) const {
    return model_.hasClockPosition(position.reference);
  }
  bool isKnown(const NS_DOMAIN::ClockTopoLinkInfo_T& link) const {
    return model_.hasClockLink(link.linkId);
  }
  bool isKnown(const ObjectLabel& label) const { return model_.hasLabel({label.type, label.id}); }

  static std::string shown(const TopoNode_T& node) { return nodeNamed(node.nodeId); }
  static std::string shown(const NetworkElement& element) {
    return "network element " + std::to_string(element.number);
  }
  static std::string shown(const NS_DOMAIN::ClockPositionInfo_T& position) {
    return "clock position " + inQuotes(position.reference);
  }
  static std::string shown(const NS_DOMAIN::ClockTopoLinkInfo_T& link) {
    return "clock link " + inQuotes(link.linkId);
  }
  static std::string shown(const ObjectLabel& label) {
    return "a label of the object " + std::to_string(label.type) + ' ' + inQuotes(label.id);
  }

  const NetworkModel& model_;
};

// Of every node that is neither a root nor below a node of the network itself.
void requireParents(const Network& network, const NetworkModel& model) {
  salted::Set<std::string_view> ids;
  ids.reserve(network.topoNodes.size());
  for (const TopoNode_T& node : network.topoNodes) {
    ids.insert(node.nodeId);
  }
  for (std::size_t i = 0; i < network.topoNodes.size(); ++i) {
    const std::string& parent = network.topoNodes[i].parentId;
    if (!isRootMarker(parent) && ids.count(parent) == 0 && !model.hasTopoNode(parent)) {
      refuse(kEntityNotFound,
             placeOf("topoNodes", i, ".parent") + ": " + inQuotes(parent) + " does not exist");
    }
  }
}

// The records with what is kept of them, and nothing else.
void dropCarried(TopoNode_T& node) {
  node.text4.clear();
  node.text5.clear();
}

void dropCarried(NS_DOMAIN::ClockPositionInfo_T& position) {
  NS_DOMAIN::ClockPositionInfo_T kept;
  kept.reference = std::move(position.reference);
  kept.label = std::move(position.label);
  kept.value1 = position.value1;
  kept.value2 = position.value2;
  position = std::move(kept);
}

void dropCarried(NS_DOMAIN::ClockTopoLinkInfo_T& link) {
  NS_DOMAIN::ClockTopoLinkInfo_T kept;
  kept.linkId = std::move(link.linkId);
  kept.nativeName = std::move(link.nativeName);
  kept.aEndReference = std::move(link.aEndReference);
  kept.zEndReference = std::move(link.zEndReference);
  link = std::move(kept);
}

void dropCarried(Network& network) {
  for (TopoNode_T& node : network.topoNodes) {
    dropCarried(node);
  }
  for (NetworkElement& element : network.networkElements) {
    element.shownForNode = false;
  }
  for (NS_DOMAIN::ClockPositionInfo_T& position : network.clockPositions) {
    dropCarried(position);
  }
  for (NS_DOMAIN::ClockTopoLinkInfo_T& link : network.clockLinks) {
    dropCarried(link);
  }
}

void requireNode(const NetworkModel& model, const std::string& id) {
  if (!model.hasTopoNode(id)) {
    refuse(kEntityNotFound, "no " + nodeNamed(id));
  }
}

void requireSound(const TopoNode_T& node) {
  if (node.nodeId.empty()) {
    refuse(kInvalidName, "the id of a node must not be empty");
  }
  const std::string subject = nodeNamed(node.nodeId);
  requireText("the id of " + subject, node.nodeId);
  requireText("the parent of " + subject, node.parentId);
  requireText("the name of " + subject, node.nativeName);
  for (const auto& [key, value] : node.extendedAttributes) {
    requireText("an attribute of " + subject, key);
    requireText("an attribute of " + subject, value);
  }
  if (node.nodeType != NS_DOMAIN::kTopoElement && node.nodeType != NS_DOMAIN::kTopoSubnetwork) {
    refuse(kInvalidName,
           "the type of " + subject + " must be 1 or 2, not " + std::to_string(node.nodeType));
  }
  if (node.parentId == node.nodeId && !isRootMarker(node.parentId)) {
    refuse(kInvalidName, subject + " cannot be its own parent");
  }
}

void requirePlace(const TopoNode_T& node, const NetworkModel& model) {
  if (model.hasTopoNode(node.nodeId)) {
    refuse(kAlreadyExists, nodeNamed(node.nodeId) + " exists already");
  }
  if (!isRootMarker(node.parentId) && !model.hasTopoNode(node.parentId)) {
    refuse(kEntityNotFound,
           "no " + nodeNamed(node.parentId) + " to be the parent of " + nodeNamed(node.nodeId));
  }
}

}  // namespace

Outcome NodeService::create(const TopoNode_T& node) {
  return outcomeOf([&] { return nodeNamed(node.nodeId); },
                   [&] {
                     requireSound(node);
                     Network network;
                     network.topoNodes.push_back(node);
                     dropCarried(network);
                     NetworkWriter::Change change(writer_);
                     requirePlace(node, change.model());
                     change.commit(change.model().prepareAddition(std::move(network)));
                   });
}

Outcome NodeService::remove(const std::string& id, std::size_t& removed) {
  removed = 0;
  return outcomeOf([&] { return nodeNamed(id); },
                   [&] {
                     NetworkWriter::Change change(writer_);
                     requireNode(change.model(), id);
                     const std::size_t before = change.model().topoNodeCount();
                     change.commit(change.model().prepareRemoval(id));
                     removed = before - change.model().topoNodeCount();
                   });
}

Outcome NodeService::rename(const std::string& id, std::string_view name) {
  return outcomeOf([&] { return nodeNamed(id); },
                   [&] {
                     requireText("the name of " + nodeNamed(id), name);
                     const std::string text(name);
                     NetworkWriter::Change change(writer_);
                     requireNode(change.model(), id);
                     change.commit(change.model().prepareNodeRenaming(id, text));
                   });
}

Outcome NodeService::import(Network network, ImportSummary& summary) {
  summary = {};
  return outcomeOf(
      [] { return std::string("the import"); },
      [&] {
        requireText("ems", network.ems);
        requireSound(network);
        dropCarried(network);
        const ImportSummary counts = {network.topoNodes.size(), network.networkElements.size(),
                                      network.clockPositions.size(), network.clockLinks.size(),
                                      network.objectLabels.size()};
        NetworkWriter::Change change(writer_);
        cancellation_.throwIfRequested();
        Clashes(change.model()).refuseAny(network);
        requireParents(network, change.model());
        change.commit(change.model().prepareAddition(std::move(network)), cancellation_);
        summary = counts;
      });
}

}  // namespace agent
