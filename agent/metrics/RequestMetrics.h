// Counts and measures the requests of clients.

#ifndef AGENT_METRICS_REQUESTMETRICS_H
#define AGENT_METRICS_REQUESTMETRICS_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "agent/metrics/MetricFamilies.h"
#include "orb/orb.h"

namespace agent {

// The operations and outcomes of requests are those of fixed tables, and every other name counts as
// "other", so a client cannot add time series.
//
// Thread-safety: any thread; count() locks nothing, and its threads share counters only when there
// are more threads than shards.
// Ownership: owns the counters.
// Errors: the constructor and collect() throw std::bad_alloc; count() throws nothing.
class RequestMetrics {
 public:
  RequestMetrics();
  RequestMetrics(const RequestMetrics&) = delete;
  RequestMetrics& operator=(const RequestMetrics&) = delete;

  void count(const orb::FinishedRequest& request) noexcept;

  // topo_requests_total, and topo_request_duration_seconds of the operations with requests.
  MetricFamilies collect() const;

  // Whether the operation has time series of its own.
  static bool isKnown(std::string_view operation);

 private:
  static constexpr std::size_t kOperations = 48;
  static constexpr std::size_t kOutcomes = 20;
  static constexpr std::size_t kBuckets = 13;
  static constexpr std::size_t kShards = 8;
  using Count = std::atomic<std::uint64_t>;

  struct OperationCounters {
    std::array<Count, kOutcomes> outcomes{};
    std::array<Count, kBuckets> durations{};
    Count nanoseconds{0};
  };
  struct alignas(64) Shard {
    std::array<OperationCounters, kOperations> operations;
  };

  static std::size_t shardOfThread();
  prometheus::MetricFamily requests() const;
  prometheus::MetricFamily durations() const;
  template <typename Select>
  std::uint64_t sum(std::size_t operation, Select select) const;

  const std::unique_ptr<std::array<Shard, kShards>> shards_;
};

}  // namespace agent

#endif
