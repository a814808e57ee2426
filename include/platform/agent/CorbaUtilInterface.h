// Naming of managed objects: between the domain's indexes and ids and TMF names.
// Published as "CorbaUtilInterface".
//
// Result codes: 0 is success, any other is a failure code for ThrowException; what a failed call
// left in its result is unspecified. Thread-safety: any thread.
//
// The host defines the destructor (key function, see framework/ProcessException.h).

#ifndef PLATFORM_AGENT_CORBAUTILINTERFACE_H
#define PLATFORM_AGENT_CORBAUTILINTERFACE_H

#include <cstdint>
#include <string>

#include "orb/idl/globaldefs.h"
#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// The key of the index-to-name conversions.
struct DomainObjectKey {
  std::int32_t first = 0;
  std::int32_t objectNumber = -1;
};

// The stored labels of one object; empty where none is stored.
struct ObjectLabelInfo {
  std::string userLabel;
  std::string label2;
  std::string label3;
  std::string label4;
};

class PLATFORM_API CorbaUtilInterface : public NS_BUNDLEMGR1::ServiceInterface {
 public:
  // Object types that the module asks for.
  static constexpr int kTopoSubnetworkType = 54;
  static constexpr int kClockTopoLinkType = 201;

  ~CorbaUtilInterface() override;

  // The type of a named object; kTopoSubnetworkType only for a topology subnetwork that exists.
  virtual int GetObjectType(const globaldefs::NVSList_T& name) = 0;

  // TMF names of a network element, an optical network element and a management system by number.
  virtual CORBA::ULong ConvertNEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) = 0;
  virtual CORBA::ULong ConvertONEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) = 0;
  virtual CORBA::ULong ConvertOSIndexToName(globaldefs::NVSList_T& name, std::int32_t& number) = 0;

  // TMF name of a topology subnetwork by id.
  virtual CORBA::ULong ConvertTopoNodeIdToName(globaldefs::NVSList_T& name,
                                               const std::string& id) = 0;

  // The domain id of a named object; the inverse of the conversions above.
  virtual CORBA::ULong Name2Index(std::string& id, const globaldefs::NVSList_T& name) = 0;

  // Fills the stored labels of an object of a type.
  virtual CORBA::ULong GetObjectLabelInfo(ObjectLabelInfo& info, const std::string& id,
                                          int type) = 0;
};

}  // namespace NS_CORBA

#endif
