#include "agent/network/NetworkPlaces.h"

#include <string_view>

namespace agent {

std::string placeOf(const char* list, std::size_t index, const char* field) {
  return std::string(list) + '[' + std::to_string(index) + ']' + field;
}

NetworkPlaces NetworkPlaces::inGraphml(std::vector<std::size_t> countries) {
  NetworkPlaces places;
  places.isGraphml_ = true;
  places.countries_ = std::move(countries);
  return places;
}

std::string NetworkPlaces::of(const char* list, std::size_t index, const char* field) const {
  if (!isGraphml_) {
    return placeOf(list, index, field);
  }
  const std::string_view name = list;
  if (name == "topoNodes") {
    return ofGraphmlNode(index);
  }
  return placeOf(name == "clockLinks" ? "edge" : "node", index);
}

// The list of topology nodes has the graph, then the countries, then the elements.
std::string NetworkPlaces::ofGraphmlNode(std::size_t index) const {
  if (index == 0) {
    return "graph.label";
  }
  const std::size_t country = index - 1;
  return country < countries_.size() ? placeOf("node", countries_[country], ".Country")
                                     : placeOf("node", country - countries_.size());
}

}  // namespace agent
