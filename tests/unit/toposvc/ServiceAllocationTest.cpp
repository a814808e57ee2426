// The service object when memory is short, and leaks of init.

#include <new>
#include <optional>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/FailingNew.h"
#include "tests/fakes/Fixture.h"
#include "topoevent/TopoEventMgr.h"
#include "toposvc/TopoService.h"

namespace {

using fakes::Journal;

class TopoServiceAllocation : public fakes::PlatformFixture {
 protected:
  ~TopoServiceAllocation() override {
    fakes::resetJournal();
    service_.fini();
  }

  int init() { return service_.init(0, nullptr); }

  // Removes the registrations of an earlier init from the fake agent.
  void clear() {
    fakes::resetJournal();
    service_.fini();
    fakes::resetAgent();
    fakes::resetJournal();
  }

  // The number of blocks that an init with its fini leaks.
  template <typename Prepare>
  long blocksLeft(const Prepare& prepare) {
    const long before = fakes::liveBlocks();
    prepare();
    try {
      init();
    } catch (ProcessException&) {
      EXPECT_TRUE(fakes::agent().testSwitch);
    }
    clear();
    return fakes::liveBlocks() - before;
  }

  zu_corba_topo service_;
};

TEST_F(TopoServiceAllocation, PassesFailuresOfTheSubscription) {
  for (const int spared : {0, 1}) {  // the handler; the instance of the event manager
    clear();
    std::optional<fakes::FailingNew> failing;
    fakes::onCall("RegisterServant", 1, [&]() -> CORBA::ULong {
      failing.emplace(spared);
      return 0;
    });
    EXPECT_THROW(init(), std::bad_alloc) << spared;
    failing.reset();
    EXPECT_EQ(fakes::FailingNew::failures(), 1) << spared;
    EXPECT_EQ(Journal::count("Subscribe"), 0) << spared;
  }
}

TEST_F(TopoServiceAllocation, ReleasesTheNodesThatItReadsInTestMode) {
  fakes::network().nodes = {fakes::element("NE=5", "a label longer than a string holds in place"),
                            fakes::element("NE=6")};
  const auto outsideTestMode = [] {};
  const auto inTestMode = [] { fakes::agent().testSwitch = true; };
  const auto failing = [] {
    fakes::agent().testSwitch = true;
    fakes::onCall("GetAllTopoNodes late", 1, fakes::raiseProcessException(7));
  };
  for (int warmUp = 0; warmUp < 20; ++warmUp) {
    blocksLeft(inTestMode);
  }
  const long usual = blocksLeft(outsideTestMode);
  EXPECT_EQ(blocksLeft(inTestMode), usual);
  EXPECT_EQ(blocksLeft(failing), usual);
}

}  // namespace
