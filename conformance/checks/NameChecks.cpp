#include <map>
#include <string>
#include <vector>

#include "conformance/Records.h"
#include "conformance/checks/ClientChecks.h"
#include "conformance/checks/Refusals.h"
#include "conformance/checks/Views.h"
#include "conformance/shared/BadNames.h"

namespace conformance {
namespace {

using globaldefs::NVSList_T;

void requireRefused(Context& context, const NVSList_T& name) {
  try {
    readNodes(viewBelow(context.manager(), name), kWholeView);
  } catch (const globaldefs::ProcessingFailureException& refusal) {
    require(refusal.exceptionType == globaldefs::EXCPT_INVALID_INPUT,
            "the view below \"" + shortText(name) +
                "\" is refused with another type: " + refusal.errorReason.in());
    return;
  }
  throw Broken("the view below \"" + shortText(name) + "\" is not refused");
}

template <typename Call>
void requireSetterRefuses(const char* setter, const NVSList_T& name, Call call) {
  try {
    skipIfNotSupported(setter, call);
  } catch (const globaldefs::ProcessingFailureException&) {
    return;
  }
  throw Broken(std::string(setter) + " accepts the name \"" + shortText(name) + '"');
}

}  // namespace

void checkKnownNames(Context& context) {
  constexpr std::size_t kNodesOfAType = 10;  // a view below each node of a large network takes long
  for (const auto& node : sampleOf(readTopology(context.manager()), kNodesOfAType)) {
    if (node.nodeType == 1) {
      readNodes(viewBelow(context.manager(), node.name), kWholeView);
    } else {
      requireRefused(context, node.name);
    }
  }
}

void checkUnknownNames(Context& context) {
  for (const NVSList_T& name : unknownNames(emsOf(context.manager()))) {
    requireRefused(context, name);
  }
}

void checkMalformedNames(Context& context) {
  for (const NVSList_T& name : malformedNames(emsOf(context.manager()))) {
    requireRefused(context, name);
  }
}

void checkSettersOfBadNames(Context& context) {
  const std::string ems = emsOf(context.manager());
  std::vector<NVSList_T> names = unknownNames(ems);
  const std::vector<NVSList_T> malformed = malformedNames(ems);
  names.insert(names.end(), malformed.begin(), malformed.end());
  const auto manager = context.manager();
  for (const NVSList_T& name : names) {
    requireSetterRefuses("setUserLabel", name, [&] { manager->setUserLabel(name, "x", false); });
    requireSetterRefuses("setOwner", name, [&] { manager->setOwner(name, "x"); });
    requireSetterRefuses("setNativeEMSName", name, [&] { manager->setNativeEMSName(name, "x"); });
    requireSetterRefuses("setAdditionalInfo", name, [&] {
      NVSList_T info;
      append(info, "x", "y");
      manager->setAdditionalInfo(name, info);
    });
  }
}

void checkCapabilities(Context& context) {
  common::CapabilityList_T_var capabilities;
  context.manager()->getCapabilities(capabilities.out());
  std::map<std::string, int> count;
  for (CORBA::ULong i = 0; i < capabilities->length(); ++i) {
    ++count[capabilities[i].name.in()];
  }
  for (const char* operation :
       {"setUserLabel", "setOwner", "setNativeEMSName", "getTopoSubnetworkViewInfo",
        "getProtectSubnetworkViewInfo", "getViewInfoByTopoSubnetwork", "getCapabilities"}) {
    const std::string name = std::string("TopoManagementManager::TopoMgr_I::") + operation;
    require(count[name] == 1, name + " is not listed once");
  }
}

}  // namespace conformance
