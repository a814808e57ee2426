// The user label map of the module, shared by the views that run at the same time.

#ifndef TOPOMANAGEMENTMGR_USERLABELS_H
#define TOPOMANAGEMENTMGR_USERLABELS_H

#include <memory>
#include <mutex>
#include <string>

namespace topo {

// Map is a UserlabelMap. The first lookup makes the map, which lives as long as this object.
//
// Thread-safety: any thread. The creation of the map, and each reload together with its lookup, are
// one step.
template <typename Map, typename Mutex = std::mutex>
class UserLabels {
 public:
  // The file name is borrowed.
  constexpr explicit UserLabels(const char* fileName) : fileName_(fileName) {}

  // The value that the map has for a key after a reload, "" when there is none. Exceptions of the
  // map pass.
  std::string labelOf(const std::string& key) {
    std::string value;
    const std::lock_guard<Mutex> lock(mutex_);
    if (!map_) {
      map_ = std::make_unique<Map>(fileName_);
    }
    map_->GetValue(value, key);
    return value;
  }

 private:
  const char* const fileName_;
  Mutex mutex_;
  std::unique_ptr<Map> map_;  // guarded by mutex_; null until the first lookup
};

}  // namespace topo

#endif
