// Records of the managed network as the platform's domain layer delivers them. The module only
// reads them (and makes TopoNode_T records of its own for network elements).
//
// Plain values: copied freely, no shared state.

#ifndef PLATFORM_DOMAIN_DOMAINRECORDS_H
#define PLATFORM_DOMAIN_DOMAINRECORDS_H

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace NS_DOMAIN {

// The domain types of a topology node that the northbound interface can show.
constexpr std::uint32_t kTopoElement = 1;
constexpr std::uint32_t kTopoSubnetwork = 2;

// One topology node: a subnetwork, or an element placed in one.
struct TopoNode_T {
  std::string nodeId;      // an FDN or a bare number for an element, free for a subnetwork; not "0"
  std::string parentId;    // "" or "0": no parent
  std::string nativeName;  // the label as the management system shows it
  std::string text4;       // carried only
  std::string text5;       // carried only
  std::uint32_t nodeType = 0;
  std::uint32_t parentType = 0;
  std::int32_t attribute3 = 0;
  std::int32_t attribute4 = 0;
  std::vector<std::pair<std::string, std::string>> extendedAttributes;  // key, value
};

// The index of one network element.
struct NEIndex {
  std::int32_t first = 0;  // carried only
  std::int32_t number = 0;
};

// One network element.
struct NE_T {
  std::int32_t first = 0;  // carried only
  std::int32_t number = 0;
  std::array<std::string, 6> texts;  // carried only
  std::string name;
};

// One clock position.
struct ClockPositionInfo_T {
  std::string reference;  // text, "=", the decimal object number
  std::string text2;      // carried only
  std::int32_t scalar3 = 0;
  std::string text4;
  std::string label;
  std::int32_t value1 = 0;
  std::int32_t value2 = 0;
};

// One link between two clock positions.
struct ClockTopoLinkInfo_T {
  std::string linkId;
  std::string text2;  // carried only
  std::int32_t scalar3 = 0;
  std::string text4;
  std::string nativeName;
  std::string aEndReference;  // text, "=", the decimal object number
  std::string text7;
  std::int32_t scalar8 = 0;
  std::string text9;
  std::string zEndReference;  // text, "=", the decimal object number
  std::string text11;
  std::int32_t scalar12 = 0;
  std::string text13;
  std::int32_t scalar14 = 0;
};

}  // namespace NS_DOMAIN

#endif
