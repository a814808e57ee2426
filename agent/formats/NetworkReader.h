// Reading network files: the native JSON format and GraphML (docs/formats.md).

#ifndef AGENT_FORMATS_NETWORKREADER_H
#define AGENT_FORMATS_NETWORKREADER_H

#include <filesystem>
#include <string>
#include <string_view>

#include "agent/base/Cancellation.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkError.h"

namespace agent {

// Reads and checks a whole file; its content says which format it has. Throws NetworkError for a
// file that cannot be read, parsed or used; never crashes on one, however hostile. Any thread.
Network readNetworkFile(const std::filesystem::path& file);

// The same for content that is to be added to a network: parents that are not in it may be there.
// The name, of a file or anything else, is for messages and for a graph without a label. Throws
// Cancelled too.
Network readNetwork(const std::string& name, std::string_view content,
                    const Cancellation& cancellation = Cancellation::none());

}  // namespace agent

#endif
