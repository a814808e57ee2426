// The nodes of the topology subnetwork view as far as they are known, kept up to date by events.

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

// Tells names apart, whatever they hold.
std::string keyOf(const globaldefs::NVSList_T& name);

class KnownNodes {
 public:
  struct Entry {
    TopoManagementManager::Node_T node;
    std::uint64_t place;  // rises in the order in which names were put first
  };

  // In the place of a node of the same name.
  void put(const TopoManagementManager::Node_T& node);

  // What a creation, a deletion or a change of a node says; other events do nothing. Applying a
  // sequence of events once more leads to the same nodes.
  void apply(const Event& event);

  std::size_t size() const { return entries_.size(); }
  const Entry* find(const std::string& key) const;  // null when there is none
  const salted::Map<std::string, Entry>& entries() const { return entries_; }

 private:
  void change(const Event& event);

  salted::Map<std::string, Entry> entries_;  // by keyOf the name
  std::uint64_t nextPlace_ = 0;
};

// Applies the events that are held, in order, to the nodes that were read after they were known,
// while the events arrived: then `read` is what will be known after them. What is told is the
// difference to that which `known` would be after them, so nothing that a held event tells itself:
// deletions, children first; creations, parents first; changes.
std::vector<Event> resync(const KnownNodes& known, KnownNodes& read, const std::deque<Event>& held);

}  // namespace topoctl

#endif
