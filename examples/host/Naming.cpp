// platform/agent/CorbaUtilInterface.h: the TMF names of the objects.

#include "Host.h"
#include "platform/agent/CorbaUtilInterface.h"

NS_CORBA::CorbaUtilInterface::~CorbaUtilInterface() = default;

namespace {

using globaldefs::NVSList_T;

CORBA::ULong fill(NVSList_T& name, const char* objectClass, const std::string& id) {
  name.length(0);
  if (id.empty()) {
    return host::kInvalidName;
  }
  name.length(2);
  name[0].name = CORBA::string_dup("EMS");
  name[0].value = CORBA::string_dup(host::kEmsName);
  name[1].name = CORBA::string_dup(objectClass);
  name[1].value = CORBA::string_dup(id.c_str());
  return 0;
}

CORBA::ULong fillNumber(NVSList_T& name, const char* objectClass, std::int32_t number) {
  return fill(name, objectClass, number < 0 ? "" : std::to_string(number));
}

// None of the operations may throw: an exception ends the process.
class Naming final : public NS_CORBA::CorbaUtilInterface {
 public:
  int GetObjectType(const NVSList_T& name) override {
    std::string id;
    const bool isSubnetwork = Name2Index(id, name) == 0 &&
                              name[1].name.in() == std::string("TopoSubnetwork") &&
                              host::hasSubnetwork(id);
    return isSubnetwork ? kTopoSubnetworkType : 0;
  }

  CORBA::ULong ConvertNEIndexToName(NVSList_T& name, NS_CORBA::DomainObjectKey& key) override {
    return fillNumber(name, "ManagedElement", key.objectNumber);
  }
  CORBA::ULong ConvertONEIndexToName(NVSList_T& name, NS_CORBA::DomainObjectKey& key) override {
    return fillNumber(name, "ONE", key.objectNumber);
  }
  CORBA::ULong ConvertOSIndexToName(NVSList_T& name, std::int32_t& number) override {
    return fillNumber(name, "OS", number);
  }
  CORBA::ULong ConvertTopoNodeIdToName(NVSList_T& name, const std::string& id) override {
    return fill(name, "TopoSubnetwork", id);
  }

  CORBA::ULong Name2Index(std::string& id, const NVSList_T& name) override {
    if (name.length() != 2 || name[0].name.in() != std::string("EMS") ||
        name[0].value.in() != std::string(host::kEmsName)) {
      return host::kInvalidName;
    }
    const std::string objectClass = name[1].name.in();
    const std::string value = name[1].value.in();
    if (objectClass == "TopoSubnetwork") {
      id = value;
    } else if (objectClass == "ManagedElement") {
      id = "NE=" + value;
    } else {
      id = objectClass + "=" + value;
    }
    return 0;
  }

  CORBA::ULong GetObjectLabelInfo(NS_CORBA::ObjectLabelInfo& info, const std::string&,
                                  int) override {
    info = {};
    return 0;
  }
};

}  // namespace

void host::publishNaming() {
  static Naming naming;
  NS_BUNDLEMGR1::SetIFBuf("CorbaUtilInterface", &naming);
}
