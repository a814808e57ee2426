// A network in pieces. The owner uses the first pieces while a thread reads the next ones.

#ifndef AGENT_NETWORK_NETWORKSOURCE_H
#define AGENT_NETWORK_NETWORKSOURCE_H

#include <cstddef>
#include <optional>
#include <utility>

#include "agent/network/Network.h"

namespace agent {

// Estimates of the lengths of the lists of a network, to reserve memory.
struct NetworkSizes {
  std::size_t nodes = 0;
  std::size_t elements = 0;
  std::size_t positions = 0;
  std::size_t links = 0;
};

inline NetworkSizes sizesOf(const Network& network) {
  return {network.topoNodes.size(), network.networkElements.size(), network.clockPositions.size(),
          network.clockLinks.size()};
}

// Thread-safety: one thread. Ownership: the caller owns the pieces. Errors: see the derived
// classes.
class NetworkSource {
 public:
  NetworkSource() = default;
  virtual ~NetworkSource() = default;
  NetworkSource(const NetworkSource&) = delete;
  NetworkSource& operator=(const NetworkSource&) = delete;

  virtual NetworkSizes sizes() const = 0;

  // The next piece; no value after the last piece. Each list of the network is the concatenation of
  // the lists of the pieces. The first piece has the name of the managing system. No node follows a
  // piece with records of other lists.
  virtual std::optional<Network> next() = 0;

  // Waits for the end of the source's work, such as its use of a store. Throws when the network
  // must not be used.
  virtual void finish() {}
};

// A complete network in one piece. Errors: none.
class WholeNetwork final : public NetworkSource {
 public:
  explicit WholeNetwork(Network network) : sizes_(sizesOf(network)), network_(std::move(network)) {}

  NetworkSizes sizes() const override { return sizes_; }
  std::optional<Network> next() override { return std::exchange(network_, std::nullopt); }

 private:
  const NetworkSizes sizes_;
  std::optional<Network> network_;
};

}  // namespace agent

#endif
