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

// Reads a network in the native format. Checks each record, but not the relations between records
// (checkNetwork).
//
// Thread-safety: any thread. Errors: throws ParseError and Cancelled. REQUIRES: the text is valid
// UTF-8.
Network readJsonNetwork(std::string_view text, const Cancellation& cancellation);

// All fields of the format: the fields of the top level under "", the fields of the entries of a
// list under the name of the list. Thread-safety: any thread.
const std::map<std::string, std::vector<std::string>>& jsonNetworkFields();

}  // namespace agent

#endif
