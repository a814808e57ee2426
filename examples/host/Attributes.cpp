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
