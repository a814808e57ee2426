// A notification as this program sees it, whatever of it arrived.

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

// As Value, but not borrowed.
using OwnValue =
    std::variant<Unknown, bool, std::int64_t, std::uint64_t, std::string, globaldefs::NVSList_T>;

// Borrows.
Value toValue(const OwnValue& own);

struct ChangedAttribute {
  std::string name;
  OwnValue value;  // the new one
};

// What is empty was not sent, or not as a value of the type that it should have.
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
  std::optional<std::string> firstLostId;    // of lost events, as are the following
  std::optional<std::string> lastLostId;
  std::optional<std::uint64_t> lostCount;
  bool isResync = false;  // found by comparing views
};

// Of any content; what cannot be understood is left out.
Event decode(const CosNotification::StructuredEvent& received);

// The number that a notification's id is; none for anything but a decimal number of 64 bits.
std::optional<std::uint64_t> parseId(const std::optional<std::string>& id);

}  // namespace topoctl

#endif
