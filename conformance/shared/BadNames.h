// Names that every host must refuse.

#ifndef CONFORMANCE_SHARED_BADNAMES_H
#define CONFORMANCE_SHARED_BADNAMES_H

#include <string>
#include <vector>

#include "conformance/shared/Names.h"

namespace conformance {

// Thread-safety: any thread.

// Well-formed names of objects that no network has.
inline std::vector<globaldefs::NVSList_T> unknownNames(const std::string& ems) {
  return {objectName(ems, "TopoSubnetwork", "no such subnetwork of topo-conformance"),
          objectName(ems, "ManagedElement", "2147483646"), objectName(ems, "ONE", "2147483646"),
          objectName(ems, "OS", "2147483646")};
}

inline std::vector<globaldefs::NVSList_T> malformedNames(const std::string& ems) {
  globaldefs::NVSList_T onePair;
  append(onePair, "EMS", ems);
  globaldefs::NVSList_T swapped;
  append(swapped, "TopoSubnetwork", "x");
  append(swapped, "EMS", ems);
  globaldefs::NVSList_T threePairs = objectName(ems, "TopoSubnetwork", "x");
  append(threePairs, "TopoSubnetwork", "x");
  globaldefs::NVSList_T manyPairs;
  for (int i = 0; i < 1000; ++i) {
    append(manyPairs, "EMS", ems);
  }
  return {globaldefs::NVSList_T(),
          onePair,
          swapped,
          threePairs,
          manyPairs,
          objectName("", "", ""),
          objectName(ems, "TopoSubnetwork", ""),
          objectName(ems, "NoSuchClass", "1"),
          objectName("no such system", "TopoSubnetwork", "x"),
          objectName(ems, "ManagedElement", ""),
          objectName(ems, "ManagedElement", "-1"),
          objectName(ems, "ManagedElement", "99999999999999999999"),
          objectName(ems, "ManagedElement", "1x"),
          objectName(ems, "TopoSubnetwork", std::string(60000, 'x')),
          objectName(ems, "TopoSubnetwork", "%s%n\t,=\"")};
}

// A text of bounded length for messages.
inline std::string shortText(const globaldefs::NVSList_T& name) {
  const std::string text = toText(name);
  return text.size() > 80 ? text.substr(0, 80) + "..." : text;
}

}  // namespace conformance

#endif
