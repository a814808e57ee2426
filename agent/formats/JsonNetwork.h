// The native network format: JSON (docs/formats.md). Part of the network reader.

#ifndef AGENT_FORMATS_JSONNETWORK_H
#define AGENT_FORMATS_JSONNETWORK_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "agent/base/Cancellation.h"
#include "agent/network/Network.h"

namespace agent {

// The network that a text in the native format describes; what must hold between its parts is not
// checked. Throws Refusal. REQUIRES: valid UTF-8.
Network readJsonNetwork(std::string_view text, const Cancellation& cancellation);

// Every field that the format knows: those of the whole under "", those of an entry of a list under
// the list's name.
const std::map<std::string, std::vector<std::string>>& jsonNetworkFields();

}  // namespace agent

#endif
