// Which records of a network an object is made of.

#ifndef AGENT_DOMAIN_OBJECTINDEX_H
#define AGENT_DOMAIN_OBJECTINDEX_H

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "agent/domain/ManagedObjects.h"
#include "agent/domain/Network.h"

namespace agent {

// The lists of a network whose records have a name.
enum class RecordList { kTopoNodes, kNetworkElements, kClockPositions, kClockLinks };

// One record of a network, by the id that it has in its list; an element's number as text.
struct NamedRecord {
  RecordList list;
  std::string id;
};

// Made once for a network. A subnetwork and a link are one record; an element is all records that
// clients see under its name. Thread-safety: none needed, nothing is ever changed.
class ObjectIndex {
 public:
  struct Place {
    RecordList list;
    std::size_t index;
  };

  ObjectIndex() = default;
  explicit ObjectIndex(const Network& network);

  bool contains(const ObjectKey& key) const;

  // Empty for an object that is not there.
  std::vector<Place> placesOf(const ObjectKey& key) const;

 private:
  struct NumberedPlace {
    NumberedObject object;
    Place place;
  };
  using TextPlaces = std::unordered_map<std::string, std::size_t>;  // id, position in its list

  static bool precedes(const NumberedPlace& place, const NumberedObject& object);
  void addNodes(const Network& network);
  void addClock(const Network& network);
  void add(const std::optional<NumberedObject>& object, RecordList list, std::size_t index);

  TextPlaces subnetworks_;
  TextPlaces clockLinks_;
  std::vector<NumberedPlace> numbered_;  // ordered by object
};

}  // namespace agent

#endif
