// Records of the managed network, as the platform's domain queries deliver them, and the facts that
// the module and the host share about them.
//
// Thread-safety and ownership: plain values, without shared state. The module reads the records,
// and builds TopoNode_T records for network elements. Texts are UTF-8; the module copies and
// compares their bytes.
//
// Fields with a number in their name (text4, scalar3) are copied with the record; the module does
// not read them.

#ifndef PLATFORM_DOMAIN_DOMAINRECORDS_H
#define PLATFORM_DOMAIN_DOMAINRECORDS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NS_DOMAIN {

// The domain types of the topology nodes that the northbound interface shows.
constexpr std::uint32_t kTopoElement = 1;
constexpr std::uint32_t kTopoSubnetwork = 2;

// The id of the physical root map. The map contains the top-level subnetworks and is not a node.
constexpr const char* kPhysicalRoot = "QNMAP_PHY_SUBMAP";

// The id that no node may have. As a parent id, "0" means "no parent", as "" does.
constexpr const char* kZeroId = "0";

// Whether a node with this parent id has no parent.
inline bool hasNoParent(const std::string& parentId) {
  return parentId.empty() || parentId == std::string_view(kZeroId);
}

// A topology node: a subnetwork, or an element in a subnetwork.
struct TopoNode_T {
  std::string nodeId;    // element: an FDN or a decimal number; subnetwork: any text; never kZeroId
  std::string parentId;  // see hasNoParent and kPhysicalRoot
  std::string nativeName;  // the label in the management system
  std::string text4;
  std::string text5;
  std::uint32_t nodeType = 0;  // kTopoElement or kTopoSubnetwork; the module drops other types
  // The domain type of the parent; kTopoSubnetwork below kPhysicalRoot. The views leave out a node
  // that has a parent and neither kTopoElement nor kTopoSubnetwork here.
  std::uint32_t parentType = 0;
  std::int32_t attribute3 = 0;  // becomes nodeParam1 of the TMF node
  std::int32_t attribute4 = 0;  // becomes nodeParam2 of the TMF node
  // Key and value. The first value of a subnetwork is LOCATION or LOCATION||TYPE.
  std::vector<std::pair<std::string, std::string>> extendedAttributes;
};

// The index of a network element.
struct NEIndex {
  std::int32_t first = 0;  // copied only
  std::int32_t number = 0;
};

// A network element.
struct NE_T {
  std::int32_t first = 0;  // copied only
  std::int32_t number = 0;
  std::array<std::string, 6> texts;  // copied only
  std::string name;
};

// A clock position.
struct ClockPositionInfo_T {
  std::string reference;  // TEXT=NUMBER; NUMBER is the decimal number of a network element
  std::string text2;
  std::int32_t scalar3 = 0;
  std::string text4;
  std::string label;
  std::int32_t value1 = 0;
  std::int32_t value2 = 0;
};

// A link between two clock positions.
struct ClockTopoLinkInfo_T {
  std::string linkId;
  std::string text2;
  std::int32_t scalar3 = 0;
  std::string text4;
  std::string nativeName;
  std::string aEndReference;  // as ClockPositionInfo_T::reference
  std::string text7;
  std::int32_t scalar8 = 0;
  std::string text9;
  std::string zEndReference;  // as ClockPositionInfo_T::reference
  std::string text11;
  std::int32_t scalar12 = 0;
  std::string text13;
  std::int32_t scalar14 = 0;
};

}  // namespace NS_DOMAIN

#endif
