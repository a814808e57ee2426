#include "topoevent/NodeLabelCache.h"

namespace topo {

NodeLabelCache nodeLabelCache;
LastReportedLabel lastReportedLabel;

void NodeLabelCache::append(const std::string& identifier, const std::string& label) {
  const MutexLock lock(mutex_);
  entries_.push_back({identifier, label});
  try {
    first_.try_emplace(entries_.back().identifier, entries_.size() - 1);
  } catch (...) {
    entries_.pop_back();
    throw;
  }
}

bool NodeLabelCache::storeChange(const std::string& identifier, const std::string& label) {
  const MutexLock lock(mutex_);
  const auto found = first_.find(identifier);
  if (found == first_.end()) {
    return true;
  }
  std::string& known = entries_[found->second].label;
  if (known == label) {
    return false;
  }
  known = label;
  return true;
}

std::vector<std::string> NodeLabelCache::identifiers() const {
  return column(&Entry::identifier);
}

std::vector<std::string> NodeLabelCache::labels() const {
  return column(&Entry::label);
}

std::vector<std::string> NodeLabelCache::column(std::string Entry::*text) const {
  const MutexLock lock(mutex_);
  std::vector<std::string> texts;
  texts.reserve(entries_.size());
  for (const Entry& entry : entries_) {
    texts.push_back(entry.*text);
  }
  return texts;
}

bool LastReportedLabel::storeChange(const std::string& label) {
  const MutexLock lock(mutex_);
  if (label_ == label) {
    return false;
  }
  label_ = label;
  return true;
}

}  // namespace topo
