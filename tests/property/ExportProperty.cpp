// Reading the export of any network gives the same network.

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "agent/formats/JsonExport.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::Network;

// A network with random records. Keys have a number, so that they are unique.
class RandomNetwork {
 public:
  explicit RandomNetwork(unsigned seed) : random_(seed) {}

  Network make() {
    Network network;
    network.ems = text();
    for (int i = count(); i > 0; --i) {
      const std::string parent =
          network.topoNodes.empty() || flag() ? "" : network.topoNodes[below(network)].nodeId;
      NS_DOMAIN::TopoNode_T node = nodeOf(key(i), parent, NS_DOMAIN::kTopoSubnetwork, text());
      node.parentType = static_cast<std::uint32_t>(number());
      node.attribute3 = number();
      node.attribute4 = number();
      for (int pairs = count() % 4; pairs > 0; --pairs) {
        node.extendedAttributes.emplace_back(text(), text());
      }
      network.topoNodes.push_back(std::move(node));
      const bool forNode = flag();
      network.networkElements.push_back({i, text(), forNode || flag(), forNode});
      network.clockPositions.push_back(positionOf(key(i), text(), number(), number()));
      network.clockLinks.push_back(linkOf(key(i), text(), text(), text()));
      network.objectLabels.push_back({number(), key(i), text()});
    }
    if (flag()) {
      network.objectAttributes.emplace();
      for (int i = count(); i > 0; --i) {
        network.objectAttributes->push_back({number(), key(i), text(), {{"a", key(i)}}});
      }
    }
    return network;
  }

 private:
  int count() { return std::uniform_int_distribution<int>(0, 20)(random_); }
  bool flag() { return count() % 2 == 0; }
  std::int32_t number() {
    return std::uniform_int_distribution<std::int32_t>(std::numeric_limits<std::int32_t>::min())(
        random_);
  }
  std::size_t below(const Network& network) {
    return std::uniform_int_distribution<std::size_t>(0, network.topoNodes.size() - 1)(random_);
  }
  std::string key(int number) { return text() + "#" + std::to_string(number); }

  std::string text() {
    static const char* const pieces[] = {"a",   "\"",   "\\", "\n",       "\x01",
                                         "{",   "]",    "/",  "\xc3\xa4", "\xf0\x9f\x98\x80",
                                         "||3", "NE=5", " "};
    std::string result;
    for (int i = count() % 6; i > 0; --i) {
      result +=
          pieces[std::uniform_int_distribution<std::size_t>(0, std::size(pieces) - 1)(random_)];
    }
    return result;
  }

  std::mt19937 random_;
};

TEST(ExportProperty, ReadingAnExportGivesTheSameNetwork) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    const Network network = RandomNetwork(seed).make();
    const std::string text = agent::writeJsonNetwork(network);
    const Network read = readText(text);
    ASSERT_EQ(network, read) << "seed " << seed;
    ASSERT_EQ(text, agent::writeJsonNetwork(read)) << "seed " << seed;
  }
}

}  // namespace
