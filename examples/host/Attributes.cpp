// platform/agent/TECommonFunc.h: this host stores no attributes.
#include "Host.h"
#include "platform/agent/TECommonFunc.h"

using NS_CORBA::TECommonFunc, globaldefs::NVSList_T;

constexpr CORBA::ULong kNo = host::kFailure + globaldefs::EXCPT_NOT_IMPLEMENTED;

CORBA::ULong TECommonFunc::onSetUserLabel(const NVSList_T&, const char*, bool) { return kNo; }
CORBA::ULong TECommonFunc::onSetOwner(const NVSList_T&, const char*) { return kNo; }
CORBA::ULong TECommonFunc::onSetNativeEMSName(const NVSList_T&, const char*) { return kNo; }
CORBA::ULong TECommonFunc::resetObject(const NVSList_T&) { return kNo; }
CORBA::ULong TECommonFunc::onSetAdditionalInfo(const NVSList_T&, NVSList_T&, std::string& text) {
  text = "this host stores no additional information";
  return kNo;
}

void TECommonFunc::onGetCapabilities(common::CapabilityList_T_out capabilities,
                                     const std::vector<std::string>& attributeOperations,
                                     const std::vector<std::string>& otherOperations) {
  common::CapabilityList_T_var list = new common::CapabilityList_T;
  for (const auto* operations : {&attributeOperations, &otherOperations})
    for (const std::string& operation : *operations) {
      const CORBA::ULong last = list->length();
      list->length(last + 1);
      list[last].name = CORBA::string_dup(operation.c_str());
      list[last].value = CORBA::string_dup("Supported");
    }
  capabilities = list._retn();
}
