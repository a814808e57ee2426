// Looks records up in the indexes of NetworkTables. Part of the model. Thread-safety: none.

#ifndef AGENT_MODEL_RECORDLOOKUP_H
#define AGENT_MODEL_RECORDLOOKUP_H

#include <optional>

#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"

namespace agent {

// The record of a key, null without one. The map has pointers or iterators.
template <typename Map>
auto recordIn(const Map& map, const typename Map::key_type& key)
    -> decltype(&*map.find(key)->second) {
  const auto found = map.find(key);
  return found == map.end() ? nullptr : &*found->second;
}

// The object under whose name clients see an element; no value for a negative number.
inline std::optional<NumberedObject> objectOf(const NetworkElement& element) {
  return element.number < 0 ? std::nullopt
                            : std::optional(NumberedObject{kManagedElementType, element.number});
}

}  // namespace agent

#endif
