// Registration of managers by name, and their servants.

#include "agent/northbound/ManagerRegistry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "agent/base/FailureCodes.h"
#include "orb/idl/TopoManagementManager.h"
#include "platform/framework/ProcessException.h"
#include "tests/support/RejectingManager.h"

namespace {

using agent::ManagerRegistry;

// A manager that counts its instances. The capability identifies an instance.
class CountedManager final : public support::RejectingManager {
 public:
  explicit CountedManager(const std::string& capability = "") : capability_(capability) { ++live; }

  void getCapabilities(common::CapabilityList_T_out capabilities) override {
    capabilities = new common::CapabilityList_T;
    capabilities->length(1);
    capabilities[0].name = CORBA::string_dup(capability_.c_str());
  }

  static std::atomic<int> live;

 protected:
  ~CountedManager() override { --live; }

 private:
  const std::string capability_;
};

std::atomic<int> CountedManager::live{0};

class Managers : public testing::Test {
 protected:
  static void SetUpTestSuite() { server_ = orb::startServer({}, {"127.0.0.1", 0}, nullptr); }
  static void TearDownTestSuite() { server_.reset(); }

  ~Managers() override {
    registry_.retire();
    EXPECT_EQ(0, CountedManager::live);
  }

  // The code of a refusal; 0 without a refusal.
  static CORBA::ULong refusal(const std::function<void()>& call) {
    try {
      call();
      return 0;
    } catch (ProcessException& failure) {
      EXPECT_NE("", failure.detail.str());
      return static_cast<CORBA::ULong>(failure.errorCode);
    }
  }

  bool published(const std::string& name) {
    const CORBA::Object_var reference = registry_.reference(name);
    return !CORBA::is_nil(reference);
  }

  // The capability of the manager that is served at a name.
  std::string answerOf(const std::string& name) {
    const CORBA::Object_var reference = registry_.reference(name);
    const auto manager =
        TopoManagementManager::TopoMgr_I_var(TopoManagementManager::TopoMgr_I::_narrow(reference));
    common::CapabilityList_T_var capabilities;
    manager->getCapabilities(capabilities);
    return capabilities[0].name.in();
  }

  static std::unique_ptr<orb::Server> server_;
  ManagerRegistry registry_{*server_};
};

std::unique_ptr<orb::Server> Managers::server_;

TEST_F(Managers, RefuseASecondRegistrationOfAName) {
  EXPECT_EQ(0U, refusal([&] { registry_.add("A", nullptr); }));
  EXPECT_EQ(agent::kInternalError, refusal([&] { registry_.add("A", nullptr); }));
  EXPECT_EQ(0U, refusal([&] { registry_.add("B", nullptr); }));
}

TEST_F(Managers, RefuseTheRemovalOfAnUnknownName) {
  EXPECT_EQ(agent::kInternalError, refusal([&] { registry_.remove("A"); }));
  registry_.add("A", nullptr);
  EXPECT_EQ(agent::kInternalError, refusal([&] { registry_.remove("B"); }));
  EXPECT_EQ(0U, refusal([&] { registry_.remove("A"); }));
  EXPECT_EQ(agent::kInternalError, refusal([&] { registry_.remove("A"); }));
}

TEST_F(Managers, AcceptANameAgainAfterItsRemoval) {
  registry_.add("A", nullptr);
  registry_.remove("A");
  EXPECT_EQ(0U, refusal([&] { registry_.add("A", nullptr); }));
}

TEST_F(Managers, RefuseANullServant) {
  registry_.add("A", nullptr);
  EXPECT_EQ(agent::kInternalError, refusal([&] { registry_.serve("A", nullptr); }));
  EXPECT_FALSE(registry_.serving("A"));
  EXPECT_FALSE(published("A"));
}

TEST_F(Managers, ContinueToServeAfterARefusedNullServant) {
  registry_.serve("A", new CountedManager("first"));
  EXPECT_EQ(agent::kInternalError, refusal([&] { registry_.serve("A", nullptr); }));
  EXPECT_EQ("first", answerOf("A"));
}

TEST_F(Managers, AreNotServingWhenNeitherRegisteredNorPublished) {
  EXPECT_FALSE(registry_.serving("A"));
}

TEST_F(Managers, AreNotServingWhenOnlyRegistered) {
  registry_.add("A", nullptr);
  EXPECT_FALSE(registry_.serving("A"));
}

TEST_F(Managers, AreNotServingWhenOnlyPublished) {
  registry_.serve("A", new CountedManager);
  EXPECT_TRUE(published("A"));
  EXPECT_FALSE(registry_.serving("A"));
}

TEST_F(Managers, AreServingWhenRegisteredAndPublished) {
  registry_.add("A", nullptr);
  registry_.serve("A", new CountedManager);
  EXPECT_TRUE(registry_.serving("A"));
  registry_.remove("A");
  EXPECT_FALSE(registry_.serving("A"));
  registry_.add("A", nullptr);
  EXPECT_TRUE(registry_.serving("A"));
  registry_.retire();
  EXPECT_FALSE(registry_.serving("A"));
}

TEST_F(Managers, AreNotServingUnderTheNameOfAnotherManager) {
  registry_.add("A", nullptr);
  registry_.serve("B", new CountedManager);
  EXPECT_FALSE(registry_.serving("A"));
  EXPECT_FALSE(registry_.serving("B"));
}

TEST_F(Managers, HaveAReferenceWhileTheyArePublished) {
  EXPECT_FALSE(published("A"));
  registry_.serve("A", new CountedManager("first"));
  EXPECT_TRUE(published("A"));
  EXPECT_FALSE(published("B"));
  EXPECT_EQ("first", answerOf("A"));
  registry_.retire();
  EXPECT_FALSE(published("A"));
}

TEST_F(Managers, AreServedAtTheObjectKeyOfTheirName) {
  registry_.serve("A", new CountedManager);
  const CORBA::Object_var reference = registry_.reference("A");
  EXPECT_EQ("A", orb::objectKeyOf(reference));
}

TEST_F(Managers, ReplaceAndReleaseAnEarlierServant) {
  registry_.serve("A", new CountedManager("first"));
  EXPECT_EQ(1, CountedManager::live);
  registry_.serve("A", new CountedManager("second"));
  EXPECT_EQ(1, CountedManager::live);
  EXPECT_EQ("second", answerOf("A"));
}

TEST_F(Managers, AreNotAffectedByTheReplacementOfAnotherManager) {
  registry_.serve("A", new CountedManager("first"));
  registry_.serve("B", new CountedManager("other"));
  registry_.serve("A", new CountedManager("second"));
  EXPECT_EQ("second", answerOf("A"));
  EXPECT_EQ("other", answerOf("B"));
}

TEST_F(Managers, ReleaseEveryServantAtRetire) {
  registry_.serve("A", new CountedManager);
  registry_.serve("B", new CountedManager);
  EXPECT_EQ(2, CountedManager::live);
  registry_.retire();
  EXPECT_EQ(0, CountedManager::live);
}

TEST_F(Managers, RetireTwice) {
  registry_.retire();
  registry_.serve("A", new CountedManager);
  registry_.retire();
  registry_.retire();
  EXPECT_EQ(0, CountedManager::live);
}

// --- Behind a guard.

class GuardedManagers : public Managers {
 protected:
  ~GuardedManagers() override { guarded_.retire(); }

  TopoManagementManager::TopoMgr_I_var manager() {
    const CORBA::Object_var reference = guarded_.reference("A");
    return TopoManagementManager::TopoMgr_I::_narrow(reference);
  }

  static std::string viewOf(const TopoManagementManager::TopoMgr_I_var& manager) {
    TopoManagementManager::NodeList_T_var list;
    TopoManagementManager::NodeIterator_I_var iterator;
    try {
      manager->getTopoSubnetworkViewInfo(1, list.out(), iterator.out());
      return "a view";
    } catch (const CORBA::SystemException& failure) {
      return failure._name();
    }
  }

  std::size_t free_ = 10000;
  agent::ViewAdmission admission_{{1, 1000, std::chrono::milliseconds(0)},
                                  [this](std::size_t bytes) { return bytes <= free_; },
                                  std::chrono::steady_clock::now};
  agent::IteratorRegistry iterators_{server_->rootPoa(), {}, std::chrono::steady_clock::now};
  const agent::ViewGuard guard_{admission_, admission_, iterators_, [](agent::ViewKind) {
                                  return agent::ViewSize{1, 500, 0};
                                }};
  ManagerRegistry guarded_{*server_, &guard_};
};

TEST_F(GuardedManagers, RefuseOnlyViewsWhenMemoryIsShort) {
  guarded_.serve("A", new CountedManager("first"));
  EXPECT_EQ("NO_IMPLEMENT", viewOf(manager()));
  free_ = 0;
  EXPECT_EQ("NO_RESOURCES", viewOf(manager()));
  common::CapabilityList_T_var capabilities;
  manager()->getCapabilities(capabilities);
  EXPECT_STREQ("first", capabilities[0].name.in());
}

TEST_F(GuardedManagers, KeepTheirTypeAndKey) {
  guarded_.serve("A", new CountedManager);
  const CORBA::Object_var reference = guarded_.reference("A");
  EXPECT_EQ("A", orb::objectKeyOf(reference));
  EXPECT_TRUE(reference->_is_a("IDL:TopoManagementManager/TopoMgr_I:1.0"));
}

TEST_F(GuardedManagers, ReleaseTheServantAtRetire) {
  guarded_.serve("A", new CountedManager);
  EXPECT_EQ(1, CountedManager::live);
  guarded_.retire();
  EXPECT_EQ(0, CountedManager::live);
}

TEST_F(Managers, ServeAgainAfterRetire) {
  registry_.serve("A", new CountedManager("first"));
  registry_.retire();
  registry_.serve("A", new CountedManager("second"));
  EXPECT_EQ(1, CountedManager::live);
  EXPECT_EQ("second", answerOf("A"));
}

}  // namespace
