// Defines platform/agent/TAIteratorHelper.h: the housekeeping of result iterators.

#include "platform/agent/TAIteratorHelper.h"

#include <string>

#include "agent/base/FailureCodes.h"
#include "agent/base/Log.h"
#include "agent/host/RunningAgent.h"
#include "agent/northbound/Northbound.h"

namespace NS_CORBA {
namespace {

void logLiveIterators(agent::IteratorRegistry& iterators, const char* remark) {
  agent::log(agent::kLogTraces,
             "result iterators: " + std::to_string(iterators.size()) + " live" + remark);
}

}  // namespace

PortableServer::POA_ptr TAIteratorHelper::getIteratorPoa() {
  agent::Northbound* const northbound = agent::runningAgent().northbound;
  return northbound == nullptr ? PortableServer::POA::_nil() : northbound->iterators().poa();
}

CORBA::ULong TAIteratorHelper::add_Iterator(PortableServer::ServantBase* servant) {
  agent::Northbound* const northbound = agent::runningAgent().northbound;
  if (northbound == nullptr) {
    return agent::kNotImplemented;
  }
  const agent::FailureCode code = northbound->addIterator(servant);
  logLiveIterators(northbound->iterators(), code == agent::kSuccess ? "" : ", one refused");
  return code;
}

void TAIteratorHelper::deactive_object(PortableServer::ServantBase* servant) {
  agent::Northbound* const northbound = agent::runningAgent().northbound;
  if (northbound != nullptr && northbound->iterators().deactivate(servant)) {
    logLiveIterators(northbound->iterators(), "");
  }
}

}  // namespace NS_CORBA
