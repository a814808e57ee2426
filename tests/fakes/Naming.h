// The CORBA utility interface of the fakes, and the class of FDNs: naming of managed objects.

#ifndef TESTS_FAKES_NAMING_H
#define TESTS_FAKES_NAMING_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/agent/CorbaUtilInterface.h"

namespace fakes {

// What naming answers. Set by the test before calls are made, read by the fakes.
struct Naming {
  int objectType = NS_CORBA::CorbaUtilInterface::kTopoSubnetworkType;
  bool emptyTopoNodeNames = false;  // topology nodes are named by an empty list
  std::string className;            // what GetMoc answers; empty: the class of the last term
  std::string idOfName;             // what Name2Index finds; empty: the last value of the name
  NS_CORBA::ObjectLabelInfo labels;
  bool leaveLabelsAlone = false;  // GetObjectLabelInfo writes nothing
  // The four texts that each call of GetObjectLabelInfo was given to fill.
  std::vector<std::string> labelRequests;
  bool leaveNamesAlone = false;  // ConvertNEIndexToName writes nothing
  std::int32_t addedToKey = 0;   // what ConvertNEIndexToName adds to the first field of its key
};

Naming& naming();

// The names that the conversions give, "[EMS=EMS-1, ManagedElement=5]" and so on. A conversion that
// is planned to fail has written the EMS pair alone.
globaldefs::NVSList_T nameOf(const std::string& className, const std::string& value);

NS_CORBA::CorbaUtilInterface& corbaUtil();

// One more interface like it, for lookups among several; owned by the caller.
NS_CORBA::CorbaUtilInterface* makeCorbaUtil();

void resetNaming();

}  // namespace fakes

#endif
