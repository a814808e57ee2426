// Reads networks in GraphML, the format of network collections (docs/formats.md). Part of the
// network reader.

#ifndef AGENT_FORMATS_GRAPHMLNETWORK_H
#define AGENT_FORMATS_GRAPHMLNETWORK_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "agent/base/Cancellation.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkPlaces.h"

namespace agent {

// Numbers the elements of a graph from firstElement, at least 1, instead of from 1. The ids of the
// links begin with the id of the graph, so that several graphs fit into one network.
struct GraphmlNumbering {
  std::int32_t firstElement;
};

// Reads a network from GraphML. The result passes checkNetwork. baseName names a graph without a
// label.
//
// Thread-safety: any thread. Errors: throws ParseError and Cancelled. REQUIRES: the text is valid
// UTF-8 without NUL.
PlacedNetwork readGraphmlNetwork(std::string_view text, const std::string& baseName,
                                 std::optional<GraphmlNumbering> numbering,
                                 const Cancellation& cancellation);

}  // namespace agent

#endif
