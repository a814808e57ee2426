// The fake CorbaUtilInterface, and the class of FDNs.

#ifndef TESTS_FAKES_CORBAUTIL_H
#define TESTS_FAKES_CORBAUTIL_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/agent/CorbaUtilInterface.h"

namespace fakes {

// The answers of the interface. A test writes the answers before the calls.
struct CorbaUtilAnswers {
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

CorbaUtilAnswers& corbaUtilAnswers();

// The name that a conversion returns, such as "[EMS=EMS-1, ManagedElement=5]". A conversion that
// fails by onCall() returns the EMS pair only.
globaldefs::NVSList_T nameOf(const std::string& className, const std::string& value);

NS_CORBA::CorbaUtilInterface& corbaUtil();

// Makes another interface with the same answers, for lookups among several interfaces. The caller
// owns the result.
NS_CORBA::CorbaUtilInterface* makeCorbaUtil();

void resetCorbaUtil();

}  // namespace fakes

#endif
