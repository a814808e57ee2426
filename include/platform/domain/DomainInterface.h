// The platform's domain data: topology, network elements, clock topology.
//
// Thread-safety: every call may come from several threads at once. Accessors and facets are owned
// by the platform and stay valid while the interface is published; nobody frees them.
//
// Failures: every call may raise ProcessException. A result holder may then be partly filled; what
// it holds is kept by the caller.
//
// The host defines the destructors (key functions, see framework/ProcessException.h).

#ifndef PLATFORM_DOMAIN_DOMAININTERFACE_H
#define PLATFORM_DOMAIN_DOMAININTERFACE_H

#include <string>
#include <vector>

#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/domain/DomainRecords.h"
#include "platform/framework/Export.h"
#include "platform/util/RefImpl.h"

namespace NS_DOMAIN {

using TopoNodeHolder = NS_UTIL::REF_Impl<std::vector<TopoNode_T>>;
using NEIndexHolder = NS_UTIL::REF_Impl<std::vector<NEIndex>>;
using NEHolder = NS_UTIL::REF_Impl<std::vector<NE_T>>;
using ClockPositionHolder = NS_UTIL::REF_Impl<std::vector<ClockPositionInfo_T>>;
using ClockTopoLinkHolder = NS_UTIL::REF_Impl<std::vector<ClockTopoLinkInfo_T>>;
using IntHolder = NS_UTIL::REF_Impl<int>;

// Holders are lent to a query for the time of the call; a query that keeps one adds a reference.
class PLATFORM_API TopoData {
 public:
  virtual ~TopoData();

  // Appends every topology node, in the domain's order.
  virtual void GetAllTopoNodes(TopoNodeHolder* nodes) = 0;

  // Fills the clock positions, in the domain's order. kind is always 10; the integer holder is the
  // platform's to fill and is never read.
  virtual void GetClockPositionList(const int& kind, ClockPositionHolder* positions,
                                    IntHolder* count) = 0;

  // Fills the clock links, in the domain's order. Arguments as for the positions.
  virtual void GetClockTopoLinkList(const int& kind, ClockTopoLinkHolder* links,
                                    IntHolder* count) = 0;
};

class PLATFORM_API NEData {
 public:
  virtual ~NEData();

  // Appends element indexes: all of them for false; for true those that the topology already shows.
  virtual void GetNEIndexList(NEIndexHolder* indexes, const bool& shown) = 0;

  // Appends one record per index.
  virtual void GetNEList(NEHolder* elements, const std::vector<NEIndex>& indexes) = 0;
};

// One client's view of the domain.
class PLATFORM_API DomainFacet {
 public:
  virtual ~DomainFacet();
  virtual TopoData* GetTopoData() = 0;
  virtual NEData* GetNEData() = 0;
};

// Published as "DomainInterface".
class PLATFORM_API DomainInterface : public NS_BUNDLEMGR1::ServiceInterface {
 public:
  ~DomainInterface() override;

  // The facet of a client; the module asks for "CORBA". Never null.
  virtual DomainFacet* GetFacet(const std::string& client) = 0;
};

}  // namespace NS_DOMAIN

#endif
