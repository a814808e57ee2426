#include <utility>

#include "bench/Platform.h"
#include "tests/fakes/Bundles.h"
#include "tests/fakes/Domain.h"
#include "tests/fakes/Journal.h"

namespace bench {

// The fakes are global, so this class has no state.
class Platform::Parts {};

Platform::Platform(agent::Network network) {
  fakes::Network& fake = fakes::network();
  fake.nodes = std::move(network.topoNodes);
  for (const agent::NetworkElement& element : network.networkElements) {
    fake.indexes.push_back(fakes::index(element.number));
  }
  fake.shownIndexes = fake.indexes;
  fake.clockPositions = std::move(network.clockPositions);
  fake.clockLinks = std::move(network.clockLinks);
  fakes::publishPlatform();
}

Platform::~Platform() {
  fakes::resetBundles();
  fakes::resetDomain();
  fakes::resetJournal();
}

void Platform::tidy() {
  fakes::Journal::clear();
}

}  // namespace bench
