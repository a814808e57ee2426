// Converts between the domain's indexes and ids and the TMF names of managed objects.
// Published under the name "CorbaUtilInterface". Texts are UTF-8.
//
// The pairs of a TMF name are "EMS", with the value of CorbaBaseAgentConfig::EmsName, and one more:
//
//   network element            ManagedElement    the number
//   optical network element    ONE               the number
//   management system          OS                the number
//   topology subnetwork        TopoSubnetwork    the id
//   link of the clock topology ClockTopoLinkId   the link id; the module itself makes this name
//
// Clients rely on the pairs. The module relies on a name that is not empty: in test mode, the topo
// subnetwork view fails with BAD_PARAM for a subnetwork with an empty name.
//
// Thread-safety: any thread. Ownership: all arguments are borrowed for the call.
//
// Errors: an operation with a CORBA::ULong result returns 0 on success and otherwise a failure
// code. Consequences of a failed conversion:
//   - The views of topology nodes leave the node out; the client does not see the code.
//   - The clock views and the notifications ignore the code and use the content of the output
//     argument: a failed conversion clears the name.
//   - A failed Name2Index ends the process.
// Must not raise: no operation may raise anything but CORBA exceptions during a request; any other
// exception, ProcessException included, ends the process. A client triggers the conversions with
// every view. During an event every exception is logged, and ends the event.
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

  // The type of the object with this name, for a name of any content and length: the client of
  // getViewInfoByTopoSubnetwork chooses the name. Returns kTopoSubnetworkType only for a topology
  // subnetwork that exists, and any other value, such as 0, for every other name: the module then
  // refuses the name as invalid input. kPhysicalRoot is not a topology subnetwork.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process.
  virtual int GetObjectType(const globaldefs::NVSList_T& name) = 0;

  // Fill the TMF name of the network element, optical network element or management system with
  // this number. The module calls the functions for unknown and negative numbers too. An unknown
  // number that is not negative may be converted; a negative number should fail. The functions do
  // not write the key: the module uses one key for all names of a clock view.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process, in every view.
  virtual CORBA::ULong ConvertNEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) = 0;
  virtual CORBA::ULong ConvertONEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) = 0;
  virtual CORBA::ULong ConvertOSIndexToName(globaldefs::NVSList_T& name, std::int32_t& number) = 0;

  // Fills the TMF name of the topology subnetwork with this id, which need not exist:
  // kPhysicalRoot, as the parent of the top-level nodes, is converted too (a failure leaves these
  // nodes out of the views), and so are the ids of deleted nodes. kZeroId and "" are converted for
  // events with such a node id, and never as a parent id.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process, in every view of
  // topology nodes.
  virtual CORBA::ULong ConvertTopoNodeIdToName(globaldefs::NVSList_T& name,
                                               const std::string& id) = 0;

  // Fills the domain id of the object with this name: the inverse of the conversions above. The
  // module calls Name2Index for a name that GetObjectType has just accepted as a
  // kTopoSubnetworkType, and compares the id with the node ids of the domain, byte for byte. For
  // the name of an element, which the module does not pass, the id is the FDN: "NE=1", not "1".
  // Must not fail for such a name, also when the subnetwork has been deleted meanwhile: the module
  // turns a code other than 0 into a ProcessException, which ends the process. A client triggers
  // the call with getViewInfoByTopoSubnetwork.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process.
  virtual CORBA::ULong Name2Index(std::string& id, const globaldefs::NVSList_T& name) = 0;

  // Fills the stored labels of the object with this id and type. The module ignores the code and
  // uses userLabel unless it is empty.
  // May raise: CORBA exceptions. Must not raise anything else: ends the process. A client triggers
  // the call with getAllClockSourceViewlTopologicalLinks, when the network has a clock link.
  virtual CORBA::ULong GetObjectLabelInfo(ObjectLabelInfo& info, const std::string& id,
                                          int type) = 0;
};

}  // namespace NS_CORBA

#endif
