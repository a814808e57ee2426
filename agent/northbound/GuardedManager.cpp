#include "agent/northbound/GuardedManager.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

#include "agent/base/Log.h"
#include "agent/base/RequestLog.h"
#include "agent/network/ManagedObjects.h"
#include "idl/ObjectKeys.h"
#include "orb/orb.h"

namespace agent {
namespace {

// The memory of an iterator without its records.
constexpr std::size_t kServant = 1024;

// Memory of a pair of texts without the characters of the texts.
constexpr std::size_t kPair = 80;

// A view and the size of its first batch.
struct View {
  ViewSize size;
  CORBA::ULong howMany = 0;  // records of the first batch
};

thread_local const View* viewInProgress = nullptr;

// Sets the view of the thread while the module computes the view.
class Computing {
 public:
  explicit Computing(const View& view) { viewInProgress = &view; }
  ~Computing() { viewInProgress = nullptr; }
  Computing(const Computing&) = delete;
  Computing& operator=(const Computing&) = delete;
};

std::size_t bytesOf(const globaldefs::NVSList_T& pairs) {
  std::size_t bytes = 0;
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    bytes += kPair + std::strlen(pairs[i].name.in()) + std::strlen(pairs[i].value.in());
  }
  return bytes;
}

// Runs a request and logs the reason of its refusal.
template <typename Run>
void logged(const char* operation, const Run& run) {
  try {
    run();
  } catch (const globaldefs::ProcessingFailureException& refusal) {
    logRefusal(orb::format(orb::currentPeer()), operation, refusal.errorReason.in());
    throw;
  }
}

// failure: null after a success.
void recordChange(const char* operation, const globaldefs::NVSList_T& objectName,
                  const char* failure) {
  if (isRecorded()) {
    using Outcome = RequestRecord::Outcome;
    const Outcome outcome = failure == nullptr ? Outcome::kDone : Outcome::kFailed;
    recordWith(outcome, [&] {
      return RequestRecord{orb::currentPeer(),
                           object_key::kManager,
                           operation,
                           formatName(objectName),
                           outcome,
                           failure == nullptr ? "" : failure};
    });
  }
}

// Runs a request that changes an object, and records the change or its failure.
template <typename Run>
void recordedChange(const char* operation, const globaldefs::NVSList_T& objectName,
                    const Run& run) {
  try {
    run();
  } catch (const globaldefs::ProcessingFailureException& refusal) {
    recordChange(operation, objectName, refusal.errorReason.in());
    throw;
  } catch (const CORBA::SystemException& failure) {
    recordChange(operation, objectName, orb::describe(failure).c_str());
    throw;
  } catch (const std::exception& failure) {
    recordChange(operation, objectName, failure.what());
    throw;
  } catch (...) {
    recordChange(operation, objectName, "an exception of an unknown type");
    throw;
  }
  recordChange(operation, objectName, nullptr);
}

// Runs a request that changes an object, and logs and records the change or the refusal.
template <typename Run>
void loggedChange(const char* operation, const globaldefs::NVSList_T& objectName, const Run& run) {
  logged(operation, [&] { recordedChange(operation, objectName, run); });
  afterChange([&] {
    if (isLogged(kLogEvents)) {
      logChange(orb::format(orb::currentPeer()), operation, formatName(objectName));
    }
  });
}

ViewAdmission::Pass admit(ViewAdmission& admission, std::size_t bytes) {
  try {
    return admission.admit(bytes);
  } catch (const std::bad_alloc&) {
    throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO);
  }
}

}  // namespace

// The first batch counts in addition to the result: a partial batch is a copy of its records.
template <typename List, typename Run>
void GuardedManager::admitted(const char* operation, ViewKind kind, CORBA::ULong howMany,
                              List& list, const Run& run) {
  const View view{guard_.sizeOf(kind), howMany};
  const std::size_t batch = std::min<std::size_t>(howMany, view.size.records);
  ViewAdmission::Pass pass =
      admit(guard_.admission, view.size.result + view.size.work + view.size.of(batch));
  {
    const IteratorRegistry::Creation creation(guard_.iterators);
    const Computing computing(view);
    logged(operation, run);
  }
  pass.computed(list.ptr() == nullptr ? 0 : view.size.of(list.ptr()->length()));
  ViewReply::keep(std::move(pass));
}

void GuardedManager::setNativeEMSName(const globaldefs::NVSList_T& objectName,
                                      const char* nativeEMSName) {
  loggedChange("setNativeEMSName", objectName,
               [&] { manager_.setNativeEMSName(objectName, nativeEMSName); });
}

void GuardedManager::setUserLabel(const globaldefs::NVSList_T& objectName, const char* userLabel,
                                  CORBA::Boolean enforceUniqueness) {
  loggedChange("setUserLabel", objectName,
               [&] { manager_.setUserLabel(objectName, userLabel, enforceUniqueness); });
}

void GuardedManager::setOwner(const globaldefs::NVSList_T& objectName, const char* owner) {
  loggedChange("setOwner", objectName, [&] { manager_.setOwner(objectName, owner); });
}

void GuardedManager::getCapabilities(common::CapabilityList_T_out capabilities) {
  manager_.getCapabilities(capabilities);
}

void GuardedManager::setAdditionalInfo(const globaldefs::NVSList_T& objectName,
                                       globaldefs::NVSList_T& additionalInfo) {
  ViewAdmission::Pass pass;
  loggedChange("setAdditionalInfo", objectName, [&] {
    // At least one byte: a full admission refuses also a request without information.
    pass = admit(guard_.information, bytesOf(additionalInfo) + 1);
    manager_.setAdditionalInfo(objectName, additionalInfo);
  });
  pass.computed(bytesOf(additionalInfo));
  ViewReply::keep(std::move(pass));
}

void GuardedManager::getTopoSubnetworkViewInfo(CORBA::ULong how_many,
                                               TopoManagementManager::NodeList_T_out nodeList,
                                               TopoManagementManager::NodeIterator_I_out nodeIt) {
  admitted("getTopoSubnetworkViewInfo", ViewKind::kNodes, how_many, nodeList,
           [&] { manager_.getTopoSubnetworkViewInfo(how_many, nodeList, nodeIt); });
}

void GuardedManager::getProtectSubnetworkViewInfo(
    CORBA::ULong how_many, TopoManagementManager::NodeList_T_out nodeList,
    TopoManagementManager::NodeIterator_I_out nodeIt) {
  admitted("getProtectSubnetworkViewInfo", ViewKind::kNodes, how_many, nodeList,
           [&] { manager_.getProtectSubnetworkViewInfo(how_many, nodeList, nodeIt); });
}

void GuardedManager::getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T& topoSubnetworkName,
                                                 CORBA::ULong how_many,
                                                 TopoManagementManager::NodeList_T_out nodeList,
                                                 TopoManagementManager::NodeIterator_I_out nodeIt) {
  admitted("getViewInfoByTopoSubnetwork", ViewKind::kNodes, how_many, nodeList, [&] {
    manager_.getViewInfoByTopoSubnetwork(topoSubnetworkName, how_many, nodeList, nodeIt);
  });
}

void GuardedManager::getClockSourceSubnetworkViewInfo(
    CORBA::ULong how_many, TopoManagementManager::NodeList_T_out nodeList,
    TopoManagementManager::NodeIterator_I_out nodeIt) {
  admitted("getClockSourceSubnetworkViewInfo", ViewKind::kClockPositions, how_many, nodeList,
           [&] { manager_.getClockSourceSubnetworkViewInfo(how_many, nodeList, nodeIt); });
}

void GuardedManager::getAllClockSourceViewlTopologicalLinks(
    CORBA::ULong how_many, topologicalLink::TopologicalLinkList_T_out linkList,
    topologicalLink::TopologicalLinkIterator_I_out linkIt) {
  admitted("getAllClockSourceViewlTopologicalLinks", ViewKind::kClockLinks, how_many, linkList,
           [&] { manager_.getAllClockSourceViewlTopologicalLinks(how_many, linkList, linkIt); });
}

// The length of an iterator counts the records after the first batch. The iterator stores the
// records of the first batch, too.
std::size_t iteratorBytes(PortableServer::ServantBase* servant) {
  if (viewInProgress == nullptr) {
    return 0;
  }
  std::size_t left = 0;
  if (auto* const nodes = dynamic_cast<POA_TopoManagementManager::NodeIterator_I*>(servant)) {
    left = nodes->getLength();
  } else if (auto* const links =
                 dynamic_cast<POA_topologicalLink::TopologicalLinkIterator_I*>(servant)) {
    left = links->getLength();
  } else {
    return 0;
  }
  return kServant + viewInProgress->size.of(left + viewInProgress->howMany);
}

}  // namespace agent
