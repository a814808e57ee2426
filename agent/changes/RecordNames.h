// Records as the messages of the services name them, such as: node "NE=5". Part of the services.
// Thread-safety of all functions: any thread. Errors: std::bad_alloc.

#ifndef AGENT_CHANGES_RECORDNAMES_H
#define AGENT_CHANGES_RECORDNAMES_H

#include <cstdint>
#include <string>

#include "agent/base/PrintableText.h"
#include "agent/network/ManagedObjects.h"

namespace agent {

inline std::string nodeNamed(const std::string& id) {
  return "node " + inQuotes(id);
}

inline std::string elementNamed(std::int32_t number) {
  return "network element " + std::to_string(number);
}

inline std::string positionNamed(const std::string& reference) {
  return "clock position " + inQuotes(reference);
}

inline std::string linkNamed(const std::string& id) {
  return "clock link " + inQuotes(id);
}

inline std::string labelNamed(const ObjectKey& key) {
  return "label of the object " + std::to_string(key.type) + ' ' + inQuotes(key.id);
}

}  // namespace agent

#endif
