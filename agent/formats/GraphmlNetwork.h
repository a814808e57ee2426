// Reads networks in GraphML, the format of network collections (docs/formats.md). Part of the
// network reader.

#ifndef AGENT_FORMATS_GRAPHMLNETWORK_H
#define AGENT_FORMATS_GRAPHMLNETWORK_H

#include <string>
#include <string_view>

#include "agent/base/Cancellation.h"
#include "agent/network/Network.h"

namespace agent {

// Reads a network from GraphML. The result passes checkNetwork. baseName names a graph without a
// label.
//
// Thread-safety: any thread. Errors: throws ParseError and Cancelled. REQUIRES: the text is valid
// UTF-8 without NUL.
Network readGraphmlNetwork(std::string_view text, const std::string& baseName,
                           const Cancellation& cancellation);

}  // namespace agent

#endif
