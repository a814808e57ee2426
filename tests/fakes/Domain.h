// The managed network that the fake domain delivers.

#ifndef TESTS_FAKES_DOMAIN_H
#define TESTS_FAKES_DOMAIN_H

#include <optional>
#include <string>
#include <vector>

#include "platform/domain/DomainInterface.h"

namespace fakes {

// What the domain holds. Set by the test before calls are made, read by the fakes.
struct Network {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
  std::vector<NS_DOMAIN::NEIndex> indexes;       // what GetNEIndexList answers for false
  std::vector<NS_DOMAIN::NEIndex> shownIndexes;  // and for true
  // What GetNEList answers whatever it is asked for; without it, one record an index.
  std::optional<std::vector<NS_DOMAIN::NE_T>> elements;
  std::vector<NS_DOMAIN::ClockPositionInfo_T> clockPositions;
  std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> clockLinks;
};

Network& network();

// An element's index, and the record that GetNEList makes of it: named "NE-" and the number.
NS_DOMAIN::NEIndex index(std::int32_t number, std::int32_t first = 0);
NS_DOMAIN::NE_T elementRecord(const NS_DOMAIN::NEIndex& of);
std::vector<NS_DOMAIN::NEIndex> indexes(const std::vector<std::int32_t>& numbers);

NS_DOMAIN::TopoNode_T subnetwork(const std::string& id, const std::string& label = "");
NS_DOMAIN::TopoNode_T element(const std::string& fdn, const std::string& label = "");

// The interface whose facet, accessors and data are those of network(). Steps planned for a query
// run after its data were delivered when they are planned as "<query> late".
NS_DOMAIN::DomainInterface& domainInterface();

// One more interface like it, for lookups among several; owned by the caller.
NS_DOMAIN::DomainInterface* makeDomainInterface();

// The facet that every such interface gives.
NS_DOMAIN::DomainFacet& domainFacet();

void resetDomain();

}  // namespace fakes

#endif
