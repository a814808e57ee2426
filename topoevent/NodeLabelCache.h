// What the module remembers of labels in test mode, so that it reports a change only once.
//
// Thread-safety: every operation from any thread; comparing and storing is one step.

#ifndef TOPOEVENT_NODELABELCACHE_H
#define TOPOEVENT_NODELABELCACHE_H

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "hash/SaltedHash.h"

namespace topo {

// Two parallel lists: identifiers of nodes, and the last known label of each. An identifier may
// stand in them more than once; the first entry counts.
class NodeLabelCache {
 public:
  // Adds an entry at the end. Both lists grow or, when memory is short, none.
  void append(const std::string& identifier, const std::string& label);

  // False when the first entry of the identifier has this label already. Otherwise that entry gets
  // the label; an identifier without an entry is not added.
  bool storeChange(const std::string& identifier, const std::string& label);

  // Both lists as they stand.
  std::vector<std::string> identifiers() const;
  std::vector<std::string> labels() const;

 private:
  struct Entry {
    std::string identifier;
    std::string label;
  };

  std::vector<std::string> column(std::string Entry::*text) const;

  mutable std::mutex mutex_;
  std::deque<Entry> entries_;  // guarded by mutex_; an entry never moves
  // Where the first entry of an identifier is, so that a burst of changes is no walk each. The keys
  // are the identifiers of the entries. Guarded by mutex_.
  salted::Map<std::string_view, std::size_t> first_;
};

// The label that was reported last, "" at first.
class LastReportedLabel {
 public:
  // Stores a label; false when it was the last one already.
  bool storeChange(const std::string& label);

 private:
  std::mutex mutex_;
  std::string label_;  // guarded by mutex_
};

// One of each in a loaded module, until it is unloaded.
extern NodeLabelCache nodeLabelCache;
extern LastReportedLabel lastReportedLabel;

}  // namespace topo

#endif
