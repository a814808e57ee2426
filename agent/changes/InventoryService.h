// Changes of the records that are no topology nodes: network elements, clock positions, clock links
// and stored labels.

#ifndef AGENT_CHANGES_INVENTORYSERVICE_H
#define AGENT_CHANGES_INVENTORYSERVICE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "agent/base/OperationResult.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"

namespace agent {

// The fields of a clock position or of a clock link that a change replaces. A field without a value
// stays unchanged.
struct ClockPositionFields {
  std::optional<std::string> label;
  std::optional<std::pair<std::int32_t, std::int32_t>> values;
};

struct ClockLinkFields {
  std::optional<std::string> name;
  std::optional<std::string> aEnd;
  std::optional<std::string> zEnd;
};

// After a success the change is in the store and in the model; a failure changes nothing. A record
// can contain the same values as in a network file (docs/formats.md), with texts of at most
// kMostTextBytes. The label, the owner and the additional information of an object are removed
// together with the last record of the object. No change raises an event, except a renaming of an
// element that has topology nodes.
//
// Thread-safety: any thread. Ownership: borrows the writer, which outlives the service. Errors:
// kInvalidName for a text that cannot be stored, kEntityNotFound for an unknown record,
// kAlreadyExists for a record that exists, kInternalError for store and memory.
class InventoryService {
 public:
  explicit InventoryService(NetworkWriter& writer) : writer_(writer) {}

  // Appends an element. An element with a topology node is marked as shown (NodeService.h).
  Outcome createElement(const NetworkElement& element);

  // Renames an element and every record that clients see under its name. Raises
  // EVENT_TOPO_NODE_CHANGED with the topology nodes that get a different name.
  Outcome renameElement(std::int32_t number, std::string_view name);

  // Declares whether the topology shows the element as a separate node. An element with a topology
  // node remains shown until its last node is removed.
  Outcome setElementShown(std::int32_t number, bool shown);

  // The topology nodes and clock positions of the element remain.
  Outcome removeElement(std::int32_t number);

  // Fields that are not stored (Network.h) are ignored.
  Outcome createClockPosition(const NS_DOMAIN::ClockPositionInfo_T& position);
  Outcome changeClockPosition(const std::string& reference, const ClockPositionFields& fields);
  Outcome removeClockPosition(const std::string& reference);

  // Fields that are not stored (Network.h) are ignored.
  Outcome createClockLink(const NS_DOMAIN::ClockTopoLinkInfo_T& link);
  Outcome changeClockLink(const std::string& id, const ClockLinkFields& fields);
  Outcome removeClockLink(const std::string& id);

  // Stores the label of an object, which need not exist. Fails with kInvalidName for an empty
  // label.
  Outcome setLabel(const ObjectKey& key, std::string_view label);
  Outcome removeLabel(const ObjectKey& key);

 private:
  NetworkWriter& writer_;
};

}  // namespace agent

#endif
