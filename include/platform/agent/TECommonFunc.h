// The common attributes and the capability list, kept by the agent for all its managers.
//
// Every setter returns a failure code for ThrowException, 0 on success; a change that returned 0 is
// stored. Names and texts are lent for the call. Thread-safety: any thread.

#ifndef PLATFORM_AGENT_TECOMMONFUNC_H
#define PLATFORM_AGENT_TECOMMONFUNC_H

#include <string>
#include <vector>

#include "orb/idl/common.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

class PLATFORM_API TECommonFunc {
 public:
  static CORBA::ULong onSetUserLabel(const globaldefs::NVSList_T& objectName, const char* userLabel,
                                     bool enforceUniqueness);
  static CORBA::ULong onSetOwner(const globaldefs::NVSList_T& objectName, const char* owner);
  static CORBA::ULong onSetNativeEMSName(const globaldefs::NVSList_T& objectName,
                                         const char* nativeEMSName);

  // May update additionalInfo in place, and fill errorText with the reason of a failure.
  static CORBA::ULong onSetAdditionalInfo(const globaldefs::NVSList_T& objectName,
                                          globaldefs::NVSList_T& additionalInfo,
                                          std::string& errorText);

  static CORBA::ULong resetObject(const globaldefs::NVSList_T& objectName);

  // Builds a manager's capability list from the fully qualified names of the operations that change
  // common attributes, and of the others.
  static void onGetCapabilities(common::CapabilityList_T_out capabilities,
                                const std::vector<std::string>& attributeOperations,
                                const std::vector<std::string>& otherOperations);
};

}  // namespace NS_CORBA

#endif
