// platform/agent/TECommonFunc.h: this host stores names, and no other attributes.

#include <stdexcept>

#include "Host.h"
#include "platform/agent/CorbaUtilInterface.h"
#include "platform/agent/TECommonFunc.h"

namespace NS_CORBA {

using globaldefs::NVSList_T;

CORBA::ULong TECommonFunc::onSetUserLabel(const NVSList_T&, const char*, bool) {
  return host::kNotSupported;
}

CORBA::ULong TECommonFunc::onSetOwner(const NVSList_T&, const char*) {
  return host::kNotSupported;
}

CORBA::ULong TECommonFunc::onSetNativeEMSName(const NVSList_T& objectName, const char* name) {
  auto* const buffer = NS_BUNDLEMGR1::CheckIFBuf("CorbaUtilInterface");
  std::string id;
  if (static_cast<CorbaUtilInterface*>(buffer->First())->Name2Index(id, objectName) != 0) {
    return host::kInvalidName;
  }
  try {
    host::changeNode(id, name);
  } catch (const std::runtime_error&) {
    return host::kNoSuchObject;
  }
  return 0;
}

CORBA::ULong TECommonFunc::onSetAdditionalInfo(const NVSList_T&, NVSList_T&, std::string& text) {
  text = "this host stores no additional information";
  return host::kNotSupported;
}

CORBA::ULong TECommonFunc::resetObject(const NVSList_T&) {
  return host::kNotSupported;
}

void TECommonFunc::onGetCapabilities(common::CapabilityList_T_out capabilities,
                                     const std::vector<std::string>& attributeOperations,
                                     const std::vector<std::string>& otherOperations) {
  common::CapabilityList_T_var list = new common::CapabilityList_T;
  for (const auto* operations : {&attributeOperations, &otherOperations}) {
    for (const std::string& operation : *operations) {
      const CORBA::ULong last = list->length();
      list->length(last + 1);
      list[last].name = CORBA::string_dup(operation.c_str());
      list[last].value = CORBA::string_dup("Supported");
    }
  }
  capabilities = list._retn();
}

}  // namespace NS_CORBA
