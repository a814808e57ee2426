// Reading network files: the native JSON format and GraphML (docs/formats.md).

#ifndef AGENT_DOMAIN_NETWORKREADER_H
#define AGENT_DOMAIN_NETWORKREADER_H

#include <filesystem>

#include "agent/domain/Network.h"
#include "agent/domain/NetworkError.h"

namespace agent {

// Reads and checks a whole file; its content says which format it has. Throws NetworkError for a
// file that cannot be read, parsed or used; never crashes on one, however hostile. Any thread.
Network readNetworkFile(const std::filesystem::path& file);

}  // namespace agent

#endif
