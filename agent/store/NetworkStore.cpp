#include "agent/store/NetworkStore.h"

#include <iterator>
#include <utility>

#include "agent/base/PrintableText.h"

namespace agent {
namespace {

template <typename Record>
void append(std::vector<Record>& more, std::vector<Record>& records) {
  records.insert(records.end(), std::make_move_iterator(more.begin()),
                 std::make_move_iterator(more.end()));
}

}  // namespace

StoreError::StoreError(const std::string& path, const std::string& reason)
    : std::runtime_error(printable(path, 4096) + ": " + printable(reason)) {}

Network NetworkStore::read() {
  Network network;
  read([&network](Network piece) {
    network.ems += piece.ems;
    append(piece.topoNodes, network.topoNodes);
    append(piece.networkElements, network.networkElements);
    append(piece.clockPositions, network.clockPositions);
    append(piece.clockLinks, network.clockLinks);
    append(piece.objectLabels, network.objectLabels);
  });
  return network;
}

}  // namespace agent
