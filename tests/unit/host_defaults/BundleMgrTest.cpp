// The service objects of the process, and the interfaces that they publish.

#include "platform/bundlemgr/BundleMgr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using NS_BUNDLEMGR1::BundleMgr;
using NS_BUNDLEMGR1::CheckIFBuf;
using NS_BUNDLEMGR1::ServiceInterface;
using NS_BUNDLEMGR1::ServiceObjectBase;
using NS_BUNDLEMGR1::SetIFBuf;
using testing::ElementsAre;
using testing::IsEmpty;

// An interface that counts its live objects.
class CountedInterface : public ServiceInterface {
 public:
  CountedInterface() { ++live; }
  ~CountedInterface() override { --live; }

  static int live;
};

int CountedInterface::live = 0;

class Service : public ServiceObjectBase {
 public:
  explicit Service(const std::string& name) : ServiceObjectBase("bundle", name) {}

  ServiceInterface* CreateInterface() override {
    interface_ = new CountedInterface;
    return interface_;
  }
};

std::vector<ServiceObjectBase*> listed() {
  return BundleMgr::Instance()->GetServiceObjects();
}

ServiceObjectBase* named(const std::string& name) {
  return BundleMgr::Instance()->GetServiceObject(name);
}

TEST(ServiceObjects, AreListedInTheOrderOfTheirConstruction) {
  EXPECT_THAT(listed(), IsEmpty());
  Service b("b");
  Service c("c");
  Service a("a");
  EXPECT_THAT(listed(), ElementsAre(&b, &c, &a));
}

// As the service object of the module does.
class ServiceWithoutRegistration final : public Service {
 public:
  using Service::Service;
  void RegistSvc() override {}
};

TEST(ServiceObjects, AreListedWithoutARegistrationOfTheirOwn) {
  ServiceWithoutRegistration a("a");
  a.RegistSvc();
  EXPECT_THAT(listed(), ElementsAre(&a));
  EXPECT_EQ(&a, named("a"));
}

TEST(ServiceObjects, AreListedOnceForSeveralRegistrations) {
  Service a("a");
  Service b("b");
  a.RegistSvc();
  EXPECT_THAT(listed(), ElementsAre(&a, &b));
  a.UnRegistSvc();
  a.RegistSvc();
  EXPECT_THAT(listed(), ElementsAre(&b, &a));
}

TEST(ServiceObjects, AreFoundByName) {
  Service a("a");
  Service b("b");
  EXPECT_EQ("a", a.GetName());
  EXPECT_EQ(&a, named("a"));
  EXPECT_EQ(&b, named("b"));
  EXPECT_EQ(nullptr, named("c"));
  EXPECT_EQ(nullptr, named("bundle"));
}

TEST(ServiceObjects, WithOneNameAreFoundInTheOrderOfConstruction) {
  Service first("a");
  Service second("a");
  EXPECT_EQ(&first, named("a"));
  first.UnRegistSvc();
  EXPECT_EQ(&second, named("a"));
}

TEST(ServiceObjects, AreNotFoundAfterTheyUnregister) {
  Service a("a");
  Service b("b");
  a.UnRegistSvc();
  EXPECT_EQ(nullptr, named("a"));
  EXPECT_THAT(listed(), ElementsAre(&b));
  a.UnRegistSvc();
  EXPECT_THAT(listed(), ElementsAre(&b));
}

TEST(ServiceObjects, AreNotFoundAfterTheirDestruction) {
  Service b("b");
  {
    Service a("a");
    EXPECT_THAT(listed(), ElementsAre(&b, &a));
  }
  EXPECT_EQ(nullptr, named("a"));
  EXPECT_THAT(listed(), ElementsAre(&b));
}

TEST(ServiceObjects, InitAndFiniSucceedByDefault) {
  Service a("a");
  EXPECT_EQ(0, a.init(0, nullptr));
  EXPECT_EQ(0, a.fini());
}

TEST(Interfaces, HaveNoBufferUnderAnUnusedName) {
  EXPECT_EQ(nullptr, CheckIFBuf("bundle manager test, unused"));
}

TEST(Interfaces, AreFoundInTheOrderOfPublication) {
  const std::string name = "bundle manager test, first";
  Service a("a");
  Service b("b");
  SetIFBuf(name, a.CreateInterface());
  SetIFBuf(name, b.CreateInterface());
  ASSERT_NE(nullptr, CheckIFBuf(name));
  EXPECT_EQ(a.GetInterface(), CheckIFBuf(name)->First());
}

TEST(Interfaces, KeepTheirBufferAfterTheirRemoval) {
  const std::string name = "bundle manager test, kept";
  Service a("a");
  SetIFBuf(name, a.CreateInterface());
  const NS_BUNDLEMGR1::InterfaceBuffer* const buffer = CheckIFBuf(name);
  a.RemoveInterface();
  EXPECT_EQ(buffer, CheckIFBuf(name));
  EXPECT_EQ(nullptr, buffer->First());
  SetIFBuf(name, a.CreateInterface());
  EXPECT_EQ(buffer, CheckIFBuf(name));
  EXPECT_EQ(a.GetInterface(), buffer->First());
}

TEST(Interfaces, AreRemovedFromEveryBuffer) {
  const std::string alone = "bundle manager test, alone";
  const std::string before = "bundle manager test, before";
  const std::string behind = "bundle manager test, behind";
  Service a("a");
  Service b("b");
  a.CreateInterface();
  b.CreateInterface();
  SetIFBuf(alone, a.GetInterface());
  SetIFBuf(alone, a.GetInterface());
  SetIFBuf(before, a.GetInterface());
  SetIFBuf(before, b.GetInterface());
  SetIFBuf(behind, b.GetInterface());
  SetIFBuf(behind, a.GetInterface());
  EXPECT_EQ(2, CountedInterface::live);
  a.RemoveInterface();
  EXPECT_EQ(1, CountedInterface::live);
  EXPECT_EQ(nullptr, a.GetInterface());
  EXPECT_EQ(nullptr, CheckIFBuf(alone)->First());
  EXPECT_EQ(b.GetInterface(), CheckIFBuf(before)->First());
  EXPECT_EQ(b.GetInterface(), CheckIFBuf(behind)->First());
  b.RemoveInterface();
  EXPECT_EQ(nullptr, CheckIFBuf(before)->First());
  EXPECT_EQ(nullptr, CheckIFBuf(behind)->First());
}

TEST(Interfaces, MayBeRemovedTwice) {
  Service a("a");
  a.RemoveInterface();
  a.CreateInterface();
  a.RemoveInterface();
  a.RemoveInterface();
  EXPECT_EQ(nullptr, a.GetInterface());
}

TEST(Interfaces, AreRemovedWithTheirServiceObject) {
  const std::string name = "bundle manager test, destroyed";
  {
    Service a("a");
    SetIFBuf(name, a.CreateInterface());
    EXPECT_EQ(1, CountedInterface::live);
  }
  EXPECT_EQ(0, CountedInterface::live);
  EXPECT_EQ(nullptr, CheckIFBuf(name)->First());
}

}  // namespace
