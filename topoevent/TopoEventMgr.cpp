#include "topoevent/TopoEventMgr.h"

#include <atomic>
#include <memory>

#include "ace/Guard_T.h"
#include "ace/Recursive_Thread_Mutex.h"
#include "ace/Static_Object_Lock.h"
#include "platform/agent/AgentConfig.h"
#include "platform/agent/TANotification.h"
#include "topo/Log.h"
#include "topo/Lookup.h"
#include "topo/TmfRecords.h"
#include "topoevent/NodeLabelCache.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using NS_CORBA::TANotification;
using NS_DOMAIN::TopoNode_T;
using NS_SECURITY_SERVICE1::SecurityIF;
using StaticObjectGuard = ACE_Guard<ACE_Recursive_Thread_Mutex>;

constexpr topo::LogSite kSubscribeSite{"topoeventmgr", 143};
constexpr const char* kNothingToSubscribe =
    "[TopoEventMgr::OnSubscibeEvent] para pHandler is NULL.";
constexpr topo::LogSite kUnSubscribeSite{"topoeventmgr", 165};
constexpr const char* kNothingToUnSubscribe =
    "[TopoEventMgr::OnUnSubscibeEvent] para pHandler is NULL.";

// In the order of subscription.
constexpr int kEvents[] = {EVENT_TOPO_NODE_CREATED, EVENT_TOPO_NODE_DELETED,
                           EVENT_TOPO_NODE_CHANGED};

// The `third` and `fourth` arguments of TEEventMgr::Subscribe.
constexpr int kThirdArgument = 21;
constexpr int kFourthArgument = 0;

constexpr const char* kLabelAttribute = "nativeEMSName";

// Guarded by ACE's lock of static objects. Deleted by CleanUp, or with the module.
std::unique_ptr<TopoEventMgr> ownedInstance;
// A copy of ownedInstance.get(), for readers without the lock.
std::atomic<TopoEventMgr*> instance{nullptr};

void subscribe(TEEventHandler* handler) {
  TEEventMgr* events = TEEventMgr::Instance();
  if (events == nullptr) {
    return;
  }
  if (!topo::lookup<SecurityIF>()->isEventAccessAllowed()) {
    return;
  }
  for (const int event : kEvents) {
    events->Subscribe(handler, event, kThirdArgument, kFourthArgument);
  }
}

void unSubscribe(TEEventHandler* handler) {
  TEEventMgr* events = TEEventMgr::Instance();
  if (events == nullptr) {
    return;
  }
  for (const int event : kEvents) {
    events->UnSubscribe(handler, event);
  }
}

// Ignores the result: a node without a name is reported too.
void fillName(globaldefs::NVSList_T& name, const TopoNode_T& node) {
  TopoManagementMgr::convertDomainToTmfObjName(name, node.nodeType, node.nodeId);
}

// --- Changes of labels.

enum class Verdict { kReport, kSkipNode, kEndEvent };

Verdict judgeInTestMode(const TopoNode_T& node) {
  if (!topo::nodeLabelCache.storeChange(node.nodeId, node.nativeName)) {
    return Verdict::kEndEvent;
  }
  // nodeLabelCache stores empty labels, lastReportedLabel does not.
  const bool report =
      !node.nativeName.empty() && topo::lastReportedLabel.storeChange(node.nativeName);
  return report ? Verdict::kReport : Verdict::kSkipNode;
}

Verdict judge(const TopoNode_T& node) {
  if (NS_CORBA::CorbaAgentConfig::Instance()->GetTestSwitch()) {
    return judgeInTestMode(node);
  }
  return node.nativeName.empty() ? Verdict::kSkipNode : Verdict::kReport;
}

void setLabel(notifications::NVList_T& attributes, const std::string& label) {
  notifications::NameAndAnyValue_T& attribute = topo::at(attributes, 0);
  attribute.name = topo::duplicate(kLabelAttribute);
  attribute.value <<= label.c_str();  // copies; some ORBs store null when memory is short
  const char* copy = nullptr;
  if (!(attribute.value >>= copy) || copy == nullptr) {
    throw std::bad_alloc();
  }
}

void reportLabel(const TopoNode_T& node, notifications::NVList_T& attributes) {
  setLabel(attributes, node.nativeName);
  globaldefs::NVSList_T name;
  fillName(name, node);
  TANotification::OnObjectAVC(name, attributes, true, CORBA::Any(), false);
}

}  // namespace

TopoEventMgr* TopoEventMgr::Instance() {
  if (TopoEventMgr* present = instance.load(std::memory_order_acquire)) {
    return present;
  }
  const StaticObjectGuard guard(*ACE_Static_Object_Lock::instance());
  if (guard.locked() != 0 && !ownedInstance) {
    ownedInstance = std::make_unique<TopoEventMgr>();
    instance.store(ownedInstance.get(), std::memory_order_release);
  }
  return instance.load(std::memory_order_acquire);
}

void TopoEventMgr::CleanUp() {
  if (instance.load(std::memory_order_acquire) == nullptr) {
    return;
  }
  const StaticObjectGuard guard(*ACE_Static_Object_Lock::instance());
  if (guard.locked() != 0) {
    instance.store(nullptr, std::memory_order_release);
    ownedInstance.reset();
  }
}

int TopoEventMgr::OnSubscibeEvent(TEEventHandler* pHandler) {
  if (pHandler == nullptr) {
    topo::logText(kSubscribeSite, NS_CORBA::kLogError, kNothingToSubscribe);
    return 0;
  }
  try {
    subscribe(pHandler);
  } catch (...) {
    // The module works without events. Subscriptions made before the exception stay.
  }
  return 0;
}

int TopoEventMgr::OnUnSubscibeEvent(TEEventHandler* pHandler) {
  if (pHandler == nullptr) {
    topo::logText(kUnSubscribeSite, NS_CORBA::kLogError, kNothingToUnSubscribe);
    return 0;
  }
  try {
    unSubscribe(pHandler);
  } catch (...) {
    // The handler may stay subscribed; the module keeps the handler alive.
  }
  return 0;
}

int TopoEventMgr::notifyNodesCreated(const std::vector<TopoNode_T>& nodes) {
  auto record = topo::freshRecord<TopoManagementManager::Node_T>();
  CORBA::Any object;
  for (const TopoNode_T& node : nodes) {
    fillName(record.name, node);
    TopoManagementMgr::convertDomainNodeToTmf(record, node);
    object <<= record;  // copied
    TANotification::OnObjectCreated(record.name, object, true);
  }
  return 0;
}

int TopoEventMgr::notifyNodesDeleted(const std::vector<TopoNode_T>& nodes) {
  for (const TopoNode_T& node : nodes) {
    globaldefs::NVSList_T name;
    fillName(name, node);
    TANotification::OnObjectDeleted(name, true);
  }
  return 0;
}

int TopoEventMgr::notifyNodeLabelsChanged(const std::vector<TopoNode_T>& nodes) {
  for (const TopoNode_T& node : nodes) {
    notifications::NVList_T attributes;
    topo::setLength(attributes, 1);
    const Verdict verdict = judge(node);
    if (verdict == Verdict::kEndEvent) {
      break;
    }
    if (verdict == Verdict::kReport) {
      reportLabel(node, attributes);
    }
  }
  return 0;
}
