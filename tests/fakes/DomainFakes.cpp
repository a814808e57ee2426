#include "tests/fakes/Domain.h"
#include "tests/fakes/Journal.h"

namespace NS_DOMAIN {

TopoData::~TopoData() = default;
NEData::~NEData() = default;
DomainFacet::~DomainFacet() = default;
DomainInterface::~DomainInterface() = default;

}  // namespace NS_DOMAIN

namespace fakes {
namespace {

using namespace NS_DOMAIN;

Network& held = *new Network;

std::string printed(const std::vector<NEIndex>& indexes) {
  std::string text = "[";
  for (const NEIndex& each : indexes) {
    text += (text.size() == 1 ? "" : ", ") + std::to_string(each.first) + ":" +
            std::to_string(each.number);
  }
  return text + "]";
}

template <typename Record>
void append(NS_UTIL::REF_Impl<std::vector<Record>>* holder, const std::vector<Record>& records) {
  holder->Value().insert(holder->Value().end(), records.begin(), records.end());
}

std::vector<NE_T> elementRecords(const std::vector<NEIndex>& wanted) {
  std::vector<NE_T> result;
  for (const NEIndex& each : wanted) {
    result.push_back(elementRecord(each));
  }
  return result;
}

class FakeTopoData final : public TopoData {
 public:
  void GetAllTopoNodes(TopoNodeHolder* nodes) override {
    fakes::called("GetAllTopoNodes", "");
    append(nodes, held.nodes);
    calledSilently("GetAllTopoNodes late");
  }

  void GetClockPositionList(const int& kind, ClockPositionHolder* positions,
                            IntHolder* count) override {
    fakes::called("GetClockPositionList", std::to_string(kind));
    append(positions, held.clockPositions);
    count->Value() = static_cast<int>(held.clockPositions.size());
    calledSilently("GetClockPositionList late");
  }

  void GetClockTopoLinkList(const int& kind, ClockTopoLinkHolder* links,
                            IntHolder* count) override {
    fakes::called("GetClockTopoLinkList", std::to_string(kind));
    append(links, held.clockLinks);
    count->Value() = static_cast<int>(held.clockLinks.size());
    calledSilently("GetClockTopoLinkList late");
  }
};

class FakeNEData final : public NEData {
 public:
  void GetNEIndexList(NEIndexHolder* result, const bool& shown) override {
    fakes::called("GetNEIndexList", fakes::printed(shown));
    append(result, shown ? held.shownIndexes : held.indexes);
    calledSilently("GetNEIndexList late");
  }

  void GetNEList(NEHolder* elements, const std::vector<NEIndex>& wanted) override {
    fakes::called("GetNEList", printed(wanted));
    append(elements, held.elements ? *held.elements : elementRecords(wanted));
    calledSilently("GetNEList late");
  }
};

class FakeFacet final : public DomainFacet {
 public:
  TopoData* GetTopoData() override {
    fakes::called("GetTopoData", "");
    return &topoData_;
  }

  NEData* GetNEData() override {
    fakes::called("GetNEData", "");
    return &neData_;
  }

 private:
  FakeTopoData topoData_;
  FakeNEData neData_;
};

class FakeDomain final : public DomainInterface {
 public:
  DomainFacet* GetFacet(const std::string& client) override {
    fakes::called("GetFacet", quoted(client));
    return &domainFacet();
  }
};

}  // namespace

Network& network() {
  return held;
}

NEIndex index(std::int32_t number, std::int32_t first) {
  NEIndex result;
  result.first = first;
  result.number = number;
  return result;
}

NE_T elementRecord(const NEIndex& of) {
  NE_T result;
  result.first = of.first;
  result.number = of.number;
  result.texts.fill("carried");
  result.name = "NE-" + std::to_string(of.number);
  return result;
}

std::vector<NEIndex> indexes(const std::vector<std::int32_t>& numbers) {
  std::vector<NEIndex> result;
  for (const std::int32_t number : numbers) {
    result.push_back(index(number));
  }
  return result;
}

TopoNode_T subnetwork(const std::string& id, const std::string& label) {
  TopoNode_T node;
  node.nodeId = id;
  node.nativeName = label;
  node.nodeType = kTopoSubnetwork;
  return node;
}

TopoNode_T element(const std::string& fdn, const std::string& label) {
  TopoNode_T node;
  node.nodeId = fdn;
  node.nativeName = label;
  node.nodeType = kTopoElement;
  return node;
}

DomainInterface& domainInterface() {
  static DomainInterface& domain = *makeDomainInterface();
  return domain;
}

DomainInterface* makeDomainInterface() {
  return new FakeDomain;
}

DomainFacet& domainFacet() {
  static FakeFacet facet;
  return facet;
}

void resetDomain() {
  held = Network();
}

}  // namespace fakes
