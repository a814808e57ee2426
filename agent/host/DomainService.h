// The domain data of the platform, read from the network model. Published as "DomainInterface".

#ifndef AGENT_HOST_DOMAINSERVICE_H
#define AGENT_HOST_DOMAINSERVICE_H

#include <string>
#include <vector>

#include "agent/model/NetworkModel.h"
#include "platform/domain/DomainInterface.h"

namespace agent {

// Thread-safety: any thread; no state of its own. Ownership: borrows the model, which outlives this
// object. Errors: ProcessException.
class DomainService final : public NS_DOMAIN::DomainInterface,
                            private NS_DOMAIN::DomainFacet,
                            private NS_DOMAIN::TopoData,
                            private NS_DOMAIN::NEData {
 public:
  explicit DomainService(const NetworkModel& model) : model_(model) {}

  // The one facet, for the client "CORBA". Throws ProcessException (kEntityNotFound) for another
  // client.
  NS_DOMAIN::DomainFacet* GetFacet(const std::string& client) override;

 private:
  NS_DOMAIN::TopoData* GetTopoData() override { return this; }
  NS_DOMAIN::NEData* GetNEData() override { return this; }

  // A count gets the length of the list and may be null.
  void GetAllTopoNodes(NS_DOMAIN::TopoNodeHolder* nodes) override;
  void GetClockPositionList(const int& kind, NS_DOMAIN::ClockPositionHolder* positions,
                            NS_DOMAIN::IntHolder* count) override;
  void GetClockTopoLinkList(const int& kind, NS_DOMAIN::ClockTopoLinkHolder* links,
                            NS_DOMAIN::IntHolder* count) override;

  void GetNEIndexList(NS_DOMAIN::NEIndexHolder* indexes, const bool& shown) override;
  void GetNEList(NS_DOMAIN::NEHolder* elements,
                 const std::vector<NS_DOMAIN::NEIndex>& indexes) override;

  const NetworkModel& model_;
};

}  // namespace agent

#endif
