#include "agent/access/AccessControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "idl/ObjectKeys.h"
#include "idl/PermissionMinors.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/support/CapturedLog.h"

namespace agent {
namespace {

using orb::Peer;
using testing::HasSubstr;

AccessRules rulesOf(const std::string& text) {
  const support::TemporaryDirectory directory;
  return AccessRules::read(directory.write("access", text));
}

std::string keyOf(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::kConsole:
      return object_key::kConsole;
    case ObjectKind::kSession:
      return object_key::kSession;
    case ObjectKind::kNetwork:
      break;
  }
  return object_key::kManager;
}

class AccessControls : public testing::Test {
 protected:
  static Peer peer(std::size_t endpoint = 0) {
    return {Peer::Transport::kTcp, "10.1.2.3", "", endpoint};
  }

  // Returns the minor code of the refusal, 0 for an admitted request.
  static unsigned long refusalOf(AccessControl& control, const std::string& key,
                                 const std::string& operation, const Peer& from = peer()) {
    try {
      control.check(key, {operation, from, 100});
    } catch (const CORBA::NO_PERMISSION& refusal) {
      EXPECT_EQ(CORBA::COMPLETED_NO, refusal.completed());
      return refusal.minor();
    }
    return 0;
  }

  static std::unique_ptr<AccessControl> control(const std::string& rules,
                                                AccessSettings settings = {}) {
    return std::make_unique<AccessControl>(rulesOf(rules), settings,
                                           [] { return std::chrono::steady_clock::time_point(); });
  }

  support::CapturedLog log_{kLogErrors};
};

TEST_F(AccessControls, CheckEveryOperationAgainstEveryRole) {
  const std::pair<const char*, Role> roles[] = {
      {"read", Role::kRead}, {"write", Role::kWrite}, {"operate", Role::kOperate}};
  for (const auto& [name, role] : roles) {
    const auto access = control(std::string("address 10.1.2.3 ") + name);
    for (const Operation& operation : operations()) {
      const bool isAllowed = !operation.role || *operation.role == role;
      EXPECT_EQ(isAllowed ? 0 : permission_minor::kNoRole,
                refusalOf(*access, keyOf(operation.kind), operation.name))
          << operation.name << " with the role " << name;
    }
  }
}

TEST_F(AccessControls, RefuseEveryOperationWithoutARole) {
  const auto access = control("unix read");
  for (const Operation& operation : operations()) {
    EXPECT_EQ(permission_minor::kNoRole, refusalOf(*access, keyOf(operation.kind), operation.name))
        << operation.name;
  }
}

TEST_F(AccessControls, RefuseUnknownOperationsWithoutTheRoleOperate) {
  const auto reader = control("address 10.1.2.3 read write");
  EXPECT_EQ(permission_minor::kNoRole, refusalOf(*reader, object_key::kManager, "_get_secret"));
  const auto operating = control("address 10.1.2.3 operate");
  EXPECT_EQ(0U, refusalOf(*operating, object_key::kManager, "_get_secret"));
}

TEST_F(AccessControls, RefuseEveryChangeOfAReadOnlyAgent) {
  AccessSettings settings;
  settings.readOnly = true;
  const auto access = control("address 10.1.2.3 read write operate", settings);
  for (const Operation& operation : operations()) {
    EXPECT_EQ(operation.isChange ? permission_minor::kReadOnly : 0,
              refusalOf(*access, keyOf(operation.kind), operation.name))
        << operation.name;
  }
}

TEST_F(AccessControls, ServeConsoleAndSessionAtTheirOwnEndpointOnly) {
  AccessSettings settings;
  settings.consoleEndpoint = 1;
  const auto access = control("address 10.1.2.3 read write operate", settings);
  for (const Operation& operation : operations()) {
    const bool isElsewhere = operation.kind != ObjectKind::kNetwork;
    EXPECT_EQ(isElsewhere ? permission_minor::kOtherEndpoint : 0,
              refusalOf(*access, keyOf(operation.kind), operation.name, peer(0)))
        << operation.name;
    EXPECT_EQ(0U, refusalOf(*access, keyOf(operation.kind), operation.name, peer(1)))
        << operation.name;
  }
}

TEST_F(AccessControls, FollowNewRules) {
  const auto access = control("address 10.1.2.3 read");
  EXPECT_EQ(0U, refusalOf(*access, object_key::kManager, "getCapabilities"));
  access->replaceRules(rulesOf("address 10.1.2.3 none"));
  EXPECT_NE(0U, refusalOf(*access, object_key::kManager, "getCapabilities"));
}

TEST_F(AccessControls, LogRefusalsWithTheirReason) {
  const auto access = control("address 10.1.2.3 read");
  refusalOf(*access, object_key::kConsole, "deleteNode");
  EXPECT_THAT(log_.text(),
              HasSubstr("10.1.2.3: \"deleteNode\" of the console is refused: the client "
                        "does not have the role operate"));
}

TEST_F(AccessControls, LogAFloodOfRefusalsAtALimitedRate) {
  const auto access = control("unix read");
  for (int i = 0; i < 1000; ++i) {
    refusalOf(*access, object_key::kManager, "x\ny");
  }
  const std::string text = log_.text();
  EXPECT_EQ(20, std::count(text.begin(), text.end(), '\n'));
}

}  // namespace
}  // namespace agent
