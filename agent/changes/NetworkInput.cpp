#include "agent/changes/NetworkInput.h"

#include <initializer_list>
#include <string_view>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"
#include "agent/base/TextChecks.h"
#include "agent/changes/RecordNames.h"
#include "agent/network/ManagedObjects.h"
#include "agent/network/NetworkChecks.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

using NS_DOMAIN::TopoNode_T;

// Calls check(record, index, list) with the records of all lists until a check fails.
template <typename Check>
Outcome checkRecords(const Network& network, Check check) {
  Outcome outcome;
  const auto checkList = [&](const auto& records, const char* list) {
    for (std::size_t i = 0; outcome.ok() && i < records.size(); ++i) {
      outcome = check(records[i], i, list);
    }
  };
  checkList(network.topoNodes, "topoNodes");
  checkList(network.networkElements, "networkElements");
  checkList(network.clockPositions, "clockPositions");
  checkList(network.clockLinks, "clockLinks");
  checkList(network.objectLabels, "objectLabels");
  return outcome;
}

// --- Checks of texts. Network files of the native format pass them, other sources may not.

// Checks the texts of one record; a failure names the place of the field. Borrows the places.
class TextChecker {
 public:
  TextChecker(const NetworkPlaces& places, const char* list, std::size_t index)
      : places_(places), list_(list), index_(index) {}

  Outcome check(const TopoNode_T& node) const {
    Outcome outcome =
        first({{".id", node.nodeId}, {".parent", node.parentId}, {".name", node.nativeName}});
    for (auto pair = node.extendedAttributes.begin();
         outcome.ok() && pair != node.extendedAttributes.end(); ++pair) {
      outcome = first({{".attributes", pair->first}, {".attributes", pair->second}});
    }
    if (outcome.ok() && node.nodeId.empty()) {
      return {kInvalidName, places_.of(list_, index_, ".id") + ": must not be empty"};
    }
    return outcome;
  }

  Outcome check(const NetworkElement& element) const { return first({{".name", element.name}}); }

  Outcome check(const NS_DOMAIN::ClockPositionInfo_T& position) const {
    return first({{".reference", position.reference}, {".label", position.label}});
  }

  Outcome check(const NS_DOMAIN::ClockTopoLinkInfo_T& link) const {
    return first({{".id", link.linkId},
                  {".name", link.nativeName},
                  {".a", link.aEndReference},
                  {".z", link.zEndReference}});
  }

  Outcome check(const ObjectLabel& label) const {
    return first({{".id", label.id}, {".label", label.label}});
  }

  Outcome check(const ObjectAttributes& object) const {
    Outcome outcome = first({{".id", object.id}, {".owner", object.owner}});
    for (auto pair = object.info.begin(); outcome.ok() && pair != object.info.end(); ++pair) {
      outcome = first({{".info", pair->first}, {".info", pair->second}});
    }
    return outcome;
  }

 private:
  struct Field {
    const char* name;
    std::string_view text;
  };

  // The first failure.
  Outcome first(std::initializer_list<Field> fields) const {
    for (const Field& field : fields) {
      const std::string problem = problemWith(field.text);
      if (!problem.empty()) {
        return {kInvalidName, places_.of(list_, index_, field.name) + ": " + problem};
      }
    }
    return {};
  }

  const NetworkPlaces& places_;
  const char* const list_;
  const std::size_t index_;
};

Outcome checkTexts(const Network& network, const NetworkPlaces& places) {
  if (const std::string problem = problemWith(network.ems); !problem.empty()) {
    return {kInvalidName, "ems: " + problem};
  }
  Outcome outcome =
      checkRecords(network, [&](const auto& record, std::size_t index, const char* list) {
        return TextChecker(places, list, index).check(record);
      });
  const std::size_t objects = network.objectAttributes ? network.objectAttributes->size() : 0;
  for (std::size_t i = 0; outcome.ok() && i < objects; ++i) {
    outcome = TextChecker(places, "objectAttributes", i).check((*network.objectAttributes)[i]);
  }
  return outcome;
}

// --- Checks against the model. Their results are valid until the end of the change.

Outcome checkObjects(const Network& network, const NetworkModel& model,
                     const NetworkPlaces& places) {
  Outcome outcome;
  for (std::size_t i = 0; outcome.ok() && i < network.topoNodes.size(); ++i) {
    outcome = checkObject(network.topoNodes[i], model, places.of("topoNodes", i, ".id") + ": ");
  }
  return outcome;
}

// Finds records of a network that the model has already. Borrows the model and the places.
class Duplicates {
 public:
  Duplicates(const NetworkModel& model, const NetworkPlaces& places)
      : model_(model), places_(places) {}

  Outcome check(const Network& network) const {
    return checkRecords(
        network, [this](const auto& record, std::size_t index, const char* list) -> Outcome {
          if (!isKnown(record)) {
            return {};
          }
          return {kAlreadyExists,
                  places_.of(list, index) + ": " + description(record) + " exists already"};
        });
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

  static std::string description(const TopoNode_T& node) { return nodeNamed(node.nodeId); }
  static std::string description(const NetworkElement& element) {
    return elementNamed(element.number);
  }
  static std::string description(const NS_DOMAIN::ClockPositionInfo_T& position) {
    return positionNamed(position.reference);
  }
  static std::string description(const NS_DOMAIN::ClockTopoLinkInfo_T& link) {
    return linkNamed(link.linkId);
  }
  static std::string description(const ObjectLabel& label) {
    return "a " + labelNamed({label.type, label.id});
  }

  const NetworkModel& model_;
  const NetworkPlaces& places_;
};

// The parent of every node is a root marker, a node of the network or a node of the model.
Outcome checkParents(const Network& network, const NetworkModel& model,
                     const NetworkPlaces& places) {
  salted::Set<std::string_view> ids;
  ids.reserve(network.topoNodes.size());
  for (const TopoNode_T& node : network.topoNodes) {
    ids.insert(node.nodeId);
  }
  for (std::size_t i = 0; i < network.topoNodes.size(); ++i) {
    const std::string& parent = network.topoNodes[i].parentId;
    if (!isRootMarker(parent) && ids.count(parent) == 0 && !model.hasTopoNode(parent)) {
      return {kEntityNotFound,
              places.of("topoNodes", i, ".parent") + ": " + inQuotes(parent) + " does not exist"};
    }
  }
  return {};
}

// Clears the fields that are not stored.
void clearUnstored(TopoNode_T& node) {
  node.text4.clear();
  node.text5.clear();
}

void clearUnstored(NS_DOMAIN::ClockPositionInfo_T& position) {
  NS_DOMAIN::ClockPositionInfo_T kept;
  kept.reference = std::move(position.reference);
  kept.label = std::move(position.label);
  kept.value1 = position.value1;
  kept.value2 = position.value2;
  position = std::move(kept);
}

void clearUnstored(NS_DOMAIN::ClockTopoLinkInfo_T& link) {
  NS_DOMAIN::ClockTopoLinkInfo_T kept;
  kept.linkId = std::move(link.linkId);
  kept.nativeName = std::move(link.nativeName);
  kept.aEndReference = std::move(link.aEndReference);
  kept.zEndReference = std::move(link.zEndReference);
  link = std::move(kept);
}

}  // namespace

Outcome checkNewNetwork(const Network& network, const NetworkPlaces& places, NetworkExtent extent) {
  if (Outcome texts = checkTexts(network, places); !texts.ok()) {
    return texts;
  }
  const Outcome relations =
      extent == NetworkExtent::kWhole ? checkNetwork(network) : checkPart(network);
  return relations.ok() ? Outcome() : Outcome{kInvalidName, relations.reason};
}

Outcome checkObject(const TopoNode_T& node, const NetworkModel& model, const std::string& subject) {
  if (node.nodeType != NS_DOMAIN::kTopoElement) {
    return {};
  }
  const auto object = objectOfElementNode(node.nodeId);
  const auto other = object ? model.nodeShownAs(*object) : std::nullopt;
  if (!other) {
    return {};
  }
  return {kAlreadyExists,
          subject + problemWithSharedObject(node.nodeId, *object, nodeNamed(*other))};
}

Outcome checkAddition(const Network& network, const NetworkModel& model,
                      const NetworkPlaces& places) {
  Outcome outcome = Duplicates(model, places).check(network);
  outcome = outcome.ok() ? checkObjects(network, model, places) : outcome;
  return outcome.ok() ? checkParents(network, model, places) : outcome;
}

void clearUnstored(Network& network) {
  for (TopoNode_T& node : network.topoNodes) {
    clearUnstored(node);
  }
  for (NS_DOMAIN::ClockPositionInfo_T& position : network.clockPositions) {
    clearUnstored(position);
  }
  for (NS_DOMAIN::ClockTopoLinkInfo_T& link : network.clockLinks) {
    clearUnstored(link);
  }
}

}  // namespace agent
