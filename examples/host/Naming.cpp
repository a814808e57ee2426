// platform/agent/CorbaUtilInterface.h: the TMF names of objects.
#include "Host.h"
#include "platform/agent/CorbaUtilInterface.h"

using namespace NS_CORBA;
using globaldefs::NVSList_T;

namespace {

constexpr CORBA::ULong kInvalid = host::kFailure + globaldefs::EXCPT_INVALID_INPUT;

CORBA::ULong setName(NVSList_T& name, const char* objectClass, const std::string& id) {
  name.length(id.empty() ? 0 : 2);
  if (name.length() == 0) return kInvalid;
  name[0].name = CORBA::string_dup("EMS");
  name[0].value = CORBA::string_dup(host::kEmsName);
  name[1].name = CORBA::string_dup(objectClass);
  name[1].value = CORBA::string_dup(id.c_str());
  return 0;
}

// There is no name for a negative number.
CORBA::ULong setName(NVSList_T& name, const char* objectClass, std::int32_t number) {
  return setName(name, objectClass, number < 0 ? "" : std::to_string(number));
}

// Threads of the ORB call the functions, which must not throw.
struct Naming final : CorbaUtilInterface {
  int GetObjectType(const NVSList_T& name) override {
    std::string id;
    return Name2Index(id, name) == 0 && host::hasSubnetwork(id) ? kTopoSubnetworkType : 0;
  }
  CORBA::ULong ConvertNEIndexToName(NVSList_T& name, DomainObjectKey& key) override {
    return setName(name, "ManagedElement", key.objectNumber);
  }
  CORBA::ULong ConvertONEIndexToName(NVSList_T& name, DomainObjectKey& key) override {
    return setName(name, "ONE", key.objectNumber);
  }
  CORBA::ULong ConvertOSIndexToName(NVSList_T& name, std::int32_t& number) override {
    return setName(name, "OS", number);
  }
  CORBA::ULong ConvertTopoNodeIdToName(NVSList_T& name, const std::string& id) override {
    return setName(name, "TopoSubnetwork", id);
  }
  CORBA::ULong Name2Index(std::string& id, const NVSList_T& name) override {
    if (name.length() != 2 || std::string(name[0].value) != host::kEmsName) return kInvalid;
    const std::string objectClass = name[1].name.in(), value = name[1].value.in();
    const std::string prefix = objectClass == "ManagedElement" ? "NE=" : objectClass + "=";
    id = objectClass == "TopoSubnetwork" ? value : prefix + value;
    return 0;
  }
  CORBA::ULong GetObjectLabelInfo(ObjectLabelInfo&, const std::string&, int) override { return 0; }
} naming;

}  // namespace

void host::publishNaming() { NS_BUNDLEMGR1::SetIFBuf("CorbaUtilInterface", &naming); }
