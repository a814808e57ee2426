// Queries of the platform's domain data: topology, network elements, clock topology.
//
// Thread-safety: any thread; several threads may query at the same time.
//
// Ownership: the platform owns facets and accessors, which are valid while the interface is
// published. Result holders are borrowed for the call; a query that keeps a holder calls AddRef.
//
// Texts are UTF-8.
//
// Errors: every call, GetFacet and the accessors included, may raise ProcessException. A result
// holder may then be partly filled. A client triggers the calls with every view; their exceptions
// become
//
//   view                          ProcessException           CORBA exception   any other exception
//   topo, protect subnetwork      exception of errorCode     reaches client    ends the process
//   below a topo subnetwork       logged; the nodes that     reaches client    ends the process
//                                 were read are the result
//   clock nodes, clock links      exception of errorCode     ERR_TOPO_CONVERSION, for both
//
// With errorCode 0, the view continues with the records that were read. In test mode, init calls
// GetAllTopoNodes; every exception leaves init.
// Must not raise: anything but ProcessException and CORBA exceptions, std::bad_alloc included, out
// of GetFacet, GetTopoData, GetAllTopoNodes, GetNEData, GetNEIndexList and GetNEList: ends the
// process.
//
// The host defines the destructors (key functions, see framework/ProcessException.h).

#ifndef PLATFORM_DOMAIN_DOMAININTERFACE_H
#define PLATFORM_DOMAIN_DOMAININTERFACE_H

#include <string>
#include <vector>

#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/domain/DomainRecords.h"
#include "platform/framework/Export.h"
#include "platform/framework/ProcessException.h"
#include "platform/util/RefImpl.h"

namespace NS_DOMAIN {

using TopoNodeHolder = NS_UTIL::REF_Impl<std::vector<TopoNode_T>>;
using NEIndexHolder = NS_UTIL::REF_Impl<std::vector<NEIndex>>;
using NEHolder = NS_UTIL::REF_Impl<std::vector<NE_T>>;
using ClockPositionHolder = NS_UTIL::REF_Impl<std::vector<ClockPositionInfo_T>>;
using ClockTopoLinkHolder = NS_UTIL::REF_Impl<std::vector<ClockTopoLinkInfo_T>>;
using IntHolder = NS_UTIL::REF_Impl<int>;

// Topology nodes and the clock topology.
class PLATFORM_API TopoData {
 public:
  virtual ~TopoData();

  // Appends every topology node, in the domain's order. No two nodes have the same id. The parents
  // must not form a cycle: the nodes of a cycle are below no subnetwork outside of the cycle.
  // May raise: ProcessException, CORBA exceptions. Must not raise anything else: ends the process.
  virtual void GetAllTopoNodes(TopoNodeHolder* nodes) = 0;

  // Appends the clock positions, in the domain's order. The module passes 10 in `kind`. `count` is
  // never null; the query need not set its value, because the module never reads it. May raise:
  // anything, see above.
  virtual void GetClockPositionList(const int& kind, ClockPositionHolder* positions,
                                    IntHolder* count) = 0;

  // Appends the clock links, in the domain's order. `kind` and `count` as for the positions. May
  // raise: anything, see above.
  virtual void GetClockTopoLinkList(const int& kind, ClockTopoLinkHolder* links,
                                    IntHolder* count) = 0;
};

// Network elements.
class PLATFORM_API NEData {
 public:
  virtual ~NEData();

  // Appends indexes of network elements. shown == false: all elements; shown == true: the elements
  // that the topology already shows as nodes.
  // May raise: ProcessException, CORBA exceptions. Must not raise anything else: ends the process.
  virtual void GetNEIndexList(NEIndexHolder* indexes, const bool& shown) = 0;

  // Appends the record of the element of each index, in the order of the indexes. Skips an index
  // without an element: an element may have been deleted since GetNEIndexList.
  // May raise: ProcessException, CORBA exceptions. Must not raise anything else: ends the process.
  virtual void GetNEList(NEHolder* elements, const std::vector<NEIndex>& indexes) = 0;
};

// The domain as seen by one client. The accessors are never null.
// May raise: ProcessException, CORBA exceptions. Must not raise anything else: ends the process.
class PLATFORM_API DomainFacet {
 public:
  virtual ~DomainFacet();
  virtual TopoData* GetTopoData() = 0;
  virtual NEData* GetNEData() = 0;
};

// Published under the name "DomainInterface".
class PLATFORM_API DomainInterface : public NS_BUNDLEMGR1::ServiceInterface {
 public:
  ~DomainInterface() override;

  // The facet of a client, never null. The module asks for the client "CORBA".
  // May raise: ProcessException, CORBA exceptions. Must not raise anything else: ends the process.
  virtual DomainFacet* GetFacet(const std::string& client) = 0;
};

}  // namespace NS_DOMAIN

#endif
