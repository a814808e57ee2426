// Registration, limits and reclaim of iterators, with an injected clock.

#include "agent/northbound/IteratorRegistry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "orb/idl/TopoManagementManager.h"

namespace {

using agent::IteratorLimits;
using agent::IteratorRegistry;
using std::chrono::milliseconds;
using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeIterator_I_var;

// An iterator servant that counts its instances.
class CountedServant : public virtual POA_TopoManagementManager::NodeIterator_I {
 public:
  explicit CountedServant(IteratorRegistry& registry) : registry_(registry) { ++live; }

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out list) override {
    list = new TopoManagementManager::NodeList_T;
    return true;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}
  PortableServer::POA_ptr _default_POA() override { return registry_.poa(); }

  static std::atomic<int> live;

 protected:
  ~CountedServant() override { --live; }

 private:
  IteratorRegistry& registry_;
};

std::atomic<int> CountedServant::live{0};

class IteratorHousekeeping : public testing::Test {
 protected:
  static void SetUpTestSuite() { server_ = orb::startServer({}, {"127.0.0.1", 0}, nullptr); }
  static void TearDownTestSuite() { server_.reset(); }

  IteratorHousekeeping() { registry_.open(); }
  ~IteratorHousekeeping() override {
    registry_.retire();
    EXPECT_EQ(0, CountedServant::live);
  }

  // A new servant; the caller owns the creation reference.
  CountedServant* servant() { return new CountedServant(registry_); }

  CountedServant* added(std::size_t bytes = 0) {
    CountedServant* made = servant();
    EXPECT_EQ(agent::kSuccess, registry_.add(made, bytes));
    return made;
  }

  // The failure code for a servant of so many bytes.
  agent::FailureCode refusal(std::size_t bytes) {
    CountedServant* made = servant();
    const agent::FailureCode code = registry_.add(made, bytes);
    EXPECT_EQ(1U, made->_refcount_value());
    made->_remove_ref();
    return code;
  }

  // The reference of a new servant, and its object key.
  NodeIterator_I_var active(orb::ObjectKey& key) {
    NodeIterator_I_var reference = added()->_this();
    key = orb::objectKeyOf(reference);
    return reference;
  }

  static bool exists(NodeIterator_I::_ptr_type reference) {
    try {
      reference->getLength();
      return true;
    } catch (const CORBA::OBJECT_NOT_EXIST&) {
      return false;
    }
  }

  static constexpr std::size_t kMemory = 1000;  // the limit in bytes

  static std::unique_ptr<orb::Server> server_;
  IteratorRegistry::TimePoint now_{};
  IteratorRegistry registry_{server_->rootPoa(), IteratorLimits{milliseconds(1000), 3, kMemory},
                             [this] { return now_; }};
};

std::unique_ptr<orb::Server> IteratorHousekeeping::server_;

TEST_F(IteratorHousekeeping, ReclaimsAnIteratorAfterTheIdleTimeout) {
  orb::ObjectKey key;
  const NodeIterator_I_var iterator = active(key);
  now_ += milliseconds(999);
  EXPECT_EQ(0U, registry_.reclaimIdle());
  EXPECT_TRUE(exists(iterator));
  now_ += milliseconds(1);
  EXPECT_EQ(1U, registry_.reclaimIdle());
  EXPECT_FALSE(exists(iterator));
  EXPECT_EQ(0U, registry_.size());
  EXPECT_EQ(0, CountedServant::live);
}

TEST_F(IteratorHousekeeping, CountsTheIdleTimeFromTheLastRequest) {
  orb::ObjectKey key;
  const NodeIterator_I_var iterator = active(key);
  now_ += milliseconds(900);
  registry_.touch(key);
  now_ += milliseconds(900);
  EXPECT_EQ(0U, registry_.reclaimIdle());
  now_ += milliseconds(100);
  EXPECT_EQ(1U, registry_.reclaimIdle());
}

TEST_F(IteratorHousekeeping, ReclaimsOnlyIdleIterators) {
  orb::ObjectKey idleKey;
  orb::ObjectKey usedKey;
  const NodeIterator_I_var idle = active(idleKey);
  const NodeIterator_I_var used = active(usedKey);
  now_ += milliseconds(1000);
  registry_.touch(usedKey);
  EXPECT_EQ(1U, registry_.reclaimIdle());
  EXPECT_FALSE(exists(idle));
  EXPECT_TRUE(exists(used));
}

TEST_F(IteratorHousekeeping, IgnoresRequestsForOtherObjects) {
  orb::ObjectKey key;
  const NodeIterator_I_var iterator = active(key);
  now_ += milliseconds(1000);
  registry_.touch("TopoManagement");
  EXPECT_EQ(1U, registry_.reclaimIdle());
}

TEST_F(IteratorHousekeeping, IgnoresRequestsForRemovedIterators) {
  CountedServant* const made = added();
  const NodeIterator_I_var first = made->_this();
  const orb::ObjectKey deactivated = orb::objectKeyOf(first);
  EXPECT_TRUE(registry_.deactivate(made));
  EXPECT_NO_THROW(registry_.touch(deactivated));
  orb::ObjectKey retired;
  const NodeIterator_I_var second = active(retired);
  registry_.retire();
  EXPECT_NO_THROW(registry_.touch(retired));
}

TEST_F(IteratorHousekeeping, RefusesIteratorsOverTheLimitInNumber) {
  CountedServant* first = added();
  added();
  added();
  CountedServant* refused = servant();
  EXPECT_EQ(agent::kTooManyIterators, registry_.add(refused, 0));
  EXPECT_EQ(1U, refused->_refcount_value());
  EXPECT_EQ(3U, registry_.size());
  registry_.deactivate(first);
  EXPECT_EQ(agent::kSuccess, registry_.add(refused, 0));
}

TEST_F(IteratorHousekeeping, RefusesIteratorsOverTheLimitInBytes) {
  CountedServant* first = added(600);
  added(400);
  EXPECT_EQ(1000U, registry_.bytes());
  EXPECT_EQ(agent::kTooManyIterators, refusal(1));
  registry_.deactivate(first);
  EXPECT_EQ(400U, registry_.bytes());
  EXPECT_EQ(agent::kTooManyIterators, refusal(601));
  added(600);
}

TEST_F(IteratorHousekeeping, RefusesAnIteratorLargerThanTheLimitInBytes) {
  EXPECT_EQ(agent::kTooMuch, refusal(1001));
  added(1000);
}

TEST_F(IteratorHousekeeping, ReclaimsIdleIteratorsAtTheLimitInBytes) {
  added(1000);
  now_ += milliseconds(1000);
  added(1000);
  EXPECT_EQ(1U, registry_.size());
}

TEST_F(IteratorHousekeeping, HasNoBytesAfterRetire) {
  added(1000);
  registry_.retire();
  EXPECT_EQ(0U, registry_.bytes());
  registry_.open();
  added(1000);
}

TEST_F(IteratorHousekeeping, ReleasesThePlaceOfAServantThatCannotBeActivated) {
  CountedServant* servant = this->servant();
  const PortableServer::POA_var poa = registry_.poa();
  const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId("elsewhere");
  poa->activate_object_with_id(id.in(), servant);
  EXPECT_EQ(agent::kInternalError, registry_.add(servant, 1000));
  EXPECT_EQ(0U, registry_.size());
  EXPECT_EQ(0U, registry_.bytes());
  poa->deactivate_object(id.in());
  EXPECT_EQ(agent::kSuccess, registry_.add(servant, 1000));
}

// --- Object ids.

TEST_F(IteratorHousekeeping, AssignsRandomIdsOf128Bits) {
  const PortableServer::POA_var poa = registry_.poa();
  std::set<std::string> ids;
  for (int i = 0; i < 3; ++i) {
    const PortableServer::ObjectId_var id = poa->servant_to_id(added());
    EXPECT_EQ(16U, id.in().length());
    ids.insert({id.in().get_buffer(), id.in().get_buffer() + id.in().length()});
  }
  EXPECT_EQ(3U, ids.size());
}

TEST_F(IteratorHousekeeping, DoesNotActivateServantsImplicitly) {
  const PortableServer::ServantBase_var unknown = servant();
  const PortableServer::POA_var poa = registry_.poa();
  EXPECT_THROW(poa->servant_to_id(unknown.in()), CORBA::UserException);
}

// --- Creation: between the registration of a servant and the reply with its reference.

TEST_F(IteratorHousekeeping, DoesNotReclaimAnIteratorDuringItsCreation) {
  IteratorRegistry::Creation creation(registry_);
  CountedServant* made = added();
  now_ += milliseconds(1000);
  EXPECT_EQ(0U, registry_.reclaimIdle());
  const NodeIterator_I_var reference = made->_this();
  EXPECT_TRUE(exists(reference));
}

TEST_F(IteratorHousekeeping, CountsTheIdleTimeFromTheEndOfTheCreation) {
  {
    IteratorRegistry::Creation creation(registry_);
    added();
    now_ += milliseconds(1000);
  }
  now_ += milliseconds(999);
  EXPECT_EQ(0U, registry_.reclaimIdle());
  now_ += milliseconds(1);
  EXPECT_EQ(1U, registry_.reclaimIdle());
}

TEST_F(IteratorHousekeeping, ReclaimsIteratorsThatOtherThreadsAddedDuringACreation) {
  IteratorRegistry::Creation creation(registry_);
  std::thread other([this] { added(); });
  other.join();
  now_ += milliseconds(1000);
  EXPECT_EQ(1U, registry_.reclaimIdle());
}

TEST_F(IteratorHousekeeping, EndsACreationAfterTheDeactivationOfItsIterator) {
  {
    IteratorRegistry::Creation creation(registry_);
    registry_.deactivate(added());
  }
  EXPECT_EQ(0U, registry_.size());
}

// The clock is read before the place is reserved and after the activation.
TEST(IteratorActivation, BeginsTheIdleTime) {
  const std::unique_ptr<orb::Server> server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  IteratorRegistry::TimePoint now{};
  IteratorRegistry registry(server->rootPoa(), IteratorLimits{milliseconds(1000), 3, 1000}, [&] {
    now += milliseconds(600);
    return now;
  });
  registry.open();
  ASSERT_EQ(agent::kSuccess, registry.add(new CountedServant(registry), 0));
  EXPECT_EQ(0U, registry.reclaimIdle());
}

TEST(IteratorActivation, IsNotInterruptedByAReclaim) {
  const std::unique_ptr<orb::Server> server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  IteratorRegistry::TimePoint now{};
  std::function<void()> onClock;
  IteratorRegistry registry(server->rootPoa(), IteratorLimits{milliseconds(1000), 3, 1000}, [&] {
    if (onClock) {
      std::exchange(onClock, nullptr)();
    }
    return now;
  });
  registry.open();
  std::size_t reclaimed = 0;
  onClock = [&] {
    onClock = [&] {
      now += milliseconds(1000);
      reclaimed = registry.reclaimIdle();
    };
  };
  ASSERT_EQ(agent::kSuccess, registry.add(new CountedServant(registry), 0));
  EXPECT_EQ(0U, reclaimed);
  EXPECT_EQ(1U, registry.size());
}

TEST_F(IteratorHousekeeping, RefusesAServantThatIsRegistered) {
  CountedServant* const made = added(600);
  EXPECT_EQ(agent::kInternalError, registry_.add(made, 400));
  EXPECT_EQ(600U, registry_.bytes());
  EXPECT_EQ(1U, registry_.size());
}

TEST_F(IteratorHousekeeping, KeepsTheIdleTimeOfAServantThatAnotherThreadAddedAgain) {
  CountedServant* const made = servant();
  {
    IteratorRegistry::Creation creation(registry_);
    made->_add_ref();
    ASSERT_EQ(agent::kSuccess, registry_.add(made, 0));
    ASSERT_TRUE(registry_.deactivate(made));
    std::thread other([&] { EXPECT_EQ(agent::kSuccess, registry_.add(made, 0)); });
    other.join();
    now_ += milliseconds(1000);
  }
  EXPECT_EQ(1U, registry_.reclaimIdle());
}

// --- Deactivation and retire.

TEST_F(IteratorHousekeeping, RefusesIteratorsWhenItIsNotOpen) {
  registry_.retire();
  CountedServant* refused = servant();
  EXPECT_EQ(agent::kInternalError, registry_.add(refused, 0));
  EXPECT_EQ(1U, refused->_refcount_value());
  refused->_remove_ref();
}

TEST_F(IteratorHousekeeping, IgnoresASecondDeactivation) {
  orb::ObjectKey key;
  const NodeIterator_I_var iterator = active(key);
  PortableServer::ServantBase* known = added();
  registry_.deactivate(known);
  registry_.deactivate(known);
  EXPECT_EQ(1U, registry_.size());
  EXPECT_TRUE(exists(iterator));
}

TEST_F(IteratorHousekeeping, ReleasesAllServantsAndThePoaAtRetire) {
  orb::ObjectKey key;
  const NodeIterator_I_var iterator = active(key);
  added();
  registry_.retire();
  EXPECT_EQ(0, CountedServant::live);
  EXPECT_EQ(0U, registry_.size());
  EXPECT_TRUE(CORBA::is_nil(registry_.poa()));
  EXPECT_FALSE(exists(iterator));
}

TEST_F(IteratorHousekeeping, CountsEndedIterators) {
  orb::ObjectKey key;
  const NodeIterator_I_var iterator = active(key);
  added();
  registry_.deactivate(added());
  EXPECT_EQ(1U, registry_.ended());
  registry_.retire();
  EXPECT_EQ(3U, registry_.ended());
}

// A servant whose destructor waits for the test.
class SlowServant : public CountedServant {
 public:
  SlowServant(IteratorRegistry& registry, std::promise<void>& ending, std::future<void> mayEnd)
      : CountedServant(registry), ending_(ending), mayEnd_(std::move(mayEnd)) {}

 protected:
  ~SlowServant() override {
    ending_.set_value();
    mayEnd_.wait();
  }

 private:
  std::promise<void>& ending_;
  std::future<void> mayEnd_;
};

TEST_F(IteratorHousekeeping, RetireWaitsForARunningReclaim) {
  std::promise<void> ending;
  std::promise<void> mayEnd;
  ASSERT_EQ(agent::kSuccess,
            registry_.add(new SlowServant(registry_, ending, mayEnd.get_future()), 0));
  now_ += milliseconds(1000);
  std::future<std::size_t> reclaimed =
      std::async(std::launch::async, [&] { return registry_.reclaimIdle(); });
  ending.get_future().wait();
  std::future<void> retired = std::async(std::launch::async, [&] { registry_.retire(); });
  // A retire that does not wait returns much earlier.
  EXPECT_EQ(std::future_status::timeout, retired.wait_for(milliseconds(200)));
  mayEnd.set_value();
  retired.wait();
  EXPECT_EQ(1U, reclaimed.get());
}

TEST_F(IteratorHousekeeping, ReclaimsIdleIteratorsAtTheLimitInNumber) {
  added();
  added();
  added();
  now_ += milliseconds(1000);
  added();
  EXPECT_EQ(1U, registry_.size());
}

// The registry calls the clock at the first attempt and again in the reclaim, where another client
// removes an iterator.
TEST(IteratorLimit, AdmitsAnIteratorAfterAnotherThreadRemovedOneDuringTheReclaim) {
  const std::unique_ptr<orb::Server> server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  std::function<void()> onClock;
  IteratorRegistry registry(server->rootPoa(), IteratorLimits{milliseconds(1000), 1, 1000}, [&] {
    if (onClock) {
      onClock();
    }
    return IteratorRegistry::TimePoint();
  });
  registry.open();
  auto* const first = new CountedServant(registry);
  ASSERT_EQ(agent::kSuccess, registry.add(first, 0));
  int asked = 0;
  onClock = [&] {
    if (++asked == 2) {
      registry.deactivate(first);
    }
  };
  EXPECT_EQ(agent::kSuccess, registry.add(new CountedServant(registry), 0));
  EXPECT_EQ(1U, registry.size());
}

TEST_F(IteratorHousekeeping, EnforcesTheLimitForConcurrentAdds) {
  std::atomic<int> accepted{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      CountedServant* made = servant();
      if (registry_.add(made, 0) == agent::kSuccess) {
        ++accepted;
      } else {
        made->_remove_ref();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(3, accepted);
}

}  // namespace
