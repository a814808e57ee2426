// Networks in GraphML, as network collections publish them (docs/formats.md). Part of the network
// reader.

#ifndef AGENT_FORMATS_GRAPHMLNETWORK_H
#define AGENT_FORMATS_GRAPHMLNETWORK_H

#include <string>
#include <string_view>

#include "agent/base/Cancellation.h"
#include "agent/network/Network.h"

namespace agent {

// The network that a GraphML text describes, which needs no check of its parts; baseName names a
// graph without a label. Throws Refusal. REQUIRES: the text is valid UTF-8 without NUL.
Network readGraphmlNetwork(std::string_view text, const std::string& baseName,
                           const Cancellation& cancellation);

}  // namespace agent

#endif
