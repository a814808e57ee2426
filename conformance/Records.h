// Predicates on the records of views, for the checks. Pure functions; thread-safety: any thread.

#ifndef CONFORMANCE_RECORDS_H
#define CONFORMANCE_RECORDS_H

#include <cstddef>
#include <string>
#include <vector>

#include "conformance/shared/Names.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/topologicalLink.h"

namespace conformance {

// All fields, for comparisons.
std::string toText(const TopoManagementManager::Node_T& node);
std::string toText(const topologicalLink::TopologicalLink_T& link);

// The first `limit` nodes of each nodeType, in the order of the nodes.
std::vector<TopoManagementManager::Node_T> sampleOf(
    const std::vector<TopoManagementManager::Node_T>& nodes, std::size_t limit);

// Whether the text is valid UTF-8.
bool isUtf8(const std::string& text);

// Throw Broken for a record that is not well formed. `ems` is the value of the "EMS" pair that all
// names share.
void requireWellFormed(const TopoManagementManager::Node_T& node, const std::string& ems);
void requireWellFormed(const topologicalLink::TopologicalLink_T& link, const std::string& ems);

}  // namespace conformance

#endif
