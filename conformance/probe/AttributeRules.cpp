#include <map>
#include <string>
#include <vector>

#include "conformance/probe/Calls.h"
#include "conformance/probe/Rules.h"
#include "conformance/shared/BadNames.h"
#include "platform/agent/AgentConfig.h"
#include "platform/agent/TECommonFunc.h"

namespace conformance::probe {
namespace {

using globaldefs::NVSList_T;
using NS_CORBA::TECommonFunc;

std::string ems() {
  return NS_CORBA::CorbaBaseAgentConfig::Instance()->EmsName();
}

// Calls every setter, and returns the codes with the names of the setters.
std::map<std::string, CORBA::ULong> callSetters(const NVSList_T& name) {
  const std::string argument = "(" + shortText(name) + ")";
  std::map<std::string, CORBA::ULong> codes;
  codes["onSetUserLabel"] = quietly("onSetUserLabel" + argument, [&] {
    return TECommonFunc::onSetUserLabel(name, "label of topo-conformance", false);
  });
  codes["onSetOwner"] =
      quietly("onSetOwner" + argument, [&] { return TECommonFunc::onSetOwner(name, "owner"); });
  codes["onSetAdditionalInfo"] = quietly("onSetAdditionalInfo" + argument, [&] {
    NVSList_T info;
    append(info, "topo-conformance", "value");
    std::string text;
    return TECommonFunc::onSetAdditionalInfo(name, info, text);
  });
  return codes;
}

CORBA::ULong rename(const NVSList_T& name) {
  return quietly("onSetNativeEMSName(" + shortText(name) + ")",
                 [&] { return TECommonFunc::onSetNativeEMSName(name, "topo-conformance"); });
}

}  // namespace

void settersRaiseNothing() {
  const NVSList_T known = objectName(ems(), "TopoSubnetwork", subnetworkId());
  callSetters(known);
  quietly("resetObject", [&] { TECommonFunc::resetObject(known); });
  for (const NVSList_T& name : malformedNames(ems())) {
    callSetters(name);
    rename(name);
    quietly("resetObject(" + shortText(name) + ")", [&] { TECommonFunc::resetObject(name); });
  }
}

void settersRefuseBadNames() {
  std::vector<NVSList_T> names = malformedNames(ems());
  const std::vector<NVSList_T> unknown = unknownNames(ems());
  names.insert(names.end(), unknown.begin(), unknown.end());
  for (const NVSList_T& name : names) {
    std::map<std::string, CORBA::ULong> codes = callSetters(name);
    codes["onSetNativeEMSName"] = rename(name);
    for (const auto& [setter, code] : codes) {
      require(code != 0, setter + " returns 0 for \"" + shortText(name) + '"');
    }
  }
}

void capabilitiesListEveryOperation() {
  common::CapabilityList_T_var list;
  quietly("onGetCapabilities", [&] {
    TECommonFunc::onGetCapabilities(list.out(), {"A::a", "A::b"}, {"A::c"});
  });
  require(&list.in() != nullptr, "onGetCapabilities returns no list");
  std::string text;
  for (CORBA::ULong i = 0; i < list->length(); ++i) {
    text += std::string(list[i].name.in()) + '=' + list[i].value.in() + ' ';
  }
  require(text == "A::a=Supported A::b=Supported A::c=Supported ",
          "the list is \"" + text + "\" for A::a, A::b and A::c");
}

}  // namespace conformance::probe
