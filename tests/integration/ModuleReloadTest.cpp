// Loading, unloading and reloading of the module in one process.

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <thread>

#include "agent/Agent.h"
#include "agent/ModuleControl.h"
#include "agent/bundle/ModuleLoader.h"
#include "agent/events/EventManager.h"
#include "agent/host/Publication.h"
#include "agent/host/RunningAgent.h"
#include "agent/host/SecurityService.h"
#include "agent/northbound/Northbound.h"
#include "agent/store/sqlite/SqliteStore.h"
#include "idl/ObjectKeys.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/TopoManagementManager.h"
#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/security/SecurityIF.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/IgnoredLeaks.h"
#include "tests/support/NoThreads.h"
#include "tests/support/RejectingManager.h"
#include "tests/support/Task.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/events/Handlers.h"

namespace {

using TopoManagementManager::TopoMgr_I;
using TopoManagementManager::TopoMgr_I_var;

constexpr int kReloads = 50;

bool mapped() {
  const std::string maps = support::readFile("/proc/self/maps");
  return maps.find("libzu_corba_topo") != std::string::npos;
}

// A host with the minimum that the module needs to start.
class ModuleHost {
 public:
  explicit ModuleHost(bool testSwitch = false)
      : server_(orb::startServer({}, {"127.0.0.1", 0}, nullptr)),
        northbound_(*server_, "E", testSwitch) {}

  orb::Server& server() { return *server_; }
  agent::EventManager& events() { return events_; }
  agent::Northbound& northbound() { return northbound_; }

  // Gaps that the event manager has reported.
  int gaps() const { return gaps_; }

  std::size_t capabilities() {
    const CORBA::Object_var object = northbound_.managers().reference("TopoManagement");
    const TopoMgr_I_var manager = TopoMgr_I::_narrow(object);
    common::CapabilityList_T_var list;
    manager->getCapabilities(list.out());
    return list->length();
  }

 private:
  std::unique_ptr<orb::Server> server_;
  std::atomic<int> gaps_{0};
  agent::EventManager events_{agent::EventManager::kDefaultQueueLimit, [this] { ++gaps_; }};
  agent::Northbound northbound_;
  const agent::AgentRegistration registration_{{&northbound_, &events_}};
};

TEST(ModuleReload, UnloadsFiftyTimesAndServesInBetween) {
  ModuleHost host;
  agent::ModuleLoader loader(TOPO_MODULE);
  for (int i = 0; i < kReloads; ++i) {
    ASSERT_FALSE(mapped()) << "before load " << i;
    host.northbound().open();
    loader.load();
    ASSERT_TRUE(mapped());
    ASSERT_TRUE(host.northbound().managers().serving("TopoManagement"));
    ASSERT_EQ(7U, host.capabilities());
    host.northbound().retire();
    loader.unload();
    ASSERT_FALSE(host.northbound().managers().serving("TopoManagement"));
  }
  EXPECT_FALSE(mapped());
}

TEST(ModuleReload, LeavesNoCopyOfTheModuleOnTheDisk) {
  ModuleHost host;
  const support::TemporaryDirectory directory;
  const support::EnvironmentVariable place("TMPDIR", directory.path());
  agent::ModuleLoader loader(TOPO_MODULE);
  loader.prepare();
  EXPECT_FALSE(std::filesystem::is_empty(directory.path()));
  host.northbound().open();
  loader.load();
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
  EXPECT_EQ(7U, host.capabilities());
  host.northbound().retire();
  loader.unload();
  EXPECT_FALSE(mapped());
}

// Loads a module whose load must fail.
void expectNoLoad(agent::ModuleLoader& loader) {
  const support::IgnoredLeaks parser;
  EXPECT_THROW(loader.load(), agent::ModuleError);
}

// With the test switch on, the last step of init reads the nodes of the domain, which is not
// published here.
TEST(ModuleReload, UndoesAStartThatFailsAtItsEnd) {
  ModuleHost host(true);
  agent::SecurityService security(true);
  const agent::Publication published("SecurityIF", security);
  agent::ModuleLoader loader(TOPO_MODULE);
  for (int i = 0; i < 3; ++i) {
    host.northbound().open();
    expectNoLoad(loader);
    EXPECT_EQ(3U, host.events().status().subscriptions);
    host.northbound().retire();
    loader.unload();
    EXPECT_EQ(0U, host.events().status().subscriptions);
    EXPECT_EQ(nullptr, NS_BUNDLEMGR1::CheckIFBuf("NULLServiceInterface")->First());
    EXPECT_FALSE(host.northbound().managers().serving("TopoManagement"));
    EXPECT_FALSE(mapped());
  }
  host.northbound().setTestSwitch(false);
  host.northbound().open();
  loader.load();
  EXPECT_EQ(3U, host.events().status().subscriptions);
  EXPECT_EQ(7U, host.capabilities());
  host.northbound().retire();
  loader.unload();
  EXPECT_FALSE(mapped());
}

// The ModuleControl of an agent.
class ModuleControls : public testing::Test {
 protected:
  using State = agent::ModuleControl::State;

  ModuleHost host_;
  agent::SqliteStore store_{agent::SqliteStore::kInMemory};
  agent::NetworkModel model_{agent::Network()};
  agent::NetworkWriter writer_{store_, model_};
  agent::ModuleControl control_{"TopoManagement", TOPO_MODULE, writer_, host_.events(),
                                host_.northbound()};
};

TEST_F(ModuleControls, ReportAMissingModuleAfterItsUnload) {
  EXPECT_EQ(State::kMissing, control_.state());
  control_.load();
  EXPECT_EQ(State::kLoaded, control_.state());
  EXPECT_EQ(7U, host_.capabilities());
  control_.unload();
  EXPECT_EQ(State::kMissing, control_.state());
  EXPECT_FALSE(host_.northbound().managers().serving("TopoManagement"));
  EXPECT_FALSE(mapped());
  EXPECT_EQ(1U, control_.loads());
}

TEST_F(ModuleControls, ReportAReloadWhileAnEventIsHandled) {
  control_.load();
  events::Blocked slow;
  host_.events().Subscribe(&slow.handler, events::kCreated, 0, 0);
  host_.events().raise(1, events::kCreated, {});
  slow.waitUntilInside();
  std::future<void> reload = std::async(std::launch::async, [this] { control_.reload(); });
  while (control_.state() == State::kLoaded) {
    std::this_thread::yield();
  }
  EXPECT_EQ(State::kReloading, control_.state());
  slow.release();
  reload.get();
  EXPECT_EQ(State::kLoaded, control_.state());
  EXPECT_EQ(2U, control_.loads());
  host_.events().UnSubscribe(&slow.handler, events::kCreated);
}

// Blocks the module in its first event.
class BlockingSecurity final : public NS_SECURITY_SERVICE1::SecurityIF {
 public:
  bool isEventAccessAllowed() override { return true; }
  void setAccessIdentity(const std::string& /*identity*/) override {
    ++calls;
    entered.open();
    mayLeave.pass();
  }
  void setAccessLevel(const int& /*level*/) override {}

  std::atomic<int> calls{0};
  events::Gate entered;
  events::Gate mayLeave;
};

TEST_F(ModuleControls, ReloadBetweenTwoEventsOfAChangeAfterTheEventPatience) {
  using namespace std::chrono_literals;
  BlockingSecurity security;
  const agent::Publication published("SecurityIF", security);
  agent::ModuleControl impatient("TopoManagement", TOPO_MODULE, writer_, host_.events(),
                                 host_.northbound(), 0ms);
  impatient.load();
  host_.events().raise(1, events::kCreated,
                       events::numberedNodes(3 * agent::EventManager::kMaxNodesPerEvent));
  security.entered.pass();
  std::future<void> reload = std::async(std::launch::async, [&] { impatient.reload(); });
  events::awaitStatus(host_.events(), &agent::EventManager::Status::queued, std::size_t{0});
  security.mayLeave.open();
  reload.get();
  EXPECT_EQ(State::kLoaded, impatient.state());
  EXPECT_EQ(1, security.calls);
  EXPECT_EQ(1, host_.gaps());
  impatient.unload();
}

TEST_F(ModuleControls, ReloadDuringAChangeAfterTheEventPatience) {
  using namespace std::chrono_literals;
  agent::ModuleControl impatient("TopoManagement", TOPO_MODULE, writer_, host_.events(),
                                 host_.northbound(), 0ms);
  impatient.load();
  const agent::NetworkWriter::Change change(writer_);
  impatient.reload();
  EXPECT_EQ(2U, impatient.loads());
  impatient.unload();
}

TEST_F(ModuleControls, LeaveTheModuleServingWhenAReloadCannotBegin) {
  control_.load();
  {
    const support::NoThreads none;
    EXPECT_THROW(control_.reload(), agent::ModuleError);
  }
  EXPECT_EQ(State::kLoaded, control_.state());
  EXPECT_EQ(1U, control_.loads());
  EXPECT_EQ(7U, host_.capabilities());
  control_.reload();
  EXPECT_EQ(2U, control_.loads());
}

TEST_F(ModuleControls, RunOneReloadAtATime) {
  control_.load();
  const auto reload = [this] {
    for (int i = 0; i < 10; ++i) {
      control_.reload();
    }
  };
  std::thread other(reload);
  reload();
  other.join();
  EXPECT_EQ(State::kLoaded, control_.state());
  EXPECT_EQ(21U, control_.loads());
  EXPECT_EQ(7U, host_.capabilities());
}

// A manager with one operation that blocks until the test releases it.
class SlowManager : public support::RejectingManager {
 public:
  void getCapabilities(common::CapabilityList_T_out list) override {
    entered.set_value();
    mayEnd.get_future().wait();
    list = new common::CapabilityList_T;
    ended = true;
  }

  std::promise<void> entered;
  std::promise<void> mayEnd;
  std::atomic<bool> ended{false};
};

TEST(ModuleReload, WaitsForARunningRequest) {
  ModuleHost host;
  host.northbound().open();
  auto* servant = new SlowManager;  // the registry takes over the reference
  servant->_add_ref();
  const PortableServer::ServantBase_var kept = servant;
  host.northbound().managers().serve("TopoManagement", servant);
  std::thread client([&] { host.capabilities(); });
  servant->entered.get_future().wait();
  support::Task retired([&] {
    host.northbound().retire();
    return servant->ended.load();
  });
  EXPECT_TRUE(retired.waits());
  servant->mayEnd.set_value();
  EXPECT_TRUE(retired.get());
  client.join();
}

TEST(ModuleReload, WithdrawsThePlaceholderInterface) {
  ModuleHost host;
  agent::ModuleLoader loader(TOPO_MODULE);
  host.northbound().open();
  loader.load();
  NS_BUNDLEMGR1::InterfaceBuffer* buffer = NS_BUNDLEMGR1::CheckIFBuf("NULLServiceInterface");
  ASSERT_NE(nullptr, buffer);
  EXPECT_NE(nullptr, buffer->First());
  host.northbound().retire();
  loader.unload();
  EXPECT_EQ(nullptr, buffer->First());
}

TEST(ModuleReload, KeepsTheReferenceAndEndsIterators) {
  agent::Options options;
  options.store = ":memory:";
  options.endpoints.front().port = 0;
  options.network = std::string(TOPO_NETWORKS) + "/backbone.json";
  options.module = TOPO_MODULE;
  agent::Agent agent(options);
  agent.start();
  const std::string reference = agent.managerReference();
  // The agent runs in this process, so the client uses the agent's ORB.
  int argc = 0;
  const CORBA::ORB_var orb = CORBA::ORB_init(argc, nullptr);
  // Address and key. The text of equal references may differ, because padding need not be zero.
  const auto leadsTo = [&orb](const std::string& text) {
    const CORBA::Object_var object = orb->string_to_object(text.c_str());
    return orb::addressOf(object.in()) + '/' + orb::objectKeyOf(object.in());
  };
  const CORBA::Object_var object = orb->string_to_object(reference.c_str());
  const TopoMgr_I_var manager = TopoMgr_I::_narrow(object.in());
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  for (int i = 0; i < 5; ++i) {
    manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    ASSERT_FALSE(CORBA::is_nil(iterator));
    agent.reloadModule();
    EXPECT_EQ(leadsTo(reference), leadsTo(agent.managerReference()));
    EXPECT_THROW(iterator->getLength(), CORBA::OBJECT_NOT_EXIST);
  }
  manager->getTopoSubnetworkViewInfo(100000, nodes.out(), iterator.out());
  EXPECT_LT(1U, nodes->length());
  agent.stop();
  EXPECT_FALSE(mapped());
}

// The security service disappears after the module has subscribed.
TEST(EventsInProcess, ThatTheModuleCannotHandleAreLoggedAndViewsAreServed) {
  agent::Options options;
  options.store = ":memory:";
  options.endpoints.front().port = 0;
  options.emsName = "E";
  options.module = TOPO_MODULE;
  agent::Agent agent(options);
  testing::internal::CaptureStderr();
  agent.start();
  NS_BUNDLEMGR1::InterfaceBuffer& access = *NS_BUNDLEMGR1::CheckIFBuf("SecurityIF");
  access.Remove(access.First());
  int argc = 0;
  const CORBA::ORB_var orb = CORBA::ORB_init(argc, nullptr);
  const CORBA::Object_var object = orb->string_to_object(agent.managerReference().c_str());
  const CORBA::Object_var beside = orb::objectBeside(orb, object, object_key::kConsole);
  const auto console = TopoAgent::Console_I::_narrow(beside);
  const TopoAgent::Console_I_var owner = console;
  TopoAgent::NewNode_T node;
  node.id = "core";
  node.parentKind = TopoAgent::NK_SUBNETWORK;
  node.kind = TopoAgent::NK_SUBNETWORK;
  node.nodeParam1 = 0;
  node.nodeParam2 = 0;
  console->createNode(node);
  const TopoMgr_I_var manager = TopoMgr_I::_narrow(object);
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(10, nodes.out(), iterator.out());
  EXPECT_EQ(1U, nodes->length());
  agent.stop();  // the module handles queued events before its unloading
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStderr().find("Handle Event Fail(eventid = 372)!"));
}

}  // namespace
