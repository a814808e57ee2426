// Access control: the switch for events.

#include "agent/host/SecurityService.h"

#include <gtest/gtest.h>

namespace {

using agent::SecurityService;

TEST(SecurityService, AnswersAsItWasConstructed) {
  EXPECT_TRUE(SecurityService(true).isEventAccessAllowed());
  EXPECT_FALSE(SecurityService(false).isEventAccessAllowed());
}

TEST(SecurityService, IgnoresIdentityAndLevel) {
  SecurityService service(false);
  service.setAccessIdentity("operator");
  service.setAccessLevel(1);
  EXPECT_FALSE(service.isEventAccessAllowed());
}

TEST(SecurityService, IsFoundBehindThePublishedInterface) {
  SecurityService service(true);
  NS_BUNDLEMGR1::ServiceInterface* published = &service;
  auto* found = static_cast<NS_SECURITY_SERVICE1::SecurityIF*>(published);
  EXPECT_EQ(found, dynamic_cast<NS_SECURITY_SERVICE1::SecurityIF*>(published));
  EXPECT_TRUE(found->isEventAccessAllowed());
}

}  // namespace
