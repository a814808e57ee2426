// What the fuzz targets of network files share.

#ifndef TESTS_FUZZ_NETWORKFILE_H
#define TESTS_FUZZ_NETWORKFILE_H

#include <optional>
#include <string_view>
#include <utility>

#include "agent/formats/NetworkReader.h"
#include "agent/model/NetworkModel.h"
#include "agent/network/NetworkChecks.h"
#include "tests/fuzz/Require.h"

namespace fuzz {

// Reads the content as a network, and puts a network without a fault into a model. A refusal has
// one printable line. Thread-safety: any thread. Owns nothing. Errors: ends the program.
inline void readAndModel(std::string_view content,
                         std::optional<agent::GraphmlNumbering> numbering) {
  auto read = agent::readNetwork("file", content, numbering);
  if (!read.ok()) {
    requirePrintable(read.outcome().reason);
    return;
  }
  agent::Network network = std::move(read.value().network);
  require(agent::checkPart(network).ok(), "a network was read with a fault");
  if (!agent::checkNetwork(network).ok()) {
    return;
  }
  const std::size_t nodes = network.topoNodes.size();
  const agent::NetworkModel model(std::move(network));
  require(model.topoNodeCount() == nodes, "the model has another number of nodes");
}

}  // namespace fuzz

#endif
