// Estimates of the memory that the views of the network take.

#ifndef AGENT_NORTHBOUND_VIEWSIZES_H
#define AGENT_NORTHBOUND_VIEWSIZES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "agent/model/NetworkModel.h"
#include "sync/Mutex.h"

namespace agent {

// The kind of the records of a view.
enum class ViewKind { kNodes, kClockPositions, kClockLinks };

// In bytes, allocation overhead included.
struct ViewSize {
  std::size_t records = 0;  // upper bound for the whole view
  std::size_t result = 0;   // of all records of the result
  std::size_t work = 0;     // needed during the computation only

  // The memory of `count` records of average size.
  std::size_t of(std::size_t count) const {
    return records == 0 ? 0 : count * (result / records + 1);
  }
};

// Computes the sizes from the model: the fixed size and the texts of every record. A view below a
// subnetwork counts as the whole network.
//
// Thread-safety: any thread.
// Ownership: borrows the model, which outlives this object.
// Errors: throws std::bad_alloc.
class ViewSizes {
 public:
  // emsName is part of every name in a record.
  ViewSizes(const NetworkModel& model, const std::string& emsName);

  // With the test switch on, every record has additional information.
  ViewSize of(ViewKind kind, bool testSwitch);

  // The number of records of the topology view: the nodes and the elements without a node, except
  // for records without a CORBA name. With the test switch on: the nodes only.
  std::size_t topologyRecords(bool testSwitch);

 private:
  NetworkLoad currentLoad();

  const NetworkModel& model_;
  const std::size_t emsBytes_;

  Mutex mutex_;
  std::optional<NetworkLoad> load_ GUARDED_BY(mutex_);
  std::uint64_t version_ GUARDED_BY(mutex_) = 0;  // of the model, for load_
};

}  // namespace agent

#endif
