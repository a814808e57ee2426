// The module's user label map, shared by the views that run at the same time.

#ifndef TOPOMANAGEMENTMGR_USERLABELS_H
#define TOPOMANAGEMENTMGR_USERLABELS_H

#include <memory>
#include <string>

#include "sync/Mutex.h"

namespace topo {

// Guards a map (a UserlabelMap) with a mutex, and makes the map on the first lookup.
//
// Thread-safety: any thread. The mutex is locked during the creation of the map, and during each
// reload with its lookup. Ownership: owns the map, borrows the file name.
// Errors: exceptions of the map pass.
// Map: has the interface of UserlabelMap. Lock: locks a MapMutex for a scope.
template <typename Map, typename MapMutex = Mutex, typename Lock = MutexLock>
class UserLabels {
 public:
  constexpr explicit UserLabels(const char* fileName) : fileName_(fileName) {}

  // Reloads the map and returns the value of a key, "" for a missing key.
  std::string labelOf(const std::string& key) {
    std::string value;
    const Lock lock(mutex_);
    if (!map_) {
      map_ = std::make_unique<Map>(fileName_);
    }
    map_->GetValue(value, key);
    return value;
  }

 private:
  const char* const fileName_;
  MapMutex mutex_;
  std::unique_ptr<Map> map_ GUARDED_BY(mutex_);  // null until the first lookup
};

}  // namespace topo

#endif
