// The functions of the contracts with a registered agent and without one.

#include "agent/host/RunningAgent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "agent/base/FailureCodes.h"
#include "agent/events/EventManager.h"
#include "agent/northbound/Northbound.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"
#include "platform/agent/AgentConfig.h"
#include "platform/agent/TAIteratorHelper.h"
#include "platform/agent/TANotification.h"
#include "platform/agent/TECommonFunc.h"
#include "platform/framework/ProcessException.h"

namespace {

using NS_CORBA::CorbaAgentConfig;
using NS_CORBA::CorbaBaseAgentConfig;
using NS_CORBA::TAIteratorHelper;
using NS_CORBA::TANotification;
using NS_CORBA::TECommonFunc;

// A manager that counts its live servants.
class CountedManager final : public virtual POA_common::Common_I {
 public:
  explicit CountedManager(int& alive) : alive_(alive) { ++alive_; }

  void setNativeEMSName(const globaldefs::NVSList_T&, const char*) override {}
  void setUserLabel(const globaldefs::NVSList_T&, const char*, CORBA::Boolean) override {}
  void setOwner(const globaldefs::NVSList_T&, const char*) override {}
  void getCapabilities(common::CapabilityList_T_out) override { throw CORBA::NO_IMPLEMENT(); }
  void setAdditionalInfo(const globaldefs::NVSList_T&, globaldefs::NVSList_T&) override {}

 protected:
  ~CountedManager() override { --alive_; }

 private:
  int& alive_;
};

template <typename Call>
std::int32_t codeThrownBy(Call call) {
  try {
    call();
  } catch (const ProcessException& failure) {
    return failure.errorCode;
  }
  return 0;
}

TEST(WithoutAnAgent, ManagersCannotBeRegistered) {
  CorbaBaseAgentConfig& config = *CorbaBaseAgentConfig::Instance();
  const auto expected = static_cast<std::int32_t>(agent::kNotImplemented);
  EXPECT_EQ(expected, codeThrownBy([&] { config.RegisterMgr("M", nullptr); }));
  EXPECT_EQ(expected, codeThrownBy([&] { config.UnregisterMgr("M"); }));
}

TEST(WithoutAnAgent, AServantThatCannotBeRegisteredIsReleased) {
  int alive = 0;
  auto* const servant = new CountedManager(alive);
  EXPECT_EQ(static_cast<std::int32_t>(agent::kNotImplemented),
            codeThrownBy([&] { CorbaAgentConfig::Instance()->RegisterServant("M", servant); }));
  EXPECT_EQ(0, alive);
}

TEST(WithoutAnAgent, TheConfigurationIsEmpty) {
  EXPECT_EQ("", CorbaBaseAgentConfig::Instance()->EmsName());
  EXPECT_FALSE(CorbaAgentConfig::Instance()->GetTestSwitch());
}

TEST(WithoutAnAgent, IteratorsCannotBeAdded) {
  int alive = 0;
  const PortableServer::ServantBase_var servant = new CountedManager(alive);
  EXPECT_TRUE(CORBA::is_nil(TAIteratorHelper::getIteratorPoa()));
  EXPECT_EQ(agent::kNotImplemented, TAIteratorHelper::add_Iterator(servant.in()));
  TAIteratorHelper::deactive_object(servant.in());
  EXPECT_EQ(1, alive);
}

TEST(WithoutAnAgent, SettersAreNotImplemented) {
  globaldefs::NVSList_T info;
  std::string reason = "old";
  EXPECT_EQ(agent::kNotImplemented, TECommonFunc::onSetUserLabel({}, "", false));
  EXPECT_EQ(agent::kNotImplemented, TECommonFunc::onSetOwner({}, ""));
  EXPECT_EQ(agent::kNotImplemented, TECommonFunc::onSetNativeEMSName({}, ""));
  EXPECT_EQ(agent::kNotImplemented, TECommonFunc::resetObject({}));
  EXPECT_EQ(agent::kNotImplemented, TECommonFunc::onSetAdditionalInfo({}, info, reason));
  EXPECT_EQ("", reason);
}

TEST(WithoutAnAgent, NotificationsAreDropped) {
  TANotification::OnObjectCreated({}, {}, true);
  TANotification::OnObjectDeleted({}, true);
  TANotification::OnObjectAVC({}, {}, true, {}, true);
}

TEST(RunningAgent, IsTheRegisteredAgent) {
  agent::EventManager events;
  EXPECT_EQ(nullptr, TEEventMgr::Instance());
  {
    const agent::AgentRegistration registration({nullptr, &events});
    EXPECT_EQ(&events, TEEventMgr::Instance());
  }
  EXPECT_EQ(nullptr, TEEventMgr::Instance());
}

TEST(RunningAgent, AnswersForItsNorthboundSide) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  agent::Northbound northbound(*server, "E", true);
  const agent::AgentRegistration registration({&northbound});
  EXPECT_EQ("E", CorbaBaseAgentConfig::Instance()->EmsName());
  EXPECT_TRUE(CorbaAgentConfig::Instance()->GetTestSwitch());
  northbound.open();
  const PortableServer::POA_var poa = TAIteratorHelper::getIteratorPoa();
  EXPECT_FALSE(CORBA::is_nil(poa.in()));
  northbound.retire();
}

}  // namespace
