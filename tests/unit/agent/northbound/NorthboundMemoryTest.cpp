// The northbound side while memory is short, and while no view runs.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <optional>
#include <string>

#include "agent/base/Log.h"
#include "agent/northbound/IdleTrim.h"
#include "agent/northbound/Northbound.h"
#include "orb/idl/TopoManagementManager.h"
#include "tests/fakes/FailingNew.h"
#include "tests/unit/orb/RawClient.h"

namespace {

// An iterator whose destructor makes later allocations of the calling thread fail.
class FailingIterator final : public virtual POA_TopoManagementManager::NodeIterator_I {
 public:
  explicit FailingIterator(std::promise<void>& destroyed) : destroyed_(destroyed) {}

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out) override {
    throw CORBA::NO_IMPLEMENT();
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}

 protected:
  ~FailingIterator() override {
    thread_local std::optional<fakes::FailingNew> failing;
    failing.emplace(0);
    destroyed_.set_value();
  }

 private:
  std::promise<void>& destroyed_;
};

// The housekeeper thread reclaims the iterator and then logs a line without memory.
void reclaimWithoutMemory() {
  agent::setLogLevel(agent::kLogEvents);
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  std::promise<void> destroyed;
  {
    agent::IteratorLimits limits;
    limits.idleTimeout = std::chrono::milliseconds(1);
    agent::Northbound northbound(*server, "EMS", false, limits);
    northbound.open();
    northbound.iterators().add(new FailingIterator(destroyed), 0);
    destroyed.get_future().wait();
    northbound.retire();
  }
  std::_Exit(0);
}

TEST(NorthboundDeathTest, ContinuesToReclaimIteratorsWhenMemoryIsShort) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(reclaimWithoutMemory(), testing::ExitedWithCode(0), "");
}

TEST(IdleNorthbound, ReturnsFreedMemory) {
  std::promise<void> returned;
  agent::ViewSetup setup;
  setup.returnFreedMemory = [&returned] { returned.set_value(); };
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const agent::Northbound northbound(*server, "EMS", false, {}, setup);
  EXPECT_EQ(std::future_status::ready, returned.get_future().wait_for(std::chrono::seconds(20)));
}

TEST(IdleNorthbound, KeepsFreedMemoryWhileAClientIsConnected) {
  std::promise<void> returned;
  agent::ViewSetup setup;
  setup.returnFreedMemory = [&returned] { returned.set_value(); };
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
  manager->activate();
  std::optional<orb_tests::RawClient> client(server->endpoint());
  ASSERT_TRUE(client->send(orb_tests::requestTo("Key", "getLength").bytes()));
  ASSERT_TRUE(client->answer());
  const agent::Northbound northbound(*server, "EMS", false, {}, setup);
  const std::future<void> end = returned.get_future();
  EXPECT_EQ(std::future_status::timeout, end.wait_for(2 * agent::IdleTrim::kPauseWithoutClients));
  client.reset();
  EXPECT_EQ(std::future_status::ready, end.wait_for(std::chrono::seconds(20)));
}

}  // namespace
