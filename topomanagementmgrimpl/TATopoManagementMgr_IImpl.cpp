#include "topomanagementmgrimpl/TATopoManagementMgr_IImpl.h"

#include <memory>
#include <string>
#include <vector>

#include "platform/agent/Failures.h"
#include "platform/agent/TECommonFunc.h"
#include "topomanagementmgr/TopoManagementMgr.h"
#include "topomanagementmgrimpl/CorbaEdge.h"
#include "topomanagementmgrimpl/ResultIterator.h"

namespace NS_CORBA {
namespace {

using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;

using NodeIteratorTrait =
    TAIT<POA_TopoManagementManager::NodeIterator_I, NodeList_T, NodeList_T_out>::Trait;

// Runs a view of the business class and splits what it found.
template <typename View>
void answerView(const View& view, CORBA::ULong how_many, const NodeList_T_out& nodeList,
                const NodeIterator_I_out& nodeIt) {
  auto nodes = std::make_unique<NodeList_T>();
  const CORBA::ULong code = view(*nodes);
  if (code != 0) {
    globaldefs::ProcessingFailureException failure;
    ConstructException(code, failure);
    throw failure;
  }
  NodeIteratorTrait::createIterator(nodes.release(), how_many, nodeList, nodeIt);
}

void refuseNotImplemented(const char* operation) {
  topo::atCorbaEdge([&] {
    const std::string reason = std::string(operation) + " is not implemented";
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_NOT_IMPLEMENTED, reason.c_str());
  });
}

}  // namespace

void TATopoManagementMgr_IImpl::setNativeEMSName(const globaldefs::NVSList_T& objectName,
                                                 const char* nativeEMSName) {
  topo::atCorbaEdge(
      [&] { ThrowException(TECommonFunc::onSetNativeEMSName(objectName, nativeEMSName)); });
}

void TATopoManagementMgr_IImpl::setUserLabel(const globaldefs::NVSList_T& objectName,
                                             const char* userLabel,
                                             CORBA::Boolean enforceUniqueness) {
  topo::atCorbaEdge([&] {
    ThrowException(TECommonFunc::onSetUserLabel(objectName, userLabel, enforceUniqueness));
  });
}

void TATopoManagementMgr_IImpl::setOwner(const globaldefs::NVSList_T& objectName,
                                         const char* owner) {
  topo::atCorbaEdge([&] { ThrowException(TECommonFunc::onSetOwner(objectName, owner)); });
}

// The lists leave operations out on purpose: clients know the manager by these seven.
void TATopoManagementMgr_IImpl::getCapabilities(common::CapabilityList_T_out capabilities) {
  topo::atCorbaEdge([&] {
    const std::vector<std::string> attributeOperations = {
        "TopoManagementManager::TopoMgr_I::setUserLabel",
        "TopoManagementManager::TopoMgr_I::setOwner",
        "TopoManagementManager::TopoMgr_I::setNativeEMSName",
    };
    const std::vector<std::string> otherOperations = {
        "TopoManagementManager::TopoMgr_I::getTopoSubnetworkViewInfo",
        "TopoManagementManager::TopoMgr_I::getProtectSubnetworkViewInfo",
        "TopoManagementManager::TopoMgr_I::getViewInfoByTopoSubnetwork",
        "TopoManagementManager::TopoMgr_I::getCapabilities",
    };
    TECommonFunc::onGetCapabilities(capabilities, attributeOperations, otherOperations);
  });
}

void TATopoManagementMgr_IImpl::setAdditionalInfo(const globaldefs::NVSList_T& objectName,
                                                  globaldefs::NVSList_T& additionalInfo) {
  topo::atCorbaEdge([&] {
    std::string errorText;
    const CORBA::ULong code =
        TECommonFunc::onSetAdditionalInfo(objectName, additionalInfo, errorText);
    ThrowException(code, errorText);
  });
}

void TATopoManagementMgr_IImpl::resetObject(const globaldefs::NVSList_T& objectName) {
  topo::atCorbaEdge([&] { ThrowException(TECommonFunc::resetObject(objectName)); });
}

void TATopoManagementMgr_IImpl::getTopoSubnetworkViewInfo(CORBA::ULong how_many,
                                                          NodeList_T_out nodeList,
                                                          NodeIterator_I_out nodeIt) {
  topo::atCorbaEdge([&] {
    answerView(TopoManagementMgr::getTopoSubnetworkViewInfo, how_many, nodeList, nodeIt);
  });
}

void TATopoManagementMgr_IImpl::getProtectSubnetworkViewInfo(CORBA::ULong, NodeList_T_out,
                                                             NodeIterator_I_out) {
  refuseNotImplemented("getProtectSubnetworkViewInfo");
}

void TATopoManagementMgr_IImpl::getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T&,
                                                            CORBA::ULong, NodeList_T_out,
                                                            NodeIterator_I_out) {
  refuseNotImplemented("getViewInfoByTopoSubnetwork");
}

void TATopoManagementMgr_IImpl::getClockSourceSubnetworkViewInfo(CORBA::ULong, NodeList_T_out,
                                                                 NodeIterator_I_out) {
  refuseNotImplemented("getClockSourceSubnetworkViewInfo");
}

void TATopoManagementMgr_IImpl::getAllClockSourceViewlTopologicalLinks(
    CORBA::ULong, topologicalLink::TopologicalLinkList_T_out,
    topologicalLink::TopologicalLinkIterator_I_out) {
  refuseNotImplemented("getAllClockSourceViewlTopologicalLinks");
}

}  // namespace NS_CORBA
