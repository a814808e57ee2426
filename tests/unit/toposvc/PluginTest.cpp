// The built .so, loaded at run time, with the fakes as the host.

#include <dlfcn.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "platform/framework/ProcessException.h"
#include "tests/fakes/Events.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/OrbFixture.h"

namespace {

using fakes::Journal;

constexpr const char* kModule = TOPO_MODULE;
constexpr const char* kManager = "TopoManagement";

using Make = ACE_Service_Object* (*)(ACE_Service_Object_Exterminator*);

bool isMapped() {
  const std::string file = std::string(kModule).substr(std::string(kModule).rfind('/'));
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line)) {
    if (line.find(file) != std::string::npos) {
      return true;
    }
  }
  return false;
}

// The loaded module and its service object.
class LoadedModule {
 public:
  LoadedModule() : library_(dlopen(kModule, RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) {
      ADD_FAILURE() << dlerror();
      return;
    }
    const auto make = reinterpret_cast<Make>(dlsym(library_, "_make_zu_corba_topo"));
    object_ = make(&destroy_);
  }

  ~LoadedModule() { unload(); }

  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  ACE_Service_Object& object() { return *object_; }

  void unload() {
    if (library_ != nullptr) {
      destroy_(object_);
      dlclose(library_);
      library_ = nullptr;
    }
  }

 private:
  void* library_;
  ACE_Service_Object_Exterminator destroy_ = nullptr;
  ACE_Service_Object* object_ = nullptr;
};

POA_TopoManagementManager::TopoMgr_I& registeredManager() {
  return dynamic_cast<POA_TopoManagementManager::TopoMgr_I&>(*fakes::registeredServants().at(0));
}

class TopoPlugin : public fakes::PlatformFixture {};

TEST_F(TopoPlugin, IsUnmappedAfterItsUnload) {
  ASSERT_FALSE(isMapped());
  LoadedModule module;
  EXPECT_TRUE(isMapped());
  EXPECT_EQ(module.object().init(0, nullptr), 0);
  EXPECT_NE(fakes::registeredFactory(kManager), nullptr);
  EXPECT_EQ(module.object().fini(), 0);
  EXPECT_EQ(fakes::registeredFactory(kManager), nullptr);
  fakes::releaseServants();
  module.unload();
  EXPECT_FALSE(isMapped());
}

TEST_F(TopoPlugin, IsUnmappedAfterServingAView) {
  fakes::network().nodes = {fakes::subnetwork("a", "A")};
  fakes::agent().testSwitch = true;
  LoadedModule module;
  module.object().init(0, nullptr);
  {
    TopoManagementManager::NodeList_T_var nodes;
    TopoManagementManager::NodeIterator_I_var iterator;
    registeredManager().getTopoSubnetworkViewInfo(9, nodes.out(), iterator.out());
    EXPECT_EQ(nodes->length(), 1U);
    EXPECT_EQ(nodes[0].additionalInfo.length(), 7U);
  }
  module.object().fini();
  fakes::releaseServants();
  module.unload();
  EXPECT_FALSE(isMapped());
}

TEST_F(TopoPlugin, CanBeReloadedRepeatedly) {
  for (int i = 0; i < 5; ++i) {
    LoadedModule module;
    EXPECT_EQ(module.object().init(0, nullptr), 0);
    EXPECT_EQ(module.object().fini(), 0);
    fakes::releaseServants();
    module.unload();
    EXPECT_FALSE(isMapped());
  }
}

TEST_F(TopoPlugin, CanBeLoadedAgainAfterAnUnloadWithoutFini) {
  {
    LoadedModule module;
    module.object().init(0, nullptr);
    fakes::releaseServants();
  }
  ASSERT_NE(fakes::registeredFactory(kManager), nullptr);  // a dangling pointer
  LoadedModule module;
  EXPECT_EQ(module.object().init(0, nullptr), 0);
  EXPECT_EQ(module.object().fini(), 0);
  fakes::releaseServants();
}

TEST_F(TopoPlugin, RemovesItsPlaceholderAtUnload) {
  LoadedModule module;
  EXPECT_NE(fakes::openBuffer("NULLServiceInterface").First(), nullptr);
  module.unload();
  EXPECT_EQ(fakes::openBuffer("NULLServiceInterface").First(), nullptr);
}

TEST_F(TopoPlugin, CatchesExceptionsOfTheHost) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(77));
  LoadedModule module;
  module.object().init(0, nullptr);
  try {
    TopoManagementManager::NodeList_T_var nodes;
    TopoManagementManager::NodeIterator_I_var iterator;
    registeredManager().getTopoSubnetworkViewInfo(9, nodes.out(), iterator.out());
    ADD_FAILURE() << "nothing was raised";
  } catch (const globaldefs::ProcessingFailureException& failure) {
    EXPECT_STREQ(failure.errorReason.in(), "constructed from 77");
  }
  module.object().fini();
  fakes::releaseServants();
}

TEST_F(TopoPlugin, FinishesWithoutAnInit) {
  LoadedModule module;
  Journal::clear();
  EXPECT_EQ(module.object().fini(), 0);
  EXPECT_EQ(Journal::lines(), std::vector<std::string>{"ServiceObjectBase::fini()"});
}

TEST_F(TopoPlugin, ReversesAFailedInitInFini) {
  LoadedModule module;
  fakes::onCall("RegisterServant", 1, fakes::raiseProcessException(7));
  EXPECT_THROW(module.object().init(0, nullptr), ProcessException);
  fakes::releaseServants();
  Journal::clear();
  EXPECT_EQ(module.object().fini(), 0);
  EXPECT_EQ(Journal::lines(), std::vector<std::string>{"ServiceObjectBase::fini()"});
}

class TopoPluginWithOrb : public fakes::OrbFixture {};

TEST_F(TopoPluginWithOrb, IsUnmappedAfterServingAnIterator) {
  fakes::network().nodes = {fakes::subnetwork("a"), fakes::subnetwork("b")};
  LoadedModule module;
  module.object().init(0, nullptr);
  {
    TopoManagementManager::NodeList_T_var nodes;
    TopoManagementManager::NodeIterator_I_var iterator;
    registeredManager().getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    TopoManagementManager::NodeList_T_var rest;
    EXPECT_FALSE(iterator->next_n(1, rest.out()));
    EXPECT_EQ(rest->length(), 1U);
  }
  module.object().fini();
  fakes::releaseServants();
  module.unload();
  EXPECT_FALSE(isMapped());
}

// --- Events.

void deliver(int event, const std::vector<NS_DOMAIN::TopoNode_T>& nodes) {
  TEEvent carried;
  carried.nodes = nodes;
  fakes::deliver(event, carried);
}

TEST_F(TopoPluginWithOrb, IsUnmappedAfterHandlingEvents) {
  fakes::network().nodes = {fakes::subnetwork("a", "A"), fakes::subnetwork("b", "B")};
  fakes::agent().testSwitch = true;
  LoadedModule module;
  module.object().init(0, nullptr);
  deliver(372, {fakes::subnetwork("c", "C")});
  deliver(374, {fakes::subnetwork("a", "a label that is too long for a short string")});
  deliver(373, {fakes::subnetwork("c")});
  fakes::onEveryCall("OnObjectDeleted", fakes::raiseTransient());
  deliver(373, {fakes::subnetwork("c")});
  EXPECT_EQ(fakes::notificationsSent().size(), 3U);
  module.object().fini();
  fakes::releaseServants();
  module.unload();
  EXPECT_FALSE(isMapped());
  // The notifications must not refer to the unloaded module.
  const TopoManagementManager::Node_T* node = nullptr;
  ASSERT_TRUE(fakes::notificationsSent().at(0).object >>= node);
}

TEST_F(TopoPluginWithOrb, LeaksNothingAtAnUnloadWithoutFiniAfterSeveralInits) {
  fakes::network().nodes = {fakes::subnetwork("a", "A")};
  fakes::agent().testSwitch = true;
  {
    LoadedModule module;
    module.object().init(0, nullptr);
    module.object().init(0, nullptr);
    fakes::releaseServants();
  }
  EXPECT_FALSE(isMapped());
}

TEST_F(TopoPluginWithOrb, HasNoSubscriptionsAndNoLabelsAfterAReload) {
  fakes::network().nodes = {fakes::subnetwork("a", "A")};
  fakes::agent().testSwitch = true;
  for (int i = 0; i < 2; ++i) {
    LoadedModule module;
    EXPECT_TRUE(fakes::subscribedTo(374).empty());
    module.object().init(0, nullptr);
    deliver(374, {fakes::subnetwork("a", "B")});
    EXPECT_EQ(fakes::notificationsSent().size(), static_cast<std::size_t>(i + 1));
    module.object().fini();
    fakes::releaseServants();
  }
}

}  // namespace
