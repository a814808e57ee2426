#include "agent/RoomOptions.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <string>

#include "agent/base/Log.h"
#include "agent/process/Descriptors.h"

namespace agent {
namespace {

std::size_t connectionLimit(const Options& options) {
  const std::size_t descriptors = descriptorLimit();
  const std::size_t connections = connectionsWithin(descriptors, options.maxConnections);
  if (connections < options.maxConnections) {
    log(kLogErrors, "at most " + std::to_string(connections) + " connections instead of " +
                        std::to_string(options.maxConnections) + ": the limit of open files is " +
                        std::to_string(descriptors));
  }
  return connections;
}

std::size_t quarterOf(const MemoryUse& memory) {
  return std::min(memory.residentLimit, memory.addressLimit) / 4;
}

}  // namespace

orb::Options orbOptions(const Options& options) {
  orb::Options result;
  result.maxMessageBytes = options.maxMessageBytes;
  result.maxRequestBytes = options.maxRequestBytes;
  result.largeOperations = {"importNetwork"};
  result.maxConnections = connectionLimit(options);
  result.publish = options.publish;
  result.tls = options.tls;
  // Consumers are named by the addresses in their references, which no certificate contains.
  result.tls.checkServerName = false;
  return result;
}

AccessSettings accessSettings(const Options& options) {
  AccessSettings result;
  result.readOnly = options.readOnly;
  result.consoleEndpoint = options.consoleEndpoint;
  return result;
}

std::vector<AddressRange> pushRanges(const Options& options) {
  std::vector<AddressRange> ranges;
  std::transform(options.pushTo.begin(), options.pushTo.end(), std::back_inserter(ranges),
                 AddressRange::parse);
  return ranges;
}

NotifierOptions notifierOptions(const Options& options) {
  NotifierOptions result;
  result.queueLimit = options.queueLimit;
  result.queueBytes = options.queueBytes;
  result.maxSubscribers = options.maxSubscribers;
  result.maxSubscribersPerPeer = options.maxSubscribersPerPeer;
  result.channel = options.eventChannel;
  return result;
}

IteratorLimits iteratorLimits(const Options& options, const MemoryUse& memory) {
  const std::chrono::duration<double> timeout(options.iteratorTimeoutSeconds);
  return {std::chrono::duration_cast<std::chrono::milliseconds>(timeout), options.maxIterators,
          std::min(options.iteratorMemory, quarterOf(memory))};
}

ViewLimits viewLimits(const Options& options, const MemoryUse& memory) {
  ViewLimits limits;
  limits.views = options.maxViews;
  limits.memory = std::min(options.viewMemory, quarterOf(memory));
  return limits;
}

}  // namespace agent
