// The managed network in memory, which answers every read without the disk.

#ifndef AGENT_MODEL_NETWORKMODEL_H
#define AGENT_MODEL_NETWORKMODEL_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "agent/model/NetworkTables.h"
#include "agent/model/PreparedChange.h"
#include "agent/model/TurnstileMutex.h"
#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkSource.h"
#include "platform/domain/DomainRecords.h"
#include "sync/ThreadAnnotations.h"

namespace agent {

// The amount of data in the views of a network.
struct NetworkLoad {
  struct Records {
    std::size_t count = 0;
    std::size_t texts = 0;  // bytes of all texts of the records
    std::size_t named = 0;  // nodes and elements only: records that have a CORBA name
  };

  Records nodes;
  Records elements;  // without elements that a node shows
  Records positions;
  Records links;  // texts include the labels of the links
};

// Results are copies.
//
// Thread-safety: any thread may read; one thread at a time prepares and applies changes. Readers do
// not wait for each other, and a change waits only for the reads in progress. Ownership: owns the
// network. Errors: std::bad_alloc; apply() cannot fail.
class NetworkModel {
 public:
  NetworkModel() = default;
  explicit NetworkModel(Network network);

  // Takes all pieces of the source. Exceptions of the source pass.
  explicit NetworkModel(NetworkSource& source);
  NetworkModel(const NetworkModel&) = delete;
  NetworkModel& operator=(const NetworkModel&) = delete;

  std::string ems() const;
  std::size_t topoNodeCount() const;
  bool hasTopoSubnetwork(const std::string& id) const;
  bool hasObject(const ObjectKey& key) const;

  bool hasTopoNode(const std::string& id) const;  // of any type
  bool hasNetworkElement(std::int32_t number) const;
  bool hasClockPosition(const std::string& reference) const;
  bool hasClockLink(const std::string& id) const;
  bool hasLabel(const ObjectKey& key) const;

  void appendTopoNodes(std::vector<NS_DOMAIN::TopoNode_T>& nodes) const;

  // Appends all elements, or only the elements that a topology node shows.
  void appendNEIndexes(std::vector<NS_DOMAIN::NEIndex>& indexes, bool onlyShown) const;

  // Appends one record for each known index, in the order of the indexes.
  void appendNEs(std::vector<NS_DOMAIN::NE_T>& elements,
                 const std::vector<NS_DOMAIN::NEIndex>& indexes) const;

  std::vector<NS_DOMAIN::ClockPositionInfo_T> clockPositions() const;
  std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> clockLinks() const;

  // The record with an id; empty without one. A topology node may have any type.
  std::optional<NS_DOMAIN::TopoNode_T> topoNode(const std::string& id) const;
  std::optional<NetworkElement> networkElement(std::int32_t number) const;
  std::optional<NS_DOMAIN::ClockPositionInfo_T> clockPosition(const std::string& reference) const;
  std::optional<NS_DOMAIN::ClockTopoLinkInfo_T> clockLink(const std::string& id) const;

  // As NetworkTables::isWithin.
  bool isWithin(const std::string& nodeId, const std::string& ancestorId) const;

  // The id of the first topology node that clients see as an object.
  std::optional<std::string> nodeShownAs(const NumberedObject& object) const;

  // Empty for an object that does not exist.
  std::optional<ObjectView> object(const ObjectKey& key) const;

  // Empty for an object without a stored label.
  std::string labelOf(std::int32_t type, const std::string& id) const;

  // Takes time linear in the size of the network.
  NetworkLoad load() const;

  // Rises with every change that readers can see.
  std::uint64_t version() const { return version_.load(); }

  // --- Changes. A change is prepared, then committed to the store, then applied: apply() cannot
  // fail. A prepared change is valid until another change is applied. NetworkTables.h describes the
  // functions of the same names.

  PreparedChange prepareAddition(Network network);
  PreparedChange prepareRemoval(const std::string& nodeId) const;
  PreparedChange prepareRenaming(const ObjectKey& key, const std::string& name);
  PreparedChange prepareNodeRenaming(const std::string& nodeId, const std::string& name);
  PreparedChange prepareReplacement(Network network) const;
  PreparedChange prepareElementRenaming(std::int32_t number, const std::string& name);
  PreparedChange prepareElementRemoval(std::int32_t number) const;
  PreparedChange preparePositionRemoval(const std::string& reference) const;
  PreparedChange prepareLinkRemoval(const std::string& id) const;
  PreparedChange prepareUpdate(AnyRecord record) const;
  static PreparedChange prepareLabel(const ObjectKey& key, const std::string& label);
  static PreparedChange prepareAttributeRemoval(const ObjectKey& key);

  void apply(PreparedChange& change) noexcept;

 private:
  PreparedChange tablesFor(Network network) const;

  mutable TurnstileMutex mutex_;
  NetworkTables data_ GUARDED_BY(mutex_);
  std::atomic<std::uint64_t> version_{0};
};

}  // namespace agent

#endif
