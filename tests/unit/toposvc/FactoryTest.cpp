#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/Fixture.h"
#include "tests/unit/toposvc/Entry.h"
#include "toposvc/TopoService.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::Journal;

class TopoFactory : public fakes::Fixture {
 protected:
  ~TopoFactory() override {
    if (object_ != nullptr) {
      destroy_(object_);
    }
  }

  void make() { object_ = _make_zu_corba_topo(&destroy_); }

  void destroy() {
    destroy_(object_);
    object_ = nullptr;
  }

  NS_BUNDLEMGR1::ServiceObjectBase& service() {
    return dynamic_cast<NS_BUNDLEMGR1::ServiceObjectBase&>(*object_);
  }

  static NS_BUNDLEMGR1::ServiceInterface* published() {
    return fakes::openBuffer("NULLServiceInterface").First();
  }

  ACE_Service_Object_Exterminator destroy_ = nullptr;
  ACE_Service_Object* object_ = nullptr;
};

using TopoFactoryDeathTest = TopoFactory;

TEST_F(TopoFactory, MakesAServiceObjectOfTheAgentsBundle) {
  make();
  EXPECT_EQ(Journal::linesOf({"ServiceObjectBase"}),
            Lines{"ServiceObjectBase(\"zu_corbaagent_bundle\", \"zu_corba_topo\")"});
  EXPECT_EQ(service().GetName(), "zu_corba_topo");
}

TEST_F(TopoFactory, PublishesAPlaceholder) {
  make();
  EXPECT_EQ(Journal::lines(),
            (Lines{"ServiceObjectBase(\"zu_corbaagent_bundle\", \"zu_corba_topo\")",
                   "SetIFBuf(\"NULLServiceInterface\")"}));
  ASSERT_NE(published(), nullptr);
  EXPECT_NE(dynamic_cast<NS_BUNDLEMGR1::NULLServiceInterface*>(published()), nullptr);
}

TEST_F(TopoFactory, PublishesTheInterfaceThatTheObjectOwns) {
  make();
  EXPECT_EQ(service().GetInterface(), published());
}

TEST_F(TopoFactory, RegistersNothingWithTheAgent) {
  make();
  EXPECT_EQ(fakes::registeredFactory("TopoManagement"), nullptr);
  EXPECT_TRUE(fakes::registeredServants().empty());
}

TEST_F(TopoFactory, ReturnsTheDestroyFunction) {
  make();
  ASSERT_NE(destroy_, nullptr);
  Journal::clear();
  destroy();
  EXPECT_EQ(Journal::lines(), (Lines{"~ServiceObjectBase()", "~NULLServiceInterface()"}));
  EXPECT_EQ(published(), nullptr);
}

TEST_F(TopoFactory, AcceptsANullPointerForTheDestroyFunction) {
  ACE_Service_Object* const object = _make_zu_corba_topo(nullptr);
  ASSERT_NE(object, nullptr);
  delete object;
  EXPECT_EQ(Journal::count("~ServiceObjectBase"), 1);
}

TEST_F(TopoFactory, MakesANewObjectEveryTime) {
  make();
  ACE_Service_Object* const second = _make_zu_corba_topo(nullptr);
  EXPECT_NE(second, object_);
  delete second;
}

TEST_F(TopoFactory, ReturnsTheDestroyFunctionBeforeAFailure) {
  fakes::onCall("ServiceObjectBase", 1, fakes::raiseRuntimeError("no base"));
  EXPECT_THROW(make(), std::runtime_error);
  EXPECT_NE(destroy_, nullptr);
}

TEST_F(TopoFactory, PassesExceptionsOfTheBase) {
  fakes::onCall("ServiceObjectBase", 1, fakes::raiseProcessException(7));
  EXPECT_THROW(make(), ProcessException);
  EXPECT_EQ(Journal::count("SetIFBuf"), 0);
}

TEST_F(TopoFactory, DeletesTheObjectWhenPublishingFails) {
  fakes::onCall("SetIFBuf", 1, fakes::raiseBadAlloc());
  EXPECT_THROW(make(), std::bad_alloc);
  EXPECT_EQ(Journal::linesOf({"~ServiceObjectBase", "~NULLServiceInterface"}),
            (Lines{"~ServiceObjectBase()", "~NULLServiceInterface()"}));
  EXPECT_EQ(published(), nullptr);
}

TEST_F(TopoFactoryDeathTest, EndsTheProcessWhenTheDestroyFunctionGetsNull) {
  make();
  EXPECT_DEATH(destroy_(nullptr), "toposvc.*33.*_p != 0");
}

}  // namespace
