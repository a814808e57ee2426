// Access control: the switch for events, and who a thread acts as.

#include "agent/host/SecurityService.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using agent::AccessContext;
using agent::SecurityService;

AccessContext accessOfANewThread() {
  AccessContext access;
  std::thread([&] { access = SecurityService::currentAccess(); }).join();
  return access;
}

TEST(SecurityService, AllowsEventsAsItWasToldUntilItIsToldOtherwise) {
  SecurityService open(true);
  SecurityService closed(false);
  EXPECT_TRUE(open.isEventAccessAllowed());
  EXPECT_FALSE(closed.isEventAccessAllowed());
  open.allowEventAccess(false);
  closed.allowEventAccess(true);
  EXPECT_FALSE(open.isEventAccessAllowed());
  EXPECT_TRUE(closed.isEventAccessAllowed());
}

TEST(SecurityService, KnowsNobodyOnAThreadThatHasNotSaidWhoItIs) {
  EXPECT_EQ("", accessOfANewThread().identity);
  EXPECT_EQ(0, accessOfANewThread().level);
}

TEST(SecurityService, KeepsAnAccessContextForEachThread) {
  SecurityService service(true);
  std::thread([&] {
    service.setAccessIdentity("NT");
    service.setAccessLevel(1);
    EXPECT_EQ("NT", SecurityService::currentAccess().identity);
    EXPECT_EQ(1, SecurityService::currentAccess().level);
    EXPECT_EQ("", accessOfANewThread().identity);
    EXPECT_EQ(0, accessOfANewThread().level);
    service.setAccessIdentity("operator");
    EXPECT_EQ("operator", SecurityService::currentAccess().identity);
    EXPECT_EQ(1, SecurityService::currentAccess().level);
  }).join();
}

TEST(SecurityService, IsFoundBehindThePublishedInterface) {
  SecurityService service(true);
  NS_BUNDLEMGR1::ServiceInterface* published = &service;
  auto* found = static_cast<NS_SECURITY_SERVICE1::SecurityIF*>(published);
  EXPECT_EQ(found, dynamic_cast<NS_SECURITY_SERVICE1::SecurityIF*>(published));
  EXPECT_TRUE(found->isEventAccessAllowed());
}

}  // namespace
