#include "agent/host/DomainService.h"

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"
#include "agent/northbound/PlatformFailure.h"

namespace agent {
namespace {

template <typename Record>
void fill(NS_UTIL::REF_Impl<std::vector<Record>>& holder, NS_DOMAIN::IntHolder* count,
          std::vector<Record> records) {
  holder.Value() = std::move(records);
  if (count != nullptr) {
    count->Value() = static_cast<int>(holder.Value().size());
  }
}

}  // namespace

NS_DOMAIN::DomainFacet* DomainService::GetFacet(const std::string& client) {
  if (client != "CORBA") {
    throwPlatformFailure(kEntityNotFound,
                         "the domain has no facet for the client " + inQuotes(client));
  }
  return this;
}

void DomainService::GetAllTopoNodes(NS_DOMAIN::TopoNodeHolder* nodes) {
  model_.appendTopoNodes(nodes->Value());
}

void DomainService::GetClockPositionList(const int&, NS_DOMAIN::ClockPositionHolder* positions,
                                         NS_DOMAIN::IntHolder* count) {
  fill(*positions, count, model_.clockPositions());
}

void DomainService::GetClockTopoLinkList(const int&, NS_DOMAIN::ClockTopoLinkHolder* links,
                                         NS_DOMAIN::IntHolder* count) {
  fill(*links, count, model_.clockLinks());
}

void DomainService::GetNEIndexList(NS_DOMAIN::NEIndexHolder* indexes, const bool& shown) {
  model_.appendNEIndexes(indexes->Value(), shown);
}

void DomainService::GetNEList(NS_DOMAIN::NEHolder* elements,
                              const std::vector<NS_DOMAIN::NEIndex>& indexes) {
  model_.appendNEs(elements->Value(), indexes);
}

}  // namespace agent
