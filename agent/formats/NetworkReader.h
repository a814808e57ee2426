// Reading network files: the native JSON format and GraphML (docs/formats.md).

#ifndef AGENT_FORMATS_NETWORKREADER_H
#define AGENT_FORMATS_NETWORKREADER_H

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "agent/base/Cancellation.h"
#include "agent/base/OperationResult.h"
#include "agent/formats/GraphmlNetwork.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkPlaces.h"

namespace agent {

// The readers select the format by the content. A hostile file fails like any other bad file.
//
// Thread-safety: any thread. Errors: kInvalidInput with one printable line, "FILE: PLACE: REASON";
// the place is line:column, a path such as topoNodes[3].parent, or "file". kInternalError after a
// cancellation.

// Reads and checks a whole network.
Result<Network> readNetworkFile(const std::filesystem::path& file);

// Reads and checks content for an addition to another network: parents may be missing. name: of a
// file or of anything else, for messages and for a graph without a label. numbering: of the
// elements of a graph; content of the native format is refused with a numbering.
Result<PlacedNetwork> readNetwork(const std::string& name, std::string_view content,
                                  std::optional<GraphmlNumbering> numbering = std::nullopt,
                                  const Cancellation& cancellation = Cancellation::none());

}  // namespace agent

#endif
