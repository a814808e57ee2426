#include "agent/changes/NodeService.h"

#include <utility>
#include <vector>

#include "agent/base/FailureCodes.h"
#include "agent/base/TextChecks.h"
#include "agent/changes/AttributeService.h"
#include "agent/changes/NetworkInput.h"
#include "agent/changes/RecordNames.h"
#include "agent/changes/ServiceOutcome.h"
#include "agent/network/NetworkChecks.h"

namespace agent {
namespace {

using NS_DOMAIN::TopoNode_T;

bool isElementOrSubnetwork(std::uint32_t type) {
  return type == NS_DOMAIN::kTopoElement || type == NS_DOMAIN::kTopoSubnetwork;
}

Outcome checkNodeExists(const NetworkModel& model, const std::string& id) {
  return model.hasTopoNode(id) ? Outcome() : Outcome{kEntityNotFound, "no " + nodeNamed(id)};
}

Outcome checkNodeTexts(const TopoNode_T& node, const std::string& subject) {
  Outcome outcome = checkText("the id of " + subject, node.nodeId);
  const auto require = [&](const char* field, const std::string& text) {
    if (outcome.ok()) {
      outcome = checkText(field + subject, text);
    }
  };
  require("the parent of ", node.parentId);
  require("the name of ", node.nativeName);
  for (const auto& [key, value] : node.extendedAttributes) {
    require("an attribute of ", key);
    require("an attribute of ", value);
  }
  return outcome;
}

Outcome checkNewNode(const TopoNode_T& node) {
  if (node.nodeId.empty()) {
    return {kInvalidName, "the id of a node must not be empty"};
  }
  const std::string subject = nodeNamed(node.nodeId);
  if (Outcome texts = checkNodeTexts(node, subject); !texts.ok()) {
    return texts;
  }
  if (!isElementOrSubnetwork(node.nodeType)) {
    return {kInvalidName,
            "the type of " + subject + " must be 1 or 2, not " + std::to_string(node.nodeType)};
  }
  if (node.nodeType == NS_DOMAIN::kTopoElement && !hasElementNumber(node.nodeId)) {
    return {kInvalidName, "node " + problemWithElementId(node.nodeId)};
  }
  if (node.parentId == node.nodeId && !isRootMarker(node.parentId)) {
    return {kInvalidName, subject + " cannot be its own parent"};
  }
  return {};
}

std::string kindOf(std::uint32_t type) {
  return type == NS_DOMAIN::kTopoElement ? "an element" : "a subnetwork";
}

// Takes the type of the parent from a parent that is an element or a subnetwork. Fails for a
// different type. REQUIRES: the parent exists or is a root marker.
Outcome takeParentType(TopoNode_T& node, const NetworkModel& model) {
  const auto parent = isRootMarker(node.parentId) ? std::nullopt : model.topoNode(node.parentId);
  const bool isKnown = parent && isElementOrSubnetwork(parent->nodeType);
  const std::uint32_t type = isKnown ? parent->nodeType : NS_DOMAIN::kTopoSubnetwork;
  if (node.parentType == NodeService::kTypeOfParent) {
    node.parentType = type;
  }
  if (isKnown && node.parentType != type) {
    return {kInvalidName, "the parent of " + nodeNamed(node.nodeId) + ", " +
                              nodeNamed(node.parentId) + ", is " + kindOf(type) + ", not " +
                              kindOf(node.parentType)};
  }
  return {};
}

Outcome checkParent(const TopoNode_T& node, const NetworkModel& model) {
  if (isRootMarker(node.parentId) || model.hasTopoNode(node.parentId)) {
    return {};
  }
  return {kEntityNotFound,
          "no " + nodeNamed(node.parentId) + " to be the parent of " + nodeNamed(node.nodeId)};
}

Outcome checkNewPlace(const TopoNode_T& node, const NetworkModel& model) {
  if (model.hasTopoNode(node.nodeId)) {
    return {kAlreadyExists, nodeNamed(node.nodeId) + " exists already"};
  }
  if (Outcome object = checkObject(node, model, "node "); !object.ok()) {
    return object;
  }
  return checkParent(node, model);
}

// Fails if the new parent of the node is the node itself or a descendant.
Outcome checkAncestors(const TopoNode_T& node, const NetworkModel& model) {
  if (isRootMarker(node.parentId) || !model.isWithin(node.parentId, node.nodeId)) {
    return {};
  }
  if (node.parentId == node.nodeId) {
    return {kInvalidName, nodeNamed(node.nodeId) + " cannot be its own parent"};
  }
  return {kInvalidName, nodeNamed(node.parentId) + " cannot be the parent of " +
                            nodeNamed(node.nodeId) + ", which is above it"};
}

// Sets the parent of a node. Fails for a parent that is unknown, below the node or of another type.
Outcome setParent(TopoNode_T& node, const std::string& parentId, std::uint32_t parentType,
                  const NetworkModel& model) {
  node.parentId = parentId;
  node.parentType = parentType;
  Outcome checked = checkParent(node, model);
  checked = checked.ok() ? checkAncestors(node, model) : checked;
  return checked.ok() ? takeParentType(node, model) : checked;
}

Outcome checkFields(const std::string& id, const NodeFields& fields) {
  Outcome checked;
  if (fields.attributes) {
    for (const auto& [key, value] : *fields.attributes) {
      for (const std::string_view text : {std::string_view(key), std::string_view(value)}) {
        checked = checked.ok() ? checkText("an attribute of " + nodeNamed(id), text) : checked;
      }
    }
  }
  return checked;
}

void setFields(TopoNode_T& node, const NodeFields& fields) {
  if (fields.params) {
    node.attribute3 = fields.params->first;
    node.attribute4 = fields.params->second;
  }
  if (fields.attributes) {
    node.extendedAttributes = *fields.attributes;
  }
}

// Whether two nodes are equal in all fields that move() and change() set.
bool isSame(const TopoNode_T& a, const TopoNode_T& b) {
  return a.parentId == b.parentId && a.parentType == b.parentType && a.attribute3 == b.attribute3 &&
         a.attribute4 == b.attribute4 && a.extendedAttributes == b.extendedAttributes;
}

// Commits the node that set(node, model) has changed, unless the node equals the present node.
template <typename Set>
Outcome updateNode(NetworkWriter& writer, const std::string& id, Set set) {
  NetworkWriter::Change change(writer);
  const auto before = change.model().topoNode(id);
  if (!before) {
    return {kEntityNotFound, "no " + nodeNamed(id)};
  }
  TopoNode_T after = *before;
  Outcome checked = set(after, change.model());
  if (checked.ok() && !isSame(*before, after)) {
    change.commit(change.model().prepareUpdate(std::move(after)));
  }
  return checked;
}

ImportSummary countsOf(const Network& network) {
  return {network.topoNodes.size(), network.networkElements.size(), network.clockPositions.size(),
          network.clockLinks.size(), network.objectLabels.size()};
}

PreparedChange prepareImport(Network network, NetworkModel& model, const ImportOptions& options) {
  return options.replace ? model.prepareReplacement(std::move(network))
                         : model.prepareAddition(std::move(network));
}

}  // namespace

Outcome NodeService::create(const TopoNode_T& node) {
  return outcomeOf([&] { return nodeNamed(node.nodeId); },
                   [&]() -> Outcome {
                     if (Outcome checked = checkNewNode(node); !checked.ok()) {
                       return checked;
                     }
                     Network network;
                     network.topoNodes.push_back(node);
                     clearUnstored(network);
                     NetworkWriter::Change change(writer_);
                     Outcome checked = checkNewPlace(node, change.model());
                     if (checked.ok()) {
                       checked = takeParentType(network.topoNodes.front(), change.model());
                     }
                     if (checked.ok()) {
                       change.commit(change.model().prepareAddition(std::move(network)));
                     }
                     return checked;
                   });
}

Outcome NodeService::remove(const std::string& id, std::size_t& removed) {
  removed = 0;
  return outcomeOf([&] { return nodeNamed(id); },
                   [&] {
                     NetworkWriter::Change change(writer_);
                     Outcome checked = checkNodeExists(change.model(), id);
                     if (checked.ok()) {
                       const std::size_t before = change.model().topoNodeCount();
                       change.commit(change.model().prepareRemoval(id));
                       removed = before - change.model().topoNodeCount();
                     }
                     return checked;
                   });
}

Outcome NodeService::rename(const std::string& id, std::string_view name) {
  return outcomeOf([&] { return nodeNamed(id); },
                   [&] {
                     Outcome checked = checkText("the name of " + nodeNamed(id), name);
                     if (!checked.ok()) {
                       return checked;
                     }
                     const std::string text(name);
                     NetworkWriter::Change change(writer_);
                     checked = checkNodeExists(change.model(), id);
                     if (checked.ok()) {
                       change.commit(change.model().prepareNodeRenaming(id, text));
                     }
                     return checked;
                   });
}

Outcome NodeService::move(const std::string& id, const std::string& parentId,
                          std::uint32_t parentType) {
  return outcomeOf([&] { return nodeNamed(id); },
                   [&] {
                     Outcome checked = checkText("the parent of " + nodeNamed(id), parentId);
                     if (!checked.ok()) {
                       return checked;
                     }
                     return updateNode(writer_, id,
                                       [&](TopoNode_T& node, const NetworkModel& model) {
                                         return setParent(node, parentId, parentType, model);
                                       });
                   });
}

Outcome NodeService::change(const std::string& id, const NodeFields& fields) {
  return outcomeOf([&] { return nodeNamed(id); },
                   [&] {
                     Outcome checked = checkFields(id, fields);
                     if (!checked.ok()) {
                       return checked;
                     }
                     return updateNode(writer_, id, [&](TopoNode_T& node, const NetworkModel&) {
                       setFields(node, fields);
                       return Outcome();
                     });
                   });
}

Outcome NodeService::import(Network network, ImportSummary& summary, const ImportOptions& options) {
  summary = {};
  return outcomeOf(
      [] { return std::string("the import"); },
      [&] {
        Outcome checked =
            checkNewNetwork(network, options.places,
                            options.replace ? NetworkExtent::kWhole : NetworkExtent::kPart);
        if (!checked.ok()) {
          return checked;
        }
        clearUnstored(network);
        const ImportSummary counts = countsOf(network);
        NetworkWriter::Change change(writer_);
        cancellation_.throwIfRequested();
        if (!options.replace) {
          checked = checkAddition(network, change.model(), options.places);
        }
        if (checked.ok() && !options.dryRun) {
          change.commit(prepareImport(std::move(network), change.model(), options), cancellation_);
        }
        summary = checked.ok() ? counts : ImportSummary();
        return checked;
      });
}

}  // namespace agent
