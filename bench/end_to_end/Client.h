// The client side of the processes that measure a running agent.

#ifndef BENCH_END_TO_END_CLIENT_H
#define BENCH_END_TO_END_CLIENT_H

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace bench {

constexpr CORBA::ULong kAll = 0xffffffff;  // more than any view has

// No limit that a view of the largest network reaches.
inline orb::Options generousOptions() {
  orb::Options options;
  options.maxMessageBytes = orb::kMaxMaxMessageBytes;
  options.callTimeout = std::chrono::minutes(5);
  return options;
}

// Throws std::invalid_argument unless the reference is an Interface.
template <typename Interface>
typename Interface::_var_type narrowed(CORBA::ORB_ptr orb, const std::string& reference) {
  const CORBA::Object_var object = orb->string_to_object(reference.c_str());
  typename Interface::_var_type result = Interface::_narrow(object.in());
  if (CORBA::is_nil(result.in())) {
    throw std::invalid_argument("a reference to another interface: " + reference);
  }
  return result;
}

// The topo subnetwork view in one batch.
inline TopoManagementManager::NodeList_T_var viewOf(
    const TopoManagementManager::TopoMgr_I_var& manager) {
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(kAll, nodes.out(), iterator.out());
  return nodes;
}

// The clock links in one batch.
inline topologicalLink::TopologicalLinkList_T_var linksOf(
    const TopoManagementManager::TopoMgr_I_var& manager) {
  topologicalLink::TopologicalLinkList_T_var links;
  topologicalLink::TopologicalLinkIterator_I_var iterator;
  manager->getAllClockSourceViewlTopologicalLinks(kAll, links.out(), iterator.out());
  return links;
}

}  // namespace bench

#endif
