#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "conformance/probe/Calls.h"
#include "conformance/probe/Rules.h"
#include "conformance/shared/BadNames.h"
#include "platform/agent/AgentConfig.h"
#include "platform/agent/CorbaUtilInterface.h"

namespace conformance::probe {
namespace {

using globaldefs::NVSList_T;
using NS_CORBA::CorbaBaseAgentConfig;
using NS_CORBA::CorbaUtilInterface;

CorbaUtilInterface& naming() {
  return required<CorbaUtilInterface>("CorbaUtilInterface");
}

std::string ems() {
  return CorbaBaseAgentConfig::Instance()->EmsName();
}

int typeOf(const NVSList_T& name) {
  return quietly("GetObjectType(" + shortText(name) + ")",
                 [&] { return naming().GetObjectType(name); });
}

// The id of a name. Throws Broken when Name2Index fails.
std::string idOf(const NVSList_T& name) {
  std::string id;
  const CORBA::ULong code =
      quietly("Name2Index(" + shortText(name) + ")", [&] { return naming().Name2Index(id, name); });
  require(code == 0,
          "Name2Index fails with code " + std::to_string(code) + " for \"" + shortText(name) + '"');
  return id;
}

NVSList_T subnetworkName(const std::string& id) {
  NVSList_T name;
  const CORBA::ULong code = quietly("ConvertTopoNodeIdToName",
                                    [&] { return naming().ConvertTopoNodeIdToName(name, id); });
  require(code == 0,
          "ConvertTopoNodeIdToName fails with code " + std::to_string(code) + " for \"" + id + '"');
  return name;
}

void requireName(const NVSList_T& name, const std::string& objectClass, const std::string& value) {
  require(
      toText(name) == toText(objectName(ems(), objectClass, value)),
      "a name is \"" + shortText(name) + "\", not EMS=" + ems() + ' ' + objectClass + '=' + value);
}

}  // namespace

void badNamesRaiseNothing() {
  std::vector<NVSList_T> names = malformedNames(ems());
  const std::vector<NVSList_T> unknown = unknownNames(ems());
  names.insert(names.end(), unknown.begin(), unknown.end());
  for (const NVSList_T& name : names) {
    typeOf(name);
    std::string id;
    quietly("Name2Index(" + shortText(name) + ")", [&] { naming().Name2Index(id, name); });
  }
  NVSList_T name;
  quietly("ConvertTopoNodeIdToName(\"\")", [&] { naming().ConvertTopoNodeIdToName(name, ""); });
}

void unknownNumbersRaiseNothing() {
  for (const std::int32_t number : {-1, 0, 2147483646, std::numeric_limits<std::int32_t>::max(),
                                    std::numeric_limits<std::int32_t>::min()}) {
    NS_CORBA::DomainObjectKey key;
    key.objectNumber = number;
    std::int32_t system = number;
    NVSList_T name;
    const std::string text = "(" + std::to_string(number) + ")";
    quietly("ConvertNEIndexToName" + text, [&] { naming().ConvertNEIndexToName(name, key); });
    quietly("ConvertONEIndexToName" + text, [&] { naming().ConvertONEIndexToName(name, key); });
    quietly("ConvertOSIndexToName" + text, [&] { naming().ConvertOSIndexToName(name, system); });
  }
}

// The clock views and the notifications use the name of a failed conversion, and the clock views
// use one key for all names.
void failedConversionsClearTheName() {
  NVSList_T name = objectName("stale", "stale", "stale");
  NS_CORBA::DomainObjectKey key;
  key.objectNumber = -1;
  const CORBA::ULong code =
      quietly("ConvertNEIndexToName(-1)", [&] { return naming().ConvertNEIndexToName(name, key); });
  require(code == 0 || name.length() == 0, "ConvertNEIndexToName(-1) fails and leaves a name");
  require(key.first == 0 && key.objectNumber == -1, "ConvertNEIndexToName(-1) writes the key");
}

// The view below a subnetwork ends the process when Name2Index fails for a name of type 54.
void typesTellSubnetworks() {
  const int expected = CorbaUtilInterface::kTopoSubnetworkType;
  for (const NVSList_T& name : unknownNames(ems())) {
    require(typeOf(name) != expected, "GetObjectType is 54 for \"" + shortText(name) + '"');
  }
  for (const NVSList_T& name : malformedNames(ems())) {
    require(typeOf(name) != expected, "GetObjectType is 54 for \"" + shortText(name) + '"');
  }
  for (const NS_DOMAIN::TopoNode_T& node : topoNodes()) {
    if (node.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      const NVSList_T name = subnetworkName(node.nodeId);
      require(typeOf(name) == expected, "GetObjectType is not 54 for \"" + shortText(name) + '"');
      idOf(name);
    }
  }
}

void subnetworkNamesRoundTrip() {
  for (const NS_DOMAIN::TopoNode_T& node : topoNodes()) {
    if (node.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      const NVSList_T name = subnetworkName(node.nodeId);
      requireName(name, "TopoSubnetwork", node.nodeId);
      const std::string id = idOf(name);
      require(id == node.nodeId, "Name2Index returns \"" + id + "\" for \"" + node.nodeId + '"');
    }
  }
}

void elementNamesRoundTrip() {
  QueryResult<NS_DOMAIN::NEIndexHolder> indexes;
  platformCall("GetNEIndexList", [&] { neData().GetNEIndexList(indexes.get(), false); });
  for (const NS_DOMAIN::NEIndex& index : indexes.value()) {
    NS_CORBA::DomainObjectKey key;
    key.objectNumber = index.number;
    NVSList_T name;
    const CORBA::ULong code =
        quietly("ConvertNEIndexToName", [&] { return naming().ConvertNEIndexToName(name, key); });
    require(code == 0, "ConvertNEIndexToName fails with code " + std::to_string(code) + " for " +
                           std::to_string(index.number));
    requireName(name, "ManagedElement", std::to_string(index.number));
    idOf(name);
  }
}

// The host may refuse numbers that its network does not have.
void otherNamesHaveTheirClass() {
  for (std::int32_t number = 0; number < 10; ++number) {
    NVSList_T name;
    NS_CORBA::DomainObjectKey key;
    key.objectNumber = number;
    if (quietly("ConvertONEIndexToName",
                [&] { return naming().ConvertONEIndexToName(name, key); }) == 0) {
      requireName(name, "ONE", std::to_string(number));
    }
    if (quietly("ConvertOSIndexToName",
                [&] { return naming().ConvertOSIndexToName(name, number); }) == 0) {
      requireName(name, "OS", std::to_string(number));
    }
  }
}

void rootMarkersHaveNames() {
  requireName(subnetworkName(NS_DOMAIN::kPhysicalRoot), "TopoSubnetwork", NS_DOMAIN::kPhysicalRoot);
}

void labelsOfUnknownObjects() {
  NS_CORBA::ObjectLabelInfo info;
  quietly("GetObjectLabelInfo", [&] {
    naming().GetObjectLabelInfo(info, "no such link of topo-conformance",
                                CorbaUtilInterface::kClockTopoLinkType);
  });
  require(info.userLabel.empty(), "an unknown link has the label \"" + info.userLabel + '"');
}

void emsNameIsThatOfTheNames() {
  const std::string own =
      quietly("EmsName", [] { return CorbaBaseAgentConfig::Instance()->EmsName(); });
  require(!own.empty(), "EmsName is empty");
  const NVSList_T name = subnetworkName(subnetworkId());
  require(name.length() != 0 && name[0].value.in() == own,
          "EmsName is \"" + own + "\", but a name is \"" + shortText(name) + '"');
}

}  // namespace conformance::probe
