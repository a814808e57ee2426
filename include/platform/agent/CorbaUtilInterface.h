// Converts between the domain's indexes and ids and the TMF names of managed objects.
// Published under the name "CorbaUtilInterface".
//
// Thread-safety: any thread. Ownership: all arguments are borrowed for the call.
//
// Errors: an operation with a CORBA::ULong result returns 0 on success and otherwise a failure code
// for ThrowException. After a failure the content of the output argument is unspecified.
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

// The key of the index-to-name conversions. The module always passes 0 in `first`.
struct DomainObjectKey {
  std::int32_t first = 0;
  std::int32_t objectNumber = -1;
};

// The stored labels of an object; "" where no label is stored. The module reads userLabel only.
struct ObjectLabelInfo {
  std::string userLabel;
  std::string label2;
  std::string label3;
  std::string label4;
};

class PLATFORM_API CorbaUtilInterface : public NS_BUNDLEMGR1::ServiceInterface {
 public:
  // The object types that the module uses.
  static constexpr int kTopoSubnetworkType = 54;
  static constexpr int kClockTopoLinkType = 201;

  ~CorbaUtilInterface() override;

  // The type of the object with this name. Returns kTopoSubnetworkType only for a topology
  // subnetwork that exists.
  virtual int GetObjectType(const globaldefs::NVSList_T& name) = 0;

  // Fill the TMF name of the network element, optical network element or management system with
  // this number. The module calls them for unknown and negative numbers too.
  virtual CORBA::ULong ConvertNEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) = 0;
  virtual CORBA::ULong ConvertONEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) = 0;
  virtual CORBA::ULong ConvertOSIndexToName(globaldefs::NVSList_T& name, std::int32_t& number) = 0;

  // Fills the TMF name of the topology subnetwork with this id.
  virtual CORBA::ULong ConvertTopoNodeIdToName(globaldefs::NVSList_T& name,
                                               const std::string& id) = 0;

  // Fills the domain id of the object with this name: the inverse of the conversions above.
  virtual CORBA::ULong Name2Index(std::string& id, const globaldefs::NVSList_T& name) = 0;

  // Fills the stored labels of the object with this id and type.
  virtual CORBA::ULong GetObjectLabelInfo(ObjectLabelInfo& info, const std::string& id,
                                          int type) = 0;
};

}  // namespace NS_CORBA

#endif
