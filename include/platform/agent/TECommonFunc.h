// The common attributes of managed objects and the capability list, which the agent keeps for all
// managers.
//
// Thread-safety: any thread. Ownership: names and texts are borrowed for the call. Texts are UTF-8;
// names and texts come from the client and may have any content.
//
// When an object is deleted, the agent removes the stored attributes of the object, as resetObject
// does: a later object with the same name starts without attributes.
//
// Errors: every setter returns 0 on success and otherwise a failure code for ThrowException. A
// setter that returns 0 has stored the change, so a setter refuses a name that no object has. The
// functions may raise CORBA exceptions, which reach the client. They must not raise anything else:
// a ProcessException, std::bad_alloc or any other exception ends the process. A client triggers
// the calls with the operation of the same name.

#ifndef PLATFORM_AGENT_TECOMMONFUNC_H
#define PLATFORM_AGENT_TECOMMONFUNC_H

#include <string>
#include <vector>

#include "orb/idl/common.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

class PLATFORM_API TECommonFunc {
 public:
  // Store one attribute of an object. An empty text removes a user label or an owner.
  // enforceUniqueness: fail when another object of the same class (the name of the second pair of
  // the TMF name) has this user label. An empty user label is never refused for this reason.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process.
  static CORBA::ULong onSetUserLabel(const globaldefs::NVSList_T& objectName, const char* userLabel,
                                     bool enforceUniqueness);
  static CORBA::ULong onSetOwner(const globaldefs::NVSList_T& objectName, const char* owner);
  static CORBA::ULong onSetNativeEMSName(const globaldefs::NVSList_T& objectName,
                                         const char* nativeEMSName);

  // Stores the pairs. May update additionalInfo in place: the client gets the updated list.
  // topo-agentd returns the stored list, merged by name; an empty value removes a pair; names are
  // different and not empty. On failure, may set errorText to the reason.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process.
  static CORBA::ULong onSetAdditionalInfo(const globaldefs::NVSList_T& objectName,
                                          globaldefs::NVSList_T& additionalInfo,
                                          std::string& errorText);

  // Removes the stored user label, owner and additional information of the object. No operation of
  // the IDL interface calls resetObject.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process.
  static CORBA::ULong resetObject(const globaldefs::NVSList_T& objectName);

  // Builds the capability list of a manager from the fully qualified names of its operations:
  // attributeOperations change common attributes, otherOperations do not. Each operation is one
  // capability, in this order: its name, and the value "Supported". `capabilities` must not be null
  // afterwards.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process.
  static void onGetCapabilities(common::CapabilityList_T_out capabilities,
                                const std::vector<std::string>& attributeOperations,
                                const std::vector<std::string>& otherOperations);
};

}  // namespace NS_CORBA

#endif
