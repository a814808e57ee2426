// Defines platform/agent/TECommonFunc.h but for the capability list: the common attributes.

#include "platform/agent/TECommonFunc.h"

#include <string_view>

#include "agent/base/FailureCodes.h"
#include "agent/base/OperationResult.h"
#include "agent/base/TextOrEmpty.h"
#include "agent/changes/AttributeService.h"
#include "agent/host/FailureReason.h"
#include "agent/host/RunningAgent.h"

namespace agent {
namespace {

// Runs a change. Only the log gets the reason of an internal error.
template <typename Change>
Outcome outcomeOf(const char* operation, Change change) {
  explainFailure(kSuccess, "");
  AttributeService* const service = runningAgent().attributes;
  if (service == nullptr) {
    return {kNotImplemented, ""};
  }
  return logInternalError(operation, change(*service));
}

template <typename Change>
CORBA::ULong codeOf(const char* operation, Change change) {
  const Outcome outcome = outcomeOf(operation, change);
  explainFailure(outcome.code, outcome.reason);
  return outcome.code;
}

}  // namespace

}  // namespace agent

namespace NS_CORBA {

using agent::AttributeService;

CORBA::ULong TECommonFunc::onSetUserLabel(const globaldefs::NVSList_T& objectName,
                                          const char* userLabel, bool enforceUniqueness) {
  return agent::codeOf("setUserLabel", [&](AttributeService& service) {
    return service.setUserLabel(objectName, agent::textOrEmpty(userLabel), enforceUniqueness);
  });
}

CORBA::ULong TECommonFunc::onSetOwner(const globaldefs::NVSList_T& objectName, const char* owner) {
  return agent::codeOf("setOwner", [&](AttributeService& service) {
    return service.setOwner(objectName, agent::textOrEmpty(owner));
  });
}

CORBA::ULong TECommonFunc::onSetNativeEMSName(const globaldefs::NVSList_T& objectName,
                                              const char* nativeEMSName) {
  return agent::codeOf("setNativeEMSName", [&](AttributeService& service) {
    return service.setNativeName(objectName, agent::textOrEmpty(nativeEMSName));
  });
}

CORBA::ULong TECommonFunc::onSetAdditionalInfo(const globaldefs::NVSList_T& objectName,
                                               globaldefs::NVSList_T& additionalInfo,
                                               std::string& errorText) {
  const agent::Outcome outcome =
      agent::outcomeOf("setAdditionalInfo", [&](AttributeService& service) {
        return service.setAdditionalInfo(objectName, additionalInfo);
      });
  errorText = outcome.reason;
  return outcome.code;
}

CORBA::ULong TECommonFunc::resetObject(const globaldefs::NVSList_T& objectName) {
  return agent::codeOf("resetObject",
                       [&](AttributeService& service) { return service.reset(objectName); });
}

}  // namespace NS_CORBA
