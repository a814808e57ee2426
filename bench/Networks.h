// The networks that are measured: of any size, the same every time.

#ifndef BENCH_NETWORKS_H
#define BENCH_NETWORKS_H

#include <cstddef>
#include <string>

#include "agent/network/Network.h"

namespace bench {

constexpr const char* kEms = "Bench";

// Everything else is below this subnetwork, the first node of trees and chains.
constexpr const char* kTop = "subnetwork-0";

// One node in ten is a subnetwork, the nine after it are its elements; every subnetwork has up to
// ten subnetworks. As deep as the decimal logarithm of its size. The topology shows all elements.
agent::Network tree(std::size_t nodes);

// Subnetworks, each below the one before: as deep as it is long.
agent::Network chain(std::size_t nodes);

// Clock positions, and a link from each to the next.
agent::Network clock(std::size_t positions);

// A network file in the native format that holds the nodes and nothing else.
std::string networkFile(const agent::Network& network);

}  // namespace bench

#endif
