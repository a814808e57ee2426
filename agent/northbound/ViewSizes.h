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

// What the records of a view are made of.
enum class ViewKind { kNodes, kClockPositions, kClockLinks };

// In bytes, allocation overhead included.
struct ViewSize {
  std::size_t records = 0;  // how many the whole view has at most
  std::size_t result = 0;   // of all records, as the module holds them for the client
  std::size_t work = 0;     // of what the computation needs besides, freed at its end

  // The share of some records in the result; a record has the average size.
  std::size_t of(std::size_t count) const {
    return records == 0 ? 0 : count * (result / records + 1);
  }
};

// Computes the sizes from the model: every record counts with the fixed size of its parts and with
// its texts. A view below a subnetwork counts as the whole network.
//
// Borrows the model, which must outlive it. Thread-safety: any thread.
class ViewSizes {
 public:
  // The ems name is in every name of a record.
  ViewSizes(const NetworkModel& model, const std::string& emsName);

  // With the test switch on, records have additional information.
  ViewSize of(ViewKind kind, bool testSwitch);

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
