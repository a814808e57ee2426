#include "client/commands/ObjectNames.h"

#include <string>
#include <string_view>

#include "client/agent/Fetch.h"
#include "client/base/Failure.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;
using TopoManagementManager::NodeIterator_I;

constexpr const char* kEms = "EMS";

[[noreturn]] void noEms(const std::string& reason) {
  throw Failure(ExitCode::kCallFailed, reason + "; give the whole name with --name");
}

std::string emsOf(const NVSList_T& name) {
  for (CORBA::ULong i = 0; i < name.length(); ++i) {
    if (std::string_view(name[i].name.in()) == kEms) {
      return name[i].value.in();
    }
  }
  noEms("the name of the agent's first node has no EMS");
}

std::string learnEms(TopoManagementManager::TopoMgr_I_ptr manager) {
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var rest;
  manager->getTopoSubnetworkViewInfo(1, nodes.out(), rest.out());
  const IteratorGuard<NodeIterator_I> guard(rest.in());
  if (nodes->length() == 0) {
    noEms("the agent shows no node to learn the EMS name from");
  }
  return emsOf(nodes[0U].name);
}

}  // namespace

NVSList_T toList(const std::vector<TypedPair>& pairs) {
  NVSList_T list;
  list.length(static_cast<CORBA::ULong>(pairs.size()));
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    list[i].name = pairs[i].name.c_str();
    list[i].value = pairs[i].value.c_str();
  }
  return list;
}

NVSList_T objectName(const ManagerContext& context) {
  const Arguments& arguments = context.options.arguments;
  std::vector<TypedPair> pairs = arguments.object;
  if (!arguments.isWholeName) {
    pairs.insert(pairs.begin(), {kEms, learnEms(context.manager)});
  }
  return toList(pairs);
}

}  // namespace topoctl
