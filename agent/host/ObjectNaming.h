// TMF names of the agent's objects, both ways. Published as "CorbaUtilInterface".
//
// Names and domain ids are described in ManagedObjects.h. The module itself names the links of the
// clock topology.

#ifndef AGENT_HOST_OBJECTNAMING_H
#define AGENT_HOST_OBJECTNAMING_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "agent/model/NetworkModel.h"
#include "agent/network/ManagedObjects.h"
#include "platform/agent/CorbaUtilInterface.h"

namespace agent {

// The result of GetObjectType for the name of another agent's object, and for the name of a
// topology subnetwork that does not exist.
constexpr int kNoObjectType = 0;

// Names of any length and form are valid arguments; kInvalidName is the result for a name without a
// meaning. GetObjectType looks topology subnetworks up in the model. No operation checks
// that an element or a management system exists.
//
// Thread-safety: any thread. Ownership: borrows the model, which outlives this object. Errors:
// failure codes.
class ObjectNaming final : public NS_CORBA::CorbaUtilInterface {
 public:
  // Receives one line for each object without a name, on the thread of the call. Views leave such
  // an object out.
  using Unnamed = std::function<void(const std::string& line)>;

  // ems: the value of the "EMS" pair of every name; may differ from the name in the network.
  ObjectNaming(std::string ems, const NetworkModel& model, Unnamed unnamed = {});

  int GetObjectType(const globaldefs::NVSList_T& name) override;

  // The name is empty after a failure.
  CORBA::ULong ConvertNEIndexToName(globaldefs::NVSList_T& name,
                                    NS_CORBA::DomainObjectKey& key) override;
  CORBA::ULong ConvertONEIndexToName(globaldefs::NVSList_T& name,
                                     NS_CORBA::DomainObjectKey& key) override;
  CORBA::ULong ConvertOSIndexToName(globaldefs::NVSList_T& name, std::int32_t& number) override;
  CORBA::ULong ConvertTopoNodeIdToName(globaldefs::NVSList_T& name, const std::string& id) override;

  // A failure leaves the id unchanged.
  CORBA::ULong Name2Index(std::string& id, const globaldefs::NVSList_T& name) override;

  CORBA::ULong GetObjectLabelInfo(NS_CORBA::ObjectLabelInfo& info, const std::string& id,
                                  int type) override;

 private:
  std::optional<ObjectKey> parse(const globaldefs::NVSList_T& name) const;
  CORBA::ULong setName(globaldefs::NVSList_T& name, std::string_view objectClass,
                       std::string_view value) const;
  CORBA::ULong setNumberedName(globaldefs::NVSList_T& name, std::string_view objectClass,
                               std::int32_t number) const;
  // Empties the name, reports why the object has none, and returns kInvalidName.
  CORBA::ULong refuseName(globaldefs::NVSList_T& name, std::string_view objectClass,
                          const std::string& id, const char* why) const;

  const std::string ems_;
  const NetworkModel& model_;
  const Unnamed unnamed_;  // may be empty
};

}  // namespace agent

#endif
