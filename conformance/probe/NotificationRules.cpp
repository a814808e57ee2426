#include <string>

#include "conformance/probe/Calls.h"
#include "conformance/probe/ProbeManager.h"
#include "conformance/probe/Rules.h"
#include "conformance/shared/Names.h"
#include "orb/idl/TopoManagementManager.h"
#include "platform/agent/TAIteratorHelper.h"
#include "platform/agent/TANotification.h"

namespace conformance::probe {
namespace {

using globaldefs::NVSList_T;
using NS_CORBA::TANotification;

// Runs a call that may throw: the module then drops the notification.
template <typename Call>
void tolerantly(Call call) {
  try {
    call();
  } catch (...) {
    // The module logs the exception.
  }
}

void notify(const NVSList_T& name, const CORBA::Any& object) {
  notifications::NVList_T attributes;
  attributes.length(1);
  attributes[0].name = CORBA::string_dup("nativeEMSName");
  attributes[0].value <<= "München";
  tolerantly([&] { TANotification::OnObjectCreated(name, object, true); });
  tolerantly([&] { TANotification::OnObjectAVC(name, attributes, true, CORBA::Any(), false); });
  tolerantly([&] { TANotification::OnObjectAVC(name, attributes, false, object, true); });
  tolerantly([&] { TANotification::OnObjectDeleted(name, true); });
}

}  // namespace

void notificationsTakeAnyContent() {
  TopoManagementManager::Node_T node;
  node.name = objectName("topo-conformance", "TopoSubnetwork", "topo-conformance");
  node.nativeEMSName = CORBA::string_dup("München");
  node.nodeType = 1;
  node.nodeParam1 = 0;
  node.nodeParam2 = 0;
  CORBA::Any object;
  object <<= node;
  notify(node.name, object);
  notify(NVSList_T(), CORBA::Any());
}

void iteratorPoaExists() {
  const PortableServer::POA_var poa =
      quietly("getIteratorPoa", [] { return NS_CORBA::TAIteratorHelper::getIteratorPoa(); });
  if (CORBA::is_nil(poa.in())) {
    throw Skipped("getIteratorPoa returns nil, as it may: the host refuses iterators");
  }
  const CORBA::String_var name = poa->the_name();  // raises OBJECT_NOT_EXIST for a destroyed POA
}

void unknownIteratorsAreIgnored() {
  const PortableServer::POA_var poa = NS_CORBA::TAIteratorHelper::getIteratorPoa();
  const PortableServer::ServantBase_var servant = new ProbeIterator(poa.in());
  quietly("deactive_object", [&] { NS_CORBA::TAIteratorHelper::deactive_object(servant.in()); });
}

}  // namespace conformance::probe
