// Checks the types that this ORB's mapping uses in the module's symbols. Agents of operators are
// compiled against these types.

#include <type_traits>

#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/topologicalLink.h"

static_assert(std::is_same_v<PortableServer::ServantBase, TAO_ServantBase>);
static_assert(std::is_same_v<TopoManagementManager::NodeList_T_out,
                             TAO_Seq_Out_T<TopoManagementManager::NodeList_T>>);
static_assert(std::is_same_v<TopoManagementManager::NodeIterator_I_out,
                             TAO_Objref_Out_T<TopoManagementManager::NodeIterator_I>>);
static_assert(std::is_same_v<topologicalLink::TopologicalLinkList_T_out,
                             TAO_Seq_Out_T<topologicalLink::TopologicalLinkList_T>>);
static_assert(std::is_same_v<topologicalLink::TopologicalLinkIterator_I_out,
                             TAO_Objref_Out_T<topologicalLink::TopologicalLinkIterator_I>>);
