// The northbound side without memory.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <optional>
#include <string>

#include "agent/base/Log.h"
#include "agent/northbound/Northbound.h"
#include "orb/idl/TopoManagementManager.h"
#include "tests/fakes/FailingNew.h"

namespace {

// Takes the memory of the thread that drops its last reference.
class TakesMemory final : public virtual POA_TopoManagementManager::NodeIterator_I {
 public:
  explicit TakesMemory(std::promise<void>& gone) : gone_(gone) {}

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out) override {
    throw CORBA::NO_IMPLEMENT();
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}

 protected:
  ~TakesMemory() override {
    thread_local std::optional<fakes::FailingNew> failing;
    failing.emplace(0);
    gone_.set_value();
  }

 private:
  std::promise<void>& gone_;
};

// The thread that reclaims iterators logs what it has done.
void reclaimWithoutMemory() {
  agent::setLogLevel(agent::kLogEvents);
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  std::promise<void> gone;
  {
    agent::IteratorLimits limits;
    limits.idleTimeout = std::chrono::milliseconds(1);
    agent::Northbound northbound(*server, "EMS", false, limits);
    northbound.open();
    northbound.iterators().add(new TakesMemory(gone), 0);
    gone.get_future().wait();
    northbound.retire();
  }
  std::_Exit(0);
}

TEST(NorthboundDeathTest, GoesOnReclaimingIteratorsWhenMemoryIsShort) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(reclaimWithoutMemory(), testing::ExitedWithCode(0), "");
}

}  // namespace
