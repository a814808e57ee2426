#include <functional>
#include <string>

#include "tests/fakes/FailingNew.h"
#include "tests/fakes/OrbFixture.h"
#include "topoevent/CorbaTopoEventHandler.h"
#include "topoevent/NodeLabelCache.h"
#include "topoevent/TopoEventMgr.h"

namespace {

using fakes::FailingNew;

constexpr std::size_t kLarge = 10000;  // bytes; larger than every other block of these tests

TEST(TopoNodeLabelCacheAllocation, KeepsBothListsEquallyLongAfterAnyFailedAllocation) {
  const std::string identifier(100, 'i');
  const std::string label(100, 'l');
  topo::NodeLabelCache cache;
  cache.append("first", "1");
  bool failed = true;
  int failures = 0;
  for (int spared = 0; failed; ++spared) {
    failed = false;
    try {
      const FailingNew failing(spared);
      cache.append(identifier, label);
    } catch (const std::bad_alloc&) {
      failed = true;
      ++failures;
    }
    ASSERT_EQ(cache.identifiers().size(), failed ? 1U : 2U);
    ASSERT_EQ(cache.labels().size(), cache.identifiers().size());
    // A failed append must not leave an index entry.
    ASSERT_TRUE(cache.storeChange(failed ? identifier : "other", label));
  }
  EXPECT_GE(failures, 3);  // the two texts and the index entry
  EXPECT_FALSE(cache.storeChange(identifier, label));
}

class TopoEventAllocation : public fakes::OrbFixture {
 protected:
  ~TopoEventAllocation() override { TopoEventMgr::CleanUp(); }

  int handle(int event) { return handler_.HandleEvent(event, 0, event_); }

  TEEvent event_;
  NS_CORBA::CorbaTopoEventHandler handler_;
};

TEST_F(TopoEventAllocation, LeaksNothingWhenANotificationCallThrows) {
  event_.nodes = {fakes::subnetwork("a topology node with a long id", "1"),
                  fakes::subnetwork("b", "2")};
  event_.nodes[0].parentId = "p";
  event_.nodes[0].parentType = NS_DOMAIN::kTopoSubnetwork;
  const std::pair<int, const char*> senders[] = {
      {372, "OnObjectCreated"}, {373, "OnObjectDeleted"}, {374, "OnObjectAVC"}};
  for (int run = 0; run < 2; ++run) {  // the first run makes objects of first use
    for (const auto& [event, sender] : senders) {
      for (const int nth : {1, 2, 3}) {
        for (const fakes::Step& step :
             {fakes::raiseProcessException(7), fakes::raiseRuntimeError("broken"),
              fakes::raiseTransient(), fakes::raiseBadAlloc()}) {
          fakes::resetAgent();
          fakes::resetJournal();
          const long before = fakes::liveBlocks();
          fakes::onCall(sender, nth, step);
          handle(event);
          fakes::resetAgent();
          fakes::resetJournal();
          EXPECT_TRUE(run == 0 || fakes::liveBlocks() == before) << sender << " " << nth;
        }
      }
    }
  }
}

TEST_F(TopoEventAllocation, LogsThatThereIsNoMemoryForALabel) {
  event_.nodes = {fakes::subnetwork("a", std::string(kLarge, 'l'))};
  for (int spared = 0; spared < 2; ++spared) {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::agent().testSwitch = true;
    {
      const FailingNew failing(spared, kLarge);
      EXPECT_EQ(handle(374), 0);
      EXPECT_EQ(FailingNew::failures(), 1);
    }
    EXPECT_EQ(fakes::Journal::linesOf({"TaDebugWithPara"}),
              std::vector<std::string>{"TaDebugWithPara(1, \"Unknown exception! (eventid = "
                                       "374)!\") at topoeventhandler:70 unknown"});
    EXPECT_TRUE(fakes::notificationsSent().empty());
  }
}

}  // namespace
