#include "agent/host/DomainService.h"

#include <gtest/gtest.h>

#include "agent/base/FailureCodes.h"
#include "platform/framework/ProcessException.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

// A holder of a query's result, released at the end of the scope.
template <typename Holder>
class Scoped {
 public:
  Scoped() : holder_(new Holder) {}  // holders destroy themselves
  ~Scoped() { holder_->Release(); }
  Scoped(const Scoped&) = delete;
  Scoped& operator=(const Scoped&) = delete;

  Holder* get() const { return holder_; }
  auto& value() const { return holder_->Value(); }

 private:
  Holder* const holder_;
};

class DomainServiceTest : public testing::Test {
 protected:
  NS_DOMAIN::TopoData& topoData() { return *service_.GetFacet("CORBA")->GetTopoData(); }
  NS_DOMAIN::NEData& neData() { return *service_.GetFacet("CORBA")->GetNEData(); }

  const agent::NetworkModel model_{sampleNetwork()};
  agent::DomainService service_{model_};
};

TEST_F(DomainServiceTest, HasAFacetForCorba) {
  ASSERT_NE(nullptr, service_.GetFacet("CORBA"));
  EXPECT_EQ(service_.GetFacet("CORBA"), service_.GetFacet("CORBA"));
}

TEST_F(DomainServiceTest, RaisesAFailureForAnyOtherClient) {
  for (const char* client : {"", "corba", "SNMP"}) {
    try {
      service_.GetFacet(client);
      ADD_FAILURE() << "a facet for " << client;
    } catch (const ProcessException& failure) {
      EXPECT_EQ(static_cast<std::int32_t>(agent::kEntityNotFound), failure.errorCode);
      EXPECT_EQ("the domain has no facet for the client \"" + std::string(client) + '"',
                failure.detail.str());
    }
  }
}

TEST_F(DomainServiceTest, AppendsEveryTopologyNode) {
  const Scoped<NS_DOMAIN::TopoNodeHolder> nodes;
  topoData().GetAllTopoNodes(nodes.get());
  topoData().GetAllTopoNodes(nodes.get());
  ASSERT_EQ(8U, nodes.value().size());
  EXPECT_EQ("root", nodes.value()[4].nodeId);
}

TEST_F(DomainServiceTest, AppendsTheClockPositionsAndStoresTheirNumber) {
  const Scoped<NS_DOMAIN::ClockPositionHolder> positions;
  const Scoped<NS_DOMAIN::IntHolder> count;
  topoData().GetClockPositionList(10, positions.get(), count.get());
  topoData().GetClockPositionList(10, positions.get(), nullptr);
  ASSERT_EQ(4U, positions.value().size());
  EXPECT_EQ(2, count.value());
  EXPECT_EQ("seven", positions.value()[0].label);
  EXPECT_EQ(-1, positions.value()[0].value1);
  EXPECT_EQ(2, positions.value()[0].value2);
}

TEST_F(DomainServiceTest, AppendsTheClockLinksAndStoresTheirNumber) {
  const Scoped<NS_DOMAIN::ClockTopoLinkHolder> links;
  const Scoped<NS_DOMAIN::IntHolder> count;
  topoData().GetClockTopoLinkList(10, links.get(), count.get());
  topoData().GetClockTopoLinkList(10, links.get(), count.get());
  ASSERT_EQ(4U, links.value().size());
  EXPECT_EQ(2, count.value());
  EXPECT_EQ("NE=6", links.value()[0].zEndReference);
}

TEST_F(DomainServiceTest, AppendsElementIndexesAndRecords) {
  const Scoped<NS_DOMAIN::NEIndexHolder> all;
  const Scoped<NS_DOMAIN::NEIndexHolder> shown;
  const Scoped<NS_DOMAIN::NEHolder> elements;
  neData().GetNEIndexList(all.get(), false);
  neData().GetNEIndexList(shown.get(), true);
  neData().GetNEList(elements.get(), shown.value());
  EXPECT_EQ(3U, all.value().size());
  ASSERT_EQ(2U, elements.value().size());
  EXPECT_EQ(-5, elements.value()[0].number);
  EXPECT_EQ("six", elements.value()[1].name);
}

}  // namespace
