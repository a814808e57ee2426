// Defines onGetCapabilities of platform/agent/TECommonFunc.h: the list of capabilities.

#include "platform/agent/TECommonFunc.h"

namespace NS_CORBA {

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
