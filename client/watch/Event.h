// A notification, decoded as far as its parts have the expected types.

#ifndef CLIENT_WATCH_EVENT_H
#define CLIENT_WATCH_EVENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "client/agent/RecordFields.h"
#include "orb/notification.h"

namespace topoctl {

enum class EventKind { kCreation, kDeletion, kChange, kLost, kOther };

// As Value, but owns the text or the pairs.
using OwnedValue =
    std::variant<Unknown, bool, std::int64_t, std::uint64_t, std::string, globaldefs::NVSList_T>;

// Borrows from `owned`.
Value borrowedValue(const OwnedValue& owned);

struct ChangedAttribute {
  std::string name;
  OwnedValue value;  // the new one
};

// A member is empty when the agent did not send the part, or sent a value of another type. A plain
// value: no thread-safety.
struct Event {
  EventKind kind = EventKind::kOther;
  std::string type;  // "NT_..."
  std::optional<std::string> notificationId;
  std::optional<globaldefs::NVSList_T> objectName;
  std::optional<std::string> objectType;  // "OT_..."
  std::optional<std::string> emsTime;
  std::optional<std::string> neTime;
  std::optional<bool> edgePointRelated;
  std::variant<Unknown, TopoManagementManager::Node_T, topologicalLink::TopologicalLink_T>
      object;                                // of creations
  std::vector<ChangedAttribute> attributes;  // of changes
  std::optional<std::string> firstLostId;    // of lost events, as the next two members
  std::optional<std::string> lastLostId;
  std::optional<std::uint64_t> lostCount;
  bool isResync = false;  // found by comparing two views, not received
};

// Decodes an event of any content. Leaves parts out that have no known name or not the expected
// type. Thread-safety: any thread.
Event decode(const CosNotification::StructuredEvent& received);

// The id of a notification as a number; empty unless the id is a decimal number of 64 bits.
std::optional<std::uint64_t> parseId(const std::optional<std::string>& id);

}  // namespace topoctl

#endif
