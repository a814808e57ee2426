// A network that arrives in pieces, so that the records can be used before the last one is read.

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

// Thread-safety: one thread. Ownership: the caller owns the pieces. Errors: as the sources say.
class NetworkSource {
 public:
  NetworkSource() = default;
  virtual ~NetworkSource() = default;
  NetworkSource(const NetworkSource&) = delete;
  NetworkSource& operator=(const NetworkSource&) = delete;

  virtual NetworkSizes sizes() const = 0;

  // The next piece, no value after the last one. The lists of the network are the lists of its
  // pieces, joined; the first piece has the name of the managing system. No piece with a node
  // follows a piece with a record of another list.
  virtual std::optional<Network> next() = 0;

  // Waits for the end of all work on the network. Throws when the network must not be used.
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
