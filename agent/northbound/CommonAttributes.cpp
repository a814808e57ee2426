// Common attributes and capabilities, for every manager of the agent.
//
// Attributes cannot be set yet: every setter answers that it is not implemented, and the capability
// list says so too.

#include "agent/domain/FailureCodes.h"
#include "platform/agent/TECommonFunc.h"

namespace NS_CORBA {
namespace {

// How the capability list speaks of an operation.
constexpr const char* kSupported = "Supported";
constexpr const char* kUnsupported = "Unsupported";

void appendCapabilities(common::CapabilityList_T& capabilities,
                        const std::vector<std::string>& operations, const char* support) {
  for (const std::string& operation : operations) {
    const CORBA::ULong last = capabilities.length();
    capabilities.length(last + 1);
    capabilities[last].name = CORBA::string_dup(operation.c_str());
    capabilities[last].value = CORBA::string_dup(support);
  }
}

}  // namespace

CORBA::ULong TECommonFunc::onSetUserLabel(const globaldefs::NVSList_T&, const char*, bool) {
  return agent::kNotImplemented;
}

CORBA::ULong TECommonFunc::onSetOwner(const globaldefs::NVSList_T&, const char*) {
  return agent::kNotImplemented;
}

CORBA::ULong TECommonFunc::onSetNativeEMSName(const globaldefs::NVSList_T&, const char*) {
  return agent::kNotImplemented;
}

CORBA::ULong TECommonFunc::onSetAdditionalInfo(const globaldefs::NVSList_T&, globaldefs::NVSList_T&,
                                               std::string&) {
  return agent::kNotImplemented;
}

CORBA::ULong TECommonFunc::resetObject(const globaldefs::NVSList_T&) {
  return agent::kNotImplemented;
}

void TECommonFunc::onGetCapabilities(common::CapabilityList_T_out capabilities,
                                     const std::vector<std::string>& attributeOperations,
                                     const std::vector<std::string>& otherOperations) {
  common::CapabilityList_T_var list = new common::CapabilityList_T;
  appendCapabilities(list.inout(), attributeOperations, kUnsupported);
  appendCapabilities(list.inout(), otherOperations, kSupported);
  capabilities = list._retn();
}

}  // namespace NS_CORBA
