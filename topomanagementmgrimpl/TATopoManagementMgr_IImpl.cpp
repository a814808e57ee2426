#include "topomanagementmgrimpl/TATopoManagementMgr_IImpl.h"

#include <memory>
#include <string>
#include <vector>

#include "platform/agent/Failures.h"
#include "platform/agent/TECommonFunc.h"
#include "topo/Holder.h"
#include "topo/Log.h"
#include "topo/Lookup.h"
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

using LinkIteratorTrait =
    TAIT<POA_topologicalLink::TopologicalLinkIterator_I, topologicalLink::TopologicalLinkList_T,
         topologicalLink::TopologicalLinkList_T_out>::Trait;

// Runs a view of TopoManagementMgr and returns its nodes as a first batch and an iterator.
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

// --- Clock views. Every exception of the domain query becomes a failure code.

struct ClockFailure {
  topo::LogSite site;
  const char* text;
};

constexpr ClockFailure kClockNodesFailed{
    {"topomanagementmgrimpl", 121},
    "[TopoManagementMgr::getClockSourceSubnetworkViewInfo]: catch processException! errorCode = "
    "%d"};
constexpr ClockFailure kClockLinksFailed{
    {"topomanagementmgrimpl", 144},
    "[TopoManagementMgr::getAllClockSourceViewlTopologicalLinks]: catch processException! "
    "errorCode = %d"};

constexpr int kClockQueryKind = 10;  // the `kind` argument of both clock queries

template <typename Query>
void runClockQuery(const Query& query, const ClockFailure& failed) {
  try {
    query(topo::GetCorbaDomain()->GetTopoData());
  } catch (ProcessException& failure) {
    topo::logFormat(failed.site, kLogError, failed.text, failure.errorCode);
    ThrowException(static_cast<CORBA::ULong>(failure.errorCode));
  } catch (...) {
    ThrowException(ERR_TOPO_CONVERSION);
  }
}

// Runs a clock query, converts the result and returns it as a first batch and an iterator.
template <typename Trait, typename Info, typename OutList, typename OutIterator>
void answerClockView(void (NS_DOMAIN::TopoData::*query)(const int&,
                                                        NS_UTIL::REF_Impl<std::vector<Info>>*,
                                                        NS_DOMAIN::IntHolder*),
                     int (*build)(typename Trait::List&, const std::vector<Info>&),
                     const ClockFailure& failed, CORBA::ULong how_many, const OutList& records,
                     const OutIterator& iterator) {
  topo::Holder<std::vector<Info>> infos;
  topo::Holder<int> count;
  runClockQuery(
      [&](NS_DOMAIN::TopoData* topology) {
        (topology->*query)(kClockQueryKind, infos.get(), count.get());
      },
      failed);
  auto list = std::make_unique<typename Trait::List>();
  build(*list, *infos);
  Trait::createIterator(list.release(), how_many, records, iterator);
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

// Reports seven of the ten operations, on purpose: clients rely on exactly this list.
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

void TATopoManagementMgr_IImpl::getProtectSubnetworkViewInfo(CORBA::ULong how_many,
                                                             NodeList_T_out nodeList,
                                                             NodeIterator_I_out nodeIt) {
  topo::atCorbaEdge([&] {
    answerView(TopoManagementMgr::getProtectSubnetworkViewInfo, how_many, nodeList, nodeIt);
  });
}

void TATopoManagementMgr_IImpl::getViewInfoByTopoSubnetwork(
    const globaldefs::NVSList_T& topoSubnetworkName, CORBA::ULong how_many, NodeList_T_out nodeList,
    NodeIterator_I_out nodeIt) {
  topo::atCorbaEdge([&] {
    if (topo::lookup<CorbaUtilInterface>()->GetObjectType(topoSubnetworkName) !=
        CorbaUtilInterface::kTopoSubnetworkType) {
      throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INVALID_INPUT,
                                                   "please input topoSubnetwork!");
    }
    const auto view = [&](NodeList_T& nodes) {
      return TopoManagementMgr::getViewInfoByTopoSubnetwork(nodes, topoSubnetworkName);
    };
    answerView(view, how_many, nodeList, nodeIt);
  });
}

void TATopoManagementMgr_IImpl::getClockSourceSubnetworkViewInfo(CORBA::ULong how_many,
                                                                 NodeList_T_out nodeList,
                                                                 NodeIterator_I_out nodeIt) {
  topo::atCorbaEdge([&] {
    answerClockView<NodeIteratorTrait>(&NS_DOMAIN::TopoData::GetClockPositionList,
                                       TopoManagementMgr::buildClockSourceNodeList,
                                       kClockNodesFailed, how_many, nodeList, nodeIt);
  });
}

void TATopoManagementMgr_IImpl::getAllClockSourceViewlTopologicalLinks(
    CORBA::ULong how_many, topologicalLink::TopologicalLinkList_T_out linkList,
    topologicalLink::TopologicalLinkIterator_I_out linkIt) {
  topo::atCorbaEdge([&] {
    answerClockView<LinkIteratorTrait>(&NS_DOMAIN::TopoData::GetClockTopoLinkList,
                                       TopoManagementMgr::buildClockTopoLinkList, kClockLinksFailed,
                                       how_many, linkList, linkIt);
  });
}

}  // namespace NS_CORBA
