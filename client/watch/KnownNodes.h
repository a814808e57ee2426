// The nodes of the topology subnetwork view, updated by events.

#ifndef CLIENT_WATCH_KNOWNNODES_H
#define CLIENT_WATCH_KNOWNNODES_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "client/watch/Event.h"
#include "hash/SaltedHash.h"

namespace topoctl {

// A key for a name: two keys are equal if and only if the names are equal, for any texts in the
// names.
std::string keyOf(const globaldefs::NVSList_T& name);

// A copy of the view in memory: filled from a read view, then updated by each event.
//
// Thread-safety: none. Owns the nodes. Functions throw std::bad_alloc only.
class KnownNodes {
 public:
  struct Entry {
    TopoManagementManager::Node_T node;
    std::uint64_t place;  // position of the name in the order of the first put()
  };

  // Adds the node, or replaces the node of the same name.
  void put(const TopoManagementManager::Node_T& node);

  // Applies a creation, a deletion or a change of a node; ignores other events. Idempotent:
  // applying a sequence of events twice gives the same nodes.
  void apply(const Event& event);

  std::size_t size() const { return entries_.size(); }
  const Entry* find(const std::string& key) const;  // null: no such node
  const salted::Map<std::string, Entry>& entries() const { return entries_; }

 private:
  void change(const Event& event);

  salted::Map<std::string, Entry> entries_;  // by keyOf(name)
  std::uint64_t nextPlace_ = 0;
};

// Brings `known` up to date after a re-read. `read` is a snapshot of the view that was taken while
// the `pending` events were arriving. Applies `pending` to `read`. Returns synthetic events that
// turn known+pending into read+pending, so that no change of a pending event is printed twice:
// deletions (children first), creations (parents first), changes. Thread-safety: none.
std::vector<Event> resync(const KnownNodes& known, KnownNodes& read,
                          const std::deque<Event>& pending);

}  // namespace topoctl

#endif
