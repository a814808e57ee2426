#include "agent/metrics/RequestMetrics.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

namespace agent {
namespace {

// The operations of the interface, in the order of the characters.
constexpr std::string_view kOperationNames[] = {
    "_is_a",
    "_non_existent",
    "beginBackup",
    "beginExport",
    "changeClockLink",
    "changeClockPosition",
    "changeNode",
    "continueBackup",
    "createClockLink",
    "createClockPosition",
    "createElement",
    "createNode",
    "deleteClockLink",
    "deleteClockPosition",
    "deleteElement",
    "deleteLabel",
    "deleteNode",
    "destroy",
    "endBackup",
    "getAllClockSourceViewlTopologicalLinks",
    "getCapabilities",
    "getClockSourceSubnetworkViewInfo",
    "getEventAccess",
    "getLength",
    "getObject",
    "getProtectSubnetworkViewInfo",
    "getStatus",
    "getTopoSubnetworkViewInfo",
    "getViewInfoByTopoSubnetwork",
    "importNetwork",
    "moveNode",
    "next_n",
    "ping",
    "reloadModule",
    "renameElement",
    "renameNode",
    "setAdditionalInfo",
    "setElementShown",
    "setLabel",
    "setNativeEMSName",
    "setOwner",
    "setTestSwitch",
    "setUserLabel",
    "subscribe",
    "unsubscribe",
};

constexpr std::string_view kOutcomeNames[] = {
    "ok",
    "ProcessingFailureException",
    "BAD_OPERATION",
    "BAD_PARAM",
    "COMM_FAILURE",
    "IMP_LIMIT",
    "INTERNAL",
    "MARSHAL",
    "NO_IMPLEMENT",
    "NO_MEMORY",
    "NO_PERMISSION",
    "NO_RESOURCES",
    "OBJECT_NOT_EXIST",
    "OBJ_ADAPTER",
    "TIMEOUT",
    "TRANSIENT",
    "UNKNOWN",
};

// The bounds of the histogram's buckets. The last bucket has no bound.
constexpr std::chrono::nanoseconds kBounds[] = {
    std::chrono::microseconds(100), std::chrono::microseconds(250), std::chrono::microseconds(500),
    std::chrono::milliseconds(1),   std::chrono::milliseconds(5),   std::chrono::milliseconds(10),
    std::chrono::milliseconds(50),  std::chrono::milliseconds(100), std::chrono::milliseconds(500),
    std::chrono::seconds(1),        std::chrono::seconds(5),        std::chrono::seconds(20),
};

constexpr std::string_view kOther = "other";

constexpr std::size_t kKnownOperations = std::size(kOperationNames);
constexpr std::size_t kKnownOutcomes = std::size(kOutcomeNames);

// The position of the operation; kKnownOperations for another operation.
std::size_t operationIndex(std::string_view operation) {
  const auto* const found =
      std::lower_bound(std::begin(kOperationNames), std::end(kOperationNames), operation);
  return found != std::end(kOperationNames) && *found == operation
             ? static_cast<std::size_t>(found - std::begin(kOperationNames))
             : kKnownOperations;
}

std::size_t outcomeIndex(const char* exception) {
  if (exception == nullptr) {
    return 0;
  }
  const auto* const found =
      std::find(std::next(std::begin(kOutcomeNames)), std::end(kOutcomeNames), exception);
  return static_cast<std::size_t>(found - std::begin(kOutcomeNames));
}

std::string operationName(std::size_t index) {
  return std::string(index < kKnownOperations ? kOperationNames[index] : kOther);
}

std::string outcomeName(std::size_t index) {
  return std::string(index < kKnownOutcomes ? kOutcomeNames[index] : kOther);
}

double inSeconds(std::chrono::nanoseconds duration) {
  return std::chrono::duration<double>(duration).count();
}

// The upper bound of a bucket in seconds.
double boundOf(std::size_t bucket) {
  return bucket < std::size(kBounds) ? inSeconds(kBounds[bucket])
                                     : std::numeric_limits<double>::infinity();
}

}  // namespace

RequestMetrics::RequestMetrics() : shards_(std::make_unique<std::array<Shard, kShards>>()) {
  static_assert(kKnownOperations < kOperations && kKnownOutcomes < kOutcomes);
  static_assert(std::size(kBounds) + 1 == kBuckets);
}

std::size_t RequestMetrics::shardOfThread() {
  static std::atomic<std::size_t> threads{0};
  thread_local const std::size_t shard = threads.fetch_add(1, std::memory_order_relaxed) % kShards;
  return shard;
}

bool RequestMetrics::isKnown(std::string_view operation) {
  return operationIndex(operation) < kKnownOperations;
}

void RequestMetrics::count(const orb::FinishedRequest& request) noexcept {
  OperationCounters& counters =
      (*shards_)[shardOfThread()].operations[operationIndex(request.operation)];
  const auto duration = std::max(std::chrono::nanoseconds(request.duration), {});
  const auto* const bound = std::lower_bound(std::begin(kBounds), std::end(kBounds), duration);
  const auto bucket = static_cast<std::size_t>(bound - std::begin(kBounds));
  counters.outcomes[outcomeIndex(request.exception)].fetch_add(1, std::memory_order_relaxed);
  counters.durations[bucket].fetch_add(1, std::memory_order_relaxed);
  counters.nanoseconds.fetch_add(static_cast<std::uint64_t>(duration.count()),
                                 std::memory_order_relaxed);
}

template <typename Select>
std::uint64_t RequestMetrics::sum(std::size_t operation, Select select) const {
  std::uint64_t total = 0;
  for (const Shard& shard : *shards_) {
    total += select(shard.operations[operation])->load(std::memory_order_relaxed);
  }
  return total;
}

MetricFamilies RequestMetrics::collect() const {
  return {requests(), durations()};
}

// Every operation has the outcome "ok" from the start, so that a rate has a first value.
prometheus::MetricFamily RequestMetrics::requests() const {
  prometheus::MetricFamily family = counterFamily(
      "topo_requests_total", "Requests from other processes that expect a reply, by outcome.");
  for (std::size_t operation = 0; operation <= kKnownOperations; ++operation) {
    for (std::size_t outcome = 0; outcome <= kKnownOutcomes; ++outcome) {
      const std::uint64_t count = sum(operation, [outcome](const OperationCounters& counters) {
        return &counters.outcomes[outcome];
      });
      if (count > 0 || outcome == 0) {
        addMetric(family,
                  {{"operation", operationName(operation)}, {"outcome", outcomeName(outcome)}},
                  static_cast<double>(count));
      }
    }
  }
  return family;
}

prometheus::MetricFamily RequestMetrics::durations() const {
  prometheus::MetricFamily family;
  family.name = "topo_request_duration_seconds";
  family.help = "Time from the dispatch of a request until its outcome was known.";
  family.type = prometheus::MetricType::Histogram;
  for (std::size_t operation = 0; operation <= kKnownOperations; ++operation) {
    prometheus::ClientMetric metric;
    auto& [count, seconds, buckets] = metric.histogram;
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
      count += sum(operation, [bucket](const OperationCounters& counters) {
        return &counters.durations[bucket];
      });
      buckets.push_back({count, boundOf(bucket)});
    }
    if (count == 0) {
      continue;
    }
    seconds = inSeconds(std::chrono::nanoseconds(
        sum(operation, [](const OperationCounters& counters) { return &counters.nanoseconds; })));
    metric.label = metricLabels({{"operation", operationName(operation)}});
    family.metric.push_back(std::move(metric));
  }
  return family;
}

}  // namespace agent
