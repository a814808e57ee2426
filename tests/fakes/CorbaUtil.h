// The fake CorbaUtilInterface, and the class of FDNs.

#ifndef TESTS_FAKES_CORBAUTIL_H
#define TESTS_FAKES_CORBAUTIL_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/agent/CorbaUtilInterface.h"

namespace fakes {

// The answers of the interface. A test writes them before the calls that read them.
struct Naming {
  int objectType = NS_CORBA::CorbaUtilInterface::kTopoSubnetworkType;
  bool emptyTopoNodeNames = false;  // ConvertTopoNodeIdToName gives an empty list
  std::string className;            // the answer of GetMoc; "": the class of the last term
  std::string idOfName;             // the answer of Name2Index; "": the last value of the name
  NS_CORBA::ObjectLabelInfo labels;
  bool leaveLabelsAlone = false;  // GetObjectLabelInfo writes nothing
  // The content of the four texts at each call of GetObjectLabelInfo.
  std::vector<std::string> labelRequests;
  bool leaveNamesAlone = false;  // ConvertNEIndexToName writes nothing
  std::int32_t addedToKey = 0;   // ConvertNEIndexToName adds this to the first field of its key
};

Naming& naming();

// A name as the conversions make it, such as "[EMS=EMS-1, ManagedElement=5]". A conversion that a
// step lets fail fills the EMS pair only.
globaldefs::NVSList_T nameOf(const std::string& className, const std::string& value);

NS_CORBA::CorbaUtilInterface& corbaUtil();

// Makes another interface with the same answers, for lookups among several. The caller owns it.
NS_CORBA::CorbaUtilInterface* makeCorbaUtil();

void resetNaming();

}  // namespace fakes

#endif
