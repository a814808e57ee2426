// Loading and unloading the module, with and without its POAs.

#include "host_defaults/Module.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host_defaults/RunningOrb.h"
#include "orb/hostorb.h"
#include "platform/framework/ProcessException.h"
#include "tests/support/IgnoredLeaks.h"
#include "tests/support/RejectingManager.h"
#include "tests/unit/host_defaults/JournalModule.h"

namespace {

using host_defaults::Module;
using host_defaults::ModuleFile;
using host_defaults::RunningOrb;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> journal;
std::function<void()> failure;  // thrown by init

}  // namespace

void moduleInit() {
  journal.emplace_back("init");
  if (failure) {
    failure();
  }
}

void moduleFini() {
  journal.emplace_back("fini");
}

void moduleDeleted() {
  journal.emplace_back("deleted");
}

namespace {

bool isMapped(const std::string& file = "libjournal_module.so") {
  std::ifstream maps("/proc/self/maps");
  std::string line;
  while (std::getline(maps, line)) {
    if (line.find(file) != std::string::npos) {
      return true;
    }
  }
  return false;
}

// The text of the std::runtime_error of a call; "" when the call succeeds.
std::string reasonOf(const std::function<void()>& call) {
  try {
    call();
    return "";
  } catch (const std::runtime_error& reason) {
    return reason.what();
  }
}

class ModuleFiles : public testing::Test {
 protected:
  ModuleFiles() {
    journal.clear();
    failure = nullptr;
  }

  std::string reasonOfLoad(const std::string& path = TOPO_JOURNAL_MODULE) {
    const support::IgnoredLeaks parser;
    return reasonOf([&] { file_.load(path); });
  }

  ModuleFile file_;
};

TEST_F(ModuleFiles, AreInitializedAndUnmapped) {
  for (int i = 0; i < 3; ++i) {
    journal.clear();
    ASSERT_EQ(reasonOfLoad(), "");
    EXPECT_TRUE(file_.loaded());
    EXPECT_TRUE(isMapped());
    file_.unload();
    EXPECT_FALSE(file_.loaded());
    EXPECT_FALSE(isMapped());
    EXPECT_THAT(journal, ElementsAre("init", "fini", "deleted"));
  }
}

TEST_F(ModuleFiles, AreUnloadedOnce) {
  file_.unload();
  ASSERT_EQ(reasonOfLoad(), "");
  file_.unload();
  file_.unload();
  EXPECT_THAT(journal, ElementsAre("init", "fini", "deleted"));
}

TEST_F(ModuleFiles, AreUnloadedAtTheEnd) {
  {
    ModuleFile file;
    file.load(TOPO_JOURNAL_MODULE);
  }
  EXPECT_FALSE(isMapped());
}

// The configurator deletes the service object without fini; unload() calls fini of another one.
TEST_F(ModuleFiles, AreCleanedUpAfterAFailedInit) {
  failure = [] { throw std::runtime_error("no network"); };
  EXPECT_EQ(reasonOfLoad(), "its init failed: no network");
  EXPECT_FALSE(file_.loaded());
  EXPECT_THAT(journal, ElementsAre("init", "deleted"));
  file_.unload();
  EXPECT_FALSE(isMapped());
  EXPECT_THAT(journal, ElementsAre("init", "deleted", "fini", "deleted"));
  failure = nullptr;
  EXPECT_EQ(reasonOfLoad(), "");
}

// FOLDER/NAME for FOLDER/libNAME.so, which the configurator completes.
std::string shortNameOf(const std::string& path) {
  const std::size_t prefix = path.rfind("/lib") + 1;
  const std::size_t name = prefix + 3;
  return path.substr(0, prefix) + path.substr(name, path.rfind('.') - name);
}

TEST_F(ModuleFiles, AreCleanedUpAfterAFailedInitUnderAShortName) {
  failure = [] { throw std::runtime_error("no network"); };
  EXPECT_EQ(reasonOfLoad(shortNameOf(TOPO_JOURNAL_MODULE)), "its init failed: no network");
  file_.unload();
  EXPECT_FALSE(isMapped());
  EXPECT_THAT(journal, ElementsAre("init", "deleted", "fini", "deleted"));
}

TEST_F(ModuleFiles, NameTheExceptionOfInit) {
  failure = [] { throw CORBA::NO_RESOURCES(); };
  EXPECT_EQ(reasonOfLoad(), "its init failed with NO_RESOURCES");
  file_.unload();
  failure = [] {
    ProcessException exception;
    exception.errorCode = 77;
    exception.detail << "no name";
    throw exception;
  };
  EXPECT_EQ(reasonOfLoad(), "its init failed with code 77: no name");
  file_.unload();
  failure = [] { throw 7; };
  EXPECT_EQ(reasonOfLoad(), "its init failed with an exception of an unknown type");
}

TEST_F(ModuleFiles, SayWhyAFileCannotBeMapped) {
  EXPECT_THAT(reasonOfLoad("/nonexistent/libmodule.so"),
              HasSubstr("/nonexistent/libmodule.so: cannot open shared object file"));
  file_.unload();
  EXPECT_THAT(reasonOfLoad("/"), HasSubstr("cannot read file data"));
  file_.unload();
  EXPECT_EQ(reasonOfLoad(), "");
}

// The configurator completes a bare name to a file name; the dynamic linker does not.
TEST_F(ModuleFiles, SayHowToSeeWhyANameIsNoModule) {
  EXPECT_THAT(reasonOfLoad("no_such_module"), HasSubstr("ACE_DEBUG=1"));
}

TEST_F(ModuleFiles, AreNoOtherLibraries) {
  EXPECT_EQ(reasonOfLoad(TOPO_OTHER_LIBRARY), "it has no _make_zu_corba_topo");
  file_.unload();
  EXPECT_FALSE(isMapped("libtopo_agent_idl.so"));
  EXPECT_EQ(reasonOfLoad(), "");
}

TEST_F(ModuleFiles, AreNoOtherLibrariesThatTheProcessHasMapped) {
  ASSERT_TRUE(isMapped("libtopo_idl.so"));
  EXPECT_EQ(reasonOfLoad(TOPO_MAPPED_LIBRARY), "it has no _make_zu_corba_topo");
  file_.unload();
  EXPECT_TRUE(isMapped("libtopo_idl.so"));
  EXPECT_EQ(reasonOfLoad(), "");
}

TEST_F(ModuleFiles, NameTheResultOfInit) {
  EXPECT_EQ(reasonOfLoad(TOPO_REFUSING_MODULE), "its init returned -1");
  file_.unload();
  EXPECT_EQ(reasonOfLoad(shortNameOf(TOPO_REFUSING_MODULE)), "its init returned -1");
  file_.unload();
  EXPECT_EQ(reasonOfLoad(), "");
}

TEST_F(ModuleFiles, HaveNoPathThatADirectiveCannotContain) {
  EXPECT_EQ(reasonOfLoad("/a\nb.so"), "the name contains a line break");
  EXPECT_EQ(reasonOf([] { ModuleFile::checkPath("/a'\".so"); }),
            "the name contains both kinds of quotes");
  EXPECT_EQ(reasonOf([] { ModuleFile::checkPath("/a b'.so"); }), "");
  EXPECT_FALSE(file_.loaded());
}

class Modules : public ModuleFiles {
 protected:
  // An ORB needs an argument, its program.
  static CORBA::ORB_ptr startOrb() {
    static char program[] = "test";
    static char* argv[] = {program, nullptr};
    int argc = 1;
    return orb::startHostOrb(argc, argv, "127.0.0.1:0");
  }

  std::string reasonOfLoad(const std::string& path = TOPO_JOURNAL_MODULE) {
    const support::IgnoredLeaks parser;
    return reasonOf([&] { module_.load(path, orb_.rootPoa()); });
  }

  RunningOrb orb_{startOrb()};
  Module module_{[] { journal.emplace_back("drained"); }};
};

TEST_F(Modules, HaveTheirPoasWhileTheyAreLoaded) {
  failure = [this] {
    EXPECT_FALSE(CORBA::is_nil(module_.managerPoa()));
    EXPECT_FALSE(CORBA::is_nil(module_.iteratorPoa()));
  };
  ASSERT_EQ(reasonOfLoad(), "");
  module_.unload();
  EXPECT_TRUE(CORBA::is_nil(module_.managerPoa()));
  EXPECT_TRUE(CORBA::is_nil(module_.iteratorPoa()));
  EXPECT_THAT(journal, ElementsAre("init", "drained", "fini", "deleted"));
}

TEST_F(Modules, AreLoadedOnce) {
  ASSERT_EQ(reasonOfLoad(), "");
  EXPECT_EQ(reasonOfLoad(), "the module is loaded already");
  EXPECT_FALSE(CORBA::is_nil(module_.managerPoa()));
  module_.unload();
  EXPECT_EQ(reasonOfLoad(), "");
  module_.unload();
}

TEST_F(Modules, LeaveNothingAfterAFailedLoad) {
  failure = [] { throw std::runtime_error("no network"); };
  EXPECT_EQ(reasonOfLoad(), "the module cannot be loaded: its init failed: no network");
  EXPECT_TRUE(CORBA::is_nil(module_.managerPoa()));
  EXPECT_FALSE(isMapped());
  EXPECT_THAT(journal, ElementsAre("init", "deleted", "drained", "fini", "deleted"));
  failure = nullptr;
  EXPECT_EQ(reasonOfLoad(), "");
  module_.unload();
}

TEST_F(Modules, HaveNoReferenceToAnUnknownServant) {
  ASSERT_EQ(reasonOfLoad(), "");
  EXPECT_EQ(reasonOf([this] { CORBA::release(module_.reference("none")); }),
            "the module does not serve none");
  module_.unload();
}

TEST_F(Modules, HaveAManagerPoaWhoseReferencesStayValid) {
  const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId("manager");
  const PortableServer::ServantBase_var servant = new support::RejectingManager;
  ASSERT_EQ(reasonOfLoad(), "");
  const CORBA::Object_var reference =
      module_.managerPoa()->create_reference_with_id(id.in(), "IDL:omg.org/CORBA/Object:1.0");
  module_.unload();
  ASSERT_EQ(reasonOfLoad(), "");
  module_.managerPoa()->activate_object_with_id(id.in(), servant.in());
  EXPECT_FALSE(reference->_non_existent());
  module_.unload();
}

TEST(RunningOrbs, HaveAnActiveRootPoa) {
  static char program[] = "test";
  static char* argv[] = {program, nullptr};
  int argc = 1;
  const RunningOrb orb(orb::startHostOrb(argc, argv, "127.0.0.1:0"));
  const PortableServer::POAManager_var manager = orb.rootPoa()->the_POAManager();
  EXPECT_EQ(manager->get_state(), PortableServer::POAManager::ACTIVE);
  EXPECT_FALSE(CORBA::is_nil(orb.get()));
}

}  // namespace
