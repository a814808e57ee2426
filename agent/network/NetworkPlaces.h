// Names of places in a network file, for failures.

#ifndef AGENT_NETWORK_NETWORKPLACES_H
#define AGENT_NETWORK_NETWORKPLACES_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "agent/network/Network.h"

namespace agent {

// The path of a record or of its field in the native format, such as topoNodes[3].parent.
std::string placeOf(const char* list, std::size_t index, const char* field = "");

// The place in a file from which each record of a network was read. A plain value.
class NetworkPlaces {
 public:
  // Places in the native format.
  NetworkPlaces() = default;

  // Places in a GraphML file: the graph, its nodes and its edges. countries has the index of the
  // first node of each country, in the order of the countries' subnetworks.
  static NetworkPlaces inGraphml(std::vector<std::size_t> countries);

  // The place of the record at an index of a list, or of a field of the record. The places of
  // GraphML have no fields.
  std::string of(const char* list, std::size_t index, const char* field = "") const;

 private:
  std::string ofGraphmlNode(std::size_t index) const;

  bool isGraphml_ = false;
  std::vector<std::size_t> countries_;
};

// A network from a file, and the places of its records.
struct PlacedNetwork {
  Network network;
  NetworkPlaces places;
};

}  // namespace agent

#endif
