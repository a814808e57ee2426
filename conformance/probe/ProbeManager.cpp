#include "conformance/probe/ProbeManager.h"

#include <atomic>
#include <string>

#include "conformance/probe/Calls.h"
#include "conformance/probe/ProbeService.h"
#include "conformance/probe/Rules.h"
#include "conformance/shared/Names.h"
#include "conformance/shared/ProbeProtocol.h"
#include "platform/agent/TAIteratorHelper.h"

namespace conformance::probe {
namespace {

using globaldefs::NVSList_T;
using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeIterator_I_ptr;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;

std::atomic<int> managers{0};
std::atomic<int> iterators{0};

// The iterator of the latest getProtectSubnetworkViewInfo; the host owns the servant.
std::atomic<ProbeIterator*> latestIterator{nullptr};

[[noreturn]] void refuse(const std::string& reason) {
  throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INVALID_INPUT, reason.c_str());
}

const char* nameOf(Outcome outcome) {
  return outcome == Outcome::kPass ? kPass : outcome == Outcome::kFail ? kFail : kSkip;
}

bool checkRule(const std::string& id, NVSList_T& answer) {
  for (const Rule& rule : requestRules()) {
    if (id == rule.id) {
      const Result result = check(rule);
      append(answer, nameOf(result.outcome), result.reason);
      return true;
    }
  }
  return false;
}

void listRules(NVSList_T& answer) {
  for (const Rule& rule : requestRules()) {
    append(answer, rule.id, rule.text);
  }
}

// The second call is for a servant that is not active any more, as the module makes it.
void dropIterator() {
  if (ProbeIterator* const iterator = latestIterator.exchange(nullptr)) {
    iterator->_add_ref();
    const PortableServer::ServantBase_var owned = iterator;
    for (int i = 0; i < 2; ++i) {
      quietly("deactive_object",
              [iterator] { NS_CORBA::TAIteratorHelper::deactive_object(iterator); });
    }
  }
}

// The commands on the handler. Returns false for other commands.
bool runEventCommand(const std::string& command, NVSList_T& answer) {
  RecordingHandler& handler = ProbeService::handler();
  if (command == kEvents) {
    for (const auto& [id, nodes] : handler.take()) {
      append(answer, id, nodes);
    }
  } else if (command == kUnsubscribeInHandler) {
    handler.unsubscribeInNext();
  } else if (command == kUnsubscription) {
    append(answer, command, handler.unsubscription());
  } else if (command == kSubscribe) {
    unsubscribe(handler);
    subscribe(handler);
  } else if (command == kConcurrency) {
    append(answer, command, std::to_string(handler.mostConcurrent()));
  } else {
    return false;
  }
  return true;
}

void runCommand(const std::string& command, NVSList_T& answer) {
  if (command == kList) {
    listRules(answer);
  } else if (command == kDropIterator) {
    dropIterator();
  } else if (command == kIterators) {
    append(answer, command, std::to_string(ProbeIterator::count()));
  } else if (command == kEventAccess) {
    append(answer, command, eventsAreAllowed() ? "allowed" : "refused");
  } else if (!runEventCommand(command, answer) && !checkRule(command, answer)) {
    refuse("the probe has no command " + command);
  }
}

// Only the exceptions of the interface may leave an operation.
template <typename Work>
void atEdge(Work work) {
  try {
    work();
  } catch (const globaldefs::ProcessingFailureException&) {
    throw;
  } catch (const CORBA::SystemException&) {
    throw;
  } catch (...) {
    refuse("the host raises " + describeCurrentException());
  }
}

void noRecords(NodeList_T_out& nodeList) {
  nodeList = new NodeList_T;
}

[[noreturn]] void refuseIterator(const std::string& reason) {
  throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS,
                                               reason.c_str());
}

// Raises EXCPT_TOO_MANY_OPEN_ITERATORS when the host refuses iterators.
NodeIterator_I_ptr makeIterator() {
  const PortableServer::POA_var poa = NS_CORBA::TAIteratorHelper::getIteratorPoa();
  if (CORBA::is_nil(poa.in())) {
    refuseIterator("getIteratorPoa returns nil");
  }
  PortableServer::Servant_var<ProbeIterator> servant = new ProbeIterator(poa.in());
  const CORBA::ULong code = NS_CORBA::TAIteratorHelper::add_Iterator(servant.in());
  if (code != 0) {
    refuseIterator("add_Iterator fails with code " + std::to_string(code));
  }
  latestIterator = servant._retn();  // the host owns the creation reference now
  return latestIterator.load()->_this();
}

}  // namespace

ProbeManager::ProbeManager() {
  ++managers;
}

ProbeManager::~ProbeManager() {
  --managers;
}

int ProbeManager::count() {
  return managers;
}

void ProbeManager::getCapabilities(common::CapabilityList_T_out capabilities) {
  capabilities = new common::CapabilityList_T;
}

void ProbeManager::setAdditionalInfo(const NVSList_T& objectName, NVSList_T& additionalInfo) {
  if (objectName.length() != 1 || objectName[0].name.in() != std::string(kCommandPair)) {
    refuse("the module of this host is the probe of topo-conformance");
  }
  const std::string command = objectName[0].value.in();
  atEdge([&] {
    additionalInfo.length(0);
    runCommand(command, additionalInfo);
  });
}

void ProbeManager::getTopoSubnetworkViewInfo(CORBA::ULong, NodeList_T_out nodeList,
                                             NodeIterator_I_out) {
  noRecords(nodeList);
}

void ProbeManager::getProtectSubnetworkViewInfo(CORBA::ULong, NodeList_T_out nodeList,
                                                NodeIterator_I_out nodeIt) {
  atEdge([&] {
    nodeIt = makeIterator();
    noRecords(nodeList);
  });
}

void ProbeManager::getViewInfoByTopoSubnetwork(const NVSList_T&, CORBA::ULong,
                                               NodeList_T_out nodeList, NodeIterator_I_out) {
  noRecords(nodeList);
}

void ProbeManager::getClockSourceSubnetworkViewInfo(CORBA::ULong, NodeList_T_out nodeList,
                                                    NodeIterator_I_out) {
  noRecords(nodeList);
}

void ProbeManager::getAllClockSourceViewlTopologicalLinks(
    CORBA::ULong, topologicalLink::TopologicalLinkList_T_out linkList,
    topologicalLink::TopologicalLinkIterator_I_out) {
  linkList = new topologicalLink::TopologicalLinkList_T;
}

ProbeIterator::ProbeIterator(PortableServer::POA_ptr poa)
    : poa_(PortableServer::POA::_duplicate(poa)) {
  ++iterators;
}

ProbeIterator::~ProbeIterator() {
  --iterators;
}

int ProbeIterator::count() {
  return iterators;
}

CORBA::Boolean ProbeIterator::next_n(CORBA::ULong, NodeList_T_out nodeList) {
  noRecords(nodeList);
  return false;
}

PortableServer::POA_ptr ProbeIterator::_default_POA() {
  return PortableServer::POA::_duplicate(poa_.in());
}

}  // namespace conformance::probe
