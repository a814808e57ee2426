#include "client/watch/KnownNodes.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "idl/NotificationLayout.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;
using TopoManagementManager::Node_T;

void appendSized(std::string& key, std::string_view text) {
  key += std::to_string(text.size());
  key += ':';
  key += text;
}

// ---- changes of attributes

template <typename Number>
void assignNumber(const OwnedValue& value, Number& number) {
  if (const auto* held = std::get_if<std::int64_t>(&value)) {
    number = static_cast<Number>(*held);
  } else if (const auto* positive = std::get_if<std::uint64_t>(&value)) {
    number = static_cast<Number>(*positive);
  }
}

void assignPairs(const OwnedValue& value, NVSList_T& pairs) {
  if (const auto* held = std::get_if<NVSList_T>(&value)) {
    pairs = *held;
  }
}

void assignAttribute(Node_T& node, const ChangedAttribute& changed) {
  const std::string& name = changed.name;
  const auto* text = std::get_if<std::string>(&changed.value);
  if (name == "nativeEMSName" && text != nullptr) {
    node.nativeEMSName = text->c_str();
  } else if (name == "nodeType") {
    assignNumber(changed.value, node.nodeType);
  } else if (name == "nodeParam1") {
    assignNumber(changed.value, node.nodeParam1);
  } else if (name == "nodeParam2") {
    assignNumber(changed.value, node.nodeParam2);
  } else if (name == "relatedName") {
    assignPairs(changed.value, node.relatedName);
  } else if (name == "additionalInfo") {
    assignPairs(changed.value, node.additionalInfo);
  }
}

// ---- differences

bool equal(const NVSList_T& a, const NVSList_T& b) {
  bool same = a.length() == b.length();
  for (CORBA::ULong i = 0; same && i < a.length(); ++i) {
    same = std::string_view(a[i].name.in()) == b[i].name.in() &&
           std::string_view(a[i].value.in()) == b[i].value.in();
  }
  return same;
}

// REQUIRES: both values are of the same field.
bool equal(const Value& a, const Value& b) {
  return std::visit(
      Overloaded{[&b](NamePairs name) { return equal(*name.pairs, *std::get<NamePairs>(b).pairs); },
                 [&b](InfoPairs info) { return equal(*info.pairs, *std::get<InfoPairs>(b).pairs); },
                 [](Unknown) { return true; },
                 [&b](auto plain) { return plain == std::get<decltype(plain)>(b); }},
      a);
}

OwnedValue toOwned(const Value& value) {
  return std::visit(
      Overloaded{[](std::string_view text) -> OwnedValue { return std::string(text); },
                 [](NamePairs name) -> OwnedValue { return *name.pairs; },
                 [](InfoPairs info) -> OwnedValue { return *info.pairs; },
                 [](auto plain) -> OwnedValue { return plain; }},
      value);
}

std::vector<ChangedAttribute> changesOf(const Node_T& before, const Node_T& after) {
  std::vector<ChangedAttribute> changes;
  for (const auto& field : nodeFields()) {
    const Value value = field.value(after);
    if (!equal(field.value(before), value)) {
      changes.push_back({field.name, toOwned(value)});
    }
  }
  return changes;
}

Event resyncEvent(EventKind kind, const char* type, const Node_T& node) {
  Event event;
  event.kind = kind;
  event.type = type;
  event.objectName = node.name;
  event.isResync = true;
  return event;
}

using Entries = std::vector<const KnownNodes::Entry*>;

// The number of ancestors of each entry among the entries; arbitrary for members of a cycle.
std::vector<std::size_t> depthsOf(const Entries& entries) {
  salted::Map<std::string, std::size_t> numbers;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    numbers.emplace(keyOf(entries[i]->node.name), i);
  }
  constexpr auto kUnvisited = static_cast<std::size_t>(-1);
  std::vector<std::size_t> depths(entries.size(), kUnvisited);
  for (std::size_t start = 0; start < entries.size(); ++start) {
    std::vector<std::size_t> path;
    std::size_t above = 0;
    for (std::size_t at = start;;) {
      if (depths[at] != kUnvisited) {
        above = depths[at] + 1;
        break;
      }
      depths[at] = 0;  // ends a walk that returns to this entry
      path.push_back(at);
      const auto parent = numbers.find(keyOf(entries[at]->node.relatedName));
      if (parent == numbers.end()) {
        break;
      }
      at = parent->second;
    }
    for (; !path.empty(); path.pop_back()) {
      depths[path.back()] = above++;
    }
  }
  return depths;
}

// By depth, then in the order of the view.
Entries inOrder(const Entries& entries, bool deepestFirst) {
  const std::vector<std::size_t> depths = depthsOf(entries);
  std::vector<std::pair<std::size_t, const KnownNodes::Entry*>> sorted;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    sorted.emplace_back(depths[i], entries[i]);
  }
  std::sort(sorted.begin(), sorted.end(), [deepestFirst](const auto& a, const auto& b) {
    if (a.first != b.first) {
      return deepestFirst ? a.first > b.first : a.first < b.first;
    }
    return a.second->place < b.second->place;
  });
  Entries result;
  for (const auto& [depth, entry] : sorted) {
    result.push_back(entry);
  }
  return result;
}

// The known nodes after the pending events, without a copy of all nodes: copies only nodes that an
// event names.
class Expected {
 public:
  // Borrows `known`.
  Expected(const KnownNodes& known, const std::deque<Event>& pending) : known_(known) {
    for (const Event& event : pending) {
      if (event.objectName) {
        take(keyOf(*event.objectName));
      }
      touched_.apply(event);
    }
  }

  const KnownNodes::Entry* find(const std::string& key) const {
    return taken_.count(key) > 0 ? touched_.find(key) : known_.find(key);
  }

  // Calls visit(key, entry) in an arbitrary order.
  template <typename Visit>
  void forEach(Visit visit) const {
    for (const auto& [key, entry] : known_.entries()) {
      if (taken_.count(key) == 0) {
        visit(key, entry);
      }
    }
    for (const auto& [key, entry] : touched_.entries()) {
      visit(key, entry);
    }
  }

 private:
  void take(const std::string& key) {
    const KnownNodes::Entry* const entry = known_.find(key);
    if (taken_.insert(key).second && entry != nullptr) {
      touched_.put(entry->node);
    }
  }

  const KnownNodes& known_;
  salted::Set<std::string> taken_;  // the keys of the nodes that events name
  KnownNodes touched_;              // the nodes of these keys after the events
};

void appendDeletions(const Expected& expected, const KnownNodes& read, std::vector<Event>& events) {
  Entries deleted;
  expected.forEach([&](const std::string& key, const KnownNodes::Entry& entry) {
    if (read.find(key) == nullptr) {
      deleted.push_back(&entry);
    }
  });
  for (const KnownNodes::Entry* entry : inOrder(deleted, true)) {
    events.push_back(
        resyncEvent(EventKind::kDeletion, notification_layout::kObjectDeletion, entry->node));
  }
}

void appendCreations(const Expected& expected, const KnownNodes& read, std::vector<Event>& events) {
  Entries created;
  for (const auto& [key, entry] : read.entries()) {
    if (expected.find(key) == nullptr) {
      created.push_back(&entry);
    }
  }
  for (const KnownNodes::Entry* entry : inOrder(created, false)) {
    events.push_back(
        resyncEvent(EventKind::kCreation, notification_layout::kObjectCreation, entry->node));
    events.back().object = entry->node;
  }
}

void appendChanges(const Expected& expected, const KnownNodes& read, std::vector<Event>& events) {
  std::vector<std::pair<std::uint64_t, Event>> changed;
  for (const auto& [key, entry] : read.entries()) {
    const KnownNodes::Entry* const before = expected.find(key);
    auto changes =
        before == nullptr ? std::vector<ChangedAttribute>() : changesOf(before->node, entry.node);
    if (!changes.empty()) {
      Event event =
          resyncEvent(EventKind::kChange, notification_layout::kAttributeValueChange, entry.node);
      event.attributes = std::move(changes);
      changed.emplace_back(entry.place, std::move(event));
    }
  }
  std::sort(changed.begin(), changed.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& [place, event] : changed) {
    events.push_back(std::move(event));
  }
}

}  // namespace

std::string keyOf(const NVSList_T& name) {
  std::string key;
  forEachPair(name, [&key](std::string_view pairName, std::string_view value) {
    appendSized(key, pairName);
    appendSized(key, value);
  });
  return key;
}

void KnownNodes::put(const Node_T& node) {
  const auto [entry, isNew] = entries_.try_emplace(keyOf(node.name));
  entry->second.node = node;
  if (isNew) {
    entry->second.place = nextPlace_++;
  }
}

void KnownNodes::apply(const Event& event) {
  const auto* const node = std::get_if<Node_T>(&event.object);
  if (event.kind == EventKind::kCreation && node != nullptr) {
    put(*node);
  } else if (event.kind == EventKind::kDeletion && event.objectName) {
    entries_.erase(keyOf(*event.objectName));
  } else if (event.kind == EventKind::kChange && event.objectName) {
    change(event);
  }
}

void KnownNodes::change(const Event& event) {
  const auto found = entries_.find(keyOf(*event.objectName));
  if (found == entries_.end()) {
    return;
  }
  for (const ChangedAttribute& changed : event.attributes) {
    assignAttribute(found->second.node, changed);
  }
}

const KnownNodes::Entry* KnownNodes::find(const std::string& key) const {
  const auto found = entries_.find(key);
  return found == entries_.end() ? nullptr : &found->second;
}

std::vector<Event> resync(const KnownNodes& known, KnownNodes& read,
                          const std::deque<Event>& pending) {
  for (const Event& event : pending) {
    read.apply(event);
  }
  const Expected expected(known, pending);
  std::vector<Event> events;
  appendDeletions(expected, read, events);
  appendCreations(expected, read, events);
  appendChanges(expected, read, events);
  return events;
}

}  // namespace topoctl
