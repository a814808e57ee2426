#include "agent/host/DomainService.h"

#include <iterator>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"
#include "host_defaults/PlatformFailure.h"

namespace agent {
namespace {

// Appends the records to the holder, and stores their number unless count is null.
template <typename Record>
void append(NS_UTIL::REF_Impl<std::vector<Record>>& holder, NS_DOMAIN::IntHolder* count,
            std::vector<Record> records) {
  if (count != nullptr) {
    count->Value() = static_cast<int>(records.size());
  }
  std::vector<Record>& all = holder.Value();
  if (all.empty()) {
    all = std::move(records);
  } else {
    all.insert(all.end(), std::make_move_iterator(records.begin()),
               std::make_move_iterator(records.end()));
  }
}

}  // namespace

NS_DOMAIN::DomainFacet* DomainService::GetFacet(const std::string& client) {
  if (client != "CORBA") {
    host_defaults::throwPlatformFailure(
        kEntityNotFound, "the domain has no facet for the client " + inQuotes(client));
  }
  return this;
}

void DomainService::GetAllTopoNodes(NS_DOMAIN::TopoNodeHolder* nodes) {
  model_.appendTopoNodes(nodes->Value());
}

void DomainService::GetClockPositionList(const int&, NS_DOMAIN::ClockPositionHolder* positions,
                                         NS_DOMAIN::IntHolder* count) {
  append(*positions, count, model_.clockPositions());
}

void DomainService::GetClockTopoLinkList(const int&, NS_DOMAIN::ClockTopoLinkHolder* links,
                                         NS_DOMAIN::IntHolder* count) {
  append(*links, count, model_.clockLinks());
}

void DomainService::GetNEIndexList(NS_DOMAIN::NEIndexHolder* indexes, const bool& shown) {
  model_.appendNEIndexes(indexes->Value(), shown);
}

void DomainService::GetNEList(NS_DOMAIN::NEHolder* elements,
                              const std::vector<NS_DOMAIN::NEIndex>& indexes) {
  model_.appendNEs(elements->Value(), indexes);
}

}  // namespace agent
