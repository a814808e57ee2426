// Caches of node labels, which suppress repeated label notifications in test mode.
//
// Thread-safety: any thread; storeChange compares and stores under one lock. Ownership: the caches
// own their texts.
// Errors: a function that stores may throw std::bad_alloc and then changes nothing.

#ifndef TOPOEVENT_NODELABELCACHE_H
#define TOPOEVENT_NODELABELCACHE_H

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "hash/SaltedHash.h"
#include "sync/Mutex.h"

namespace topo {

// A list of node identifiers with their last known labels. When an identifier occurs several times,
// the first entry counts.
class NodeLabelCache {
 public:
  // Appends an entry.
  void append(const std::string& identifier, const std::string& label);

  // Stores a label in the entry of an identifier. Returns false when the entry has this label
  // already; returns true, and stores nothing, for an identifier without an entry.
  bool storeChange(const std::string& identifier, const std::string& label);

  // Copies of the identifiers and of the labels, in the order of the entries.
  std::vector<std::string> identifiers() const;
  std::vector<std::string> labels() const;

 private:
  struct Entry {
    std::string identifier;
    std::string label;
  };

  std::vector<std::string> column(std::string Entry::*text) const;

  mutable Mutex mutex_;
  std::deque<Entry> entries_ GUARDED_BY(mutex_);  // an entry never moves
  // Index of the first entry of each identifier. The keys refer to the entries.
  salted::Map<std::string_view, std::size_t> first_ GUARDED_BY(mutex_);
};

// The label of the last reported change; "" initially.
class LastReportedLabel {
 public:
  // Stores a label. Returns false when the label is the stored one.
  bool storeChange(const std::string& label);

 private:
  Mutex mutex_;
  std::string label_ GUARDED_BY(mutex_);
};

// The caches of the module, which live until the module is unloaded.
extern NodeLabelCache nodeLabelCache;
extern LastReportedLabel lastReportedLabel;

}  // namespace topo

#endif
