#include "agent/network/NetworkChange.h"

#include <algorithm>
#include <string_view>

#include "hash/SaltedHash.h"

namespace agent {

InfoPairs mergedInfo(const InfoPairs& stored, const InfoPairs& changes) {
  InfoPairs merged;
  merged.reserve(stored.size() + changes.size());
  merged = stored;
  salted::Map<std::string_view, std::size_t> places;  // borrows the names in stored
  places.reserve(stored.size());
  for (std::size_t i = 0; i < stored.size(); ++i) {
    places.emplace(stored[i].first, i);
  }
  for (const auto& [name, value] : changes) {
    const auto place = places.find(name);
    if (place != places.end()) {
      merged[place->second].second = value;
    } else if (!value.empty()) {
      merged.emplace_back(name, value);
    }
  }
  const auto isRemoved = [](const auto& pair) { return pair.second.empty(); };
  merged.erase(std::remove_if(merged.begin(), merged.end(), isRemoved), merged.end());
  return merged;
}

}  // namespace agent
