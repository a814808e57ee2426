// The managed network in memory: every read is served from here, none waits for disk.
//
// Results are copies. Thread-safety: any thread; readers do not wait for each other.

#ifndef AGENT_DOMAIN_NETWORKMODEL_H
#define AGENT_DOMAIN_NETWORKMODEL_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "agent/domain/ManagedObjects.h"
#include "agent/domain/Network.h"
#include "agent/domain/ObjectIndex.h"
#include "platform/domain/DomainRecords.h"

namespace agent {

class NetworkModel {
 public:
  NetworkModel() = default;
  explicit NetworkModel(Network network);
  NetworkModel(const NetworkModel&) = delete;
  NetworkModel& operator=(const NetworkModel&) = delete;

  // Serves another network from here on.
  void replace(Network network);

  std::string ems() const;
  std::size_t topoNodeCount() const;
  bool hasTopoSubnetwork(const std::string& id) const;
  bool hasObject(const ObjectKey& key) const;

  // The records that clients see under an object's name; none for an object that is not there.
  std::vector<NamedRecord> recordsOf(const ObjectKey& key) const;

  void appendTopoNodes(std::vector<NS_DOMAIN::TopoNode_T>& nodes) const;

  // All elements, or only those that the topology already shows.
  void appendNEIndexes(std::vector<NS_DOMAIN::NEIndex>& indexes, bool onlyShown) const;

  // One record an index, in the order of the indexes; unknown numbers are left out.
  void appendNEs(std::vector<NS_DOMAIN::NE_T>& elements,
                 const std::vector<NS_DOMAIN::NEIndex>& indexes) const;

  std::vector<NS_DOMAIN::ClockPositionInfo_T> clockPositions() const;
  std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> clockLinks() const;

  // The stored label of an object, empty where there is none.
  std::string labelOf(std::int32_t type, const std::string& id) const;

  // What changes in the store is changed here afterwards. An empty label is none.
  void setLabel(const ObjectKey& key, const std::string& label);
  // Of every record of the object.
  void setNativeName(const ObjectKey& key, const std::string& name);

 private:
  // A network with what makes its objects quick to find.
  struct Indexed {
    Indexed() = default;
    explicit Indexed(Network network);

    std::string& nameAt(const ObjectIndex::Place& place);
    std::string idAt(const ObjectIndex::Place& place) const;

    Network network;  // without the labels
    ObjectIndex objects;
    std::unordered_map<std::int32_t, std::size_t> elements;  // number, position in the list
    std::map<std::pair<std::int32_t, std::string>, std::string> labels;
  };

  mutable std::shared_mutex mutex_;
  Indexed data_;  // guarded by mutex_
};

}  // namespace agent

#endif
