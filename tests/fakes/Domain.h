// The fake domain: its interface and the managed network that its queries return.

#ifndef TESTS_FAKES_DOMAIN_H
#define TESTS_FAKES_DOMAIN_H

#include <optional>
#include <string>
#include <vector>

#include "platform/domain/DomainInterface.h"

namespace fakes {

// The data of the domain. A test writes the data before the calls that read it.
struct Network {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
  std::vector<NS_DOMAIN::NEIndex> indexes;       // GetNEIndexList(false)
  std::vector<NS_DOMAIN::NEIndex> shownIndexes;  // GetNEIndexList(true)
  // The answer of GetNEList for all arguments. Without a value: elementRecord of each index.
  std::optional<std::vector<NS_DOMAIN::NE_T>> elements;
  std::vector<NS_DOMAIN::ClockPositionInfo_T> clockPositions;
  std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> clockLinks;
};

Network& network();

// The index of an element, and its record, which has the name "NE-NUMBER".
NS_DOMAIN::NEIndex index(std::int32_t number, std::int32_t first = 0);
NS_DOMAIN::NE_T elementRecord(const NS_DOMAIN::NEIndex& of);
std::vector<NS_DOMAIN::NEIndex> indexes(const std::vector<std::int32_t>& numbers);

NS_DOMAIN::TopoNode_T subnetwork(const std::string& id, const std::string& label = "");
NS_DOMAIN::TopoNode_T element(const std::string& fdn, const std::string& label = "");

// The published interface, with the data of network(). A query runs the steps planned for
// "QUERY late" after it has filled its holder.
NS_DOMAIN::DomainInterface& domainInterface();

// Makes another interface with the same data, for lookups among several. The caller owns it.
NS_DOMAIN::DomainInterface* makeDomainInterface();

// The facet of all these interfaces.
NS_DOMAIN::DomainFacet& domainFacet();

void resetDomain();

}  // namespace fakes

#endif
