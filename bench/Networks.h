// Reproducible networks of any size.

#ifndef BENCH_NETWORKS_H
#define BENCH_NETWORKS_H

#include <cstddef>
#include <string>

#include "agent/network/Network.h"

namespace bench {

constexpr const char* kEms = "Bench";

// The first node of trees and chains; all other nodes are below it.
constexpr const char* kTop = "subnetwork-0";

// One node in ten is a subnetwork, followed by its nine elements; every subnetwork has up to ten
// subnetworks. The depth is the decimal logarithm of the size. The topology shows all elements.
agent::Network tree(std::size_t nodes);

// A chain of subnetworks, each below the previous one.
agent::Network chain(std::size_t nodes);

// Chains of `depth` subnetworks below the first node, which counts as well. The last chain may be
// shorter.
agent::Network chains(std::size_t nodes, std::size_t depth);

// Two trees: the first has 90% of the nodes, the second has the other 10%.
agent::Network forest(std::size_t nodes);
std::size_t nodesBelowTopOfForest(std::size_t nodes);

// Clock positions, and a link from each to the next.
agent::Network clock(std::size_t positions);

// A network file in the native format with these nodes and no other objects.
std::string networkFile(const agent::Network& network);

}  // namespace bench

#endif
