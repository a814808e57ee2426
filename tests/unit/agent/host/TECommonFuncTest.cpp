// The setters of the contract: their failure codes, and the exceptions that clients get for the
// codes.

#include "platform/agent/TECommonFunc.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

#include "agent/base/FailureCodes.h"
#include "agent/changes/AttributeService.h"
#include "agent/host/RunningAgent.h"
#include "agent/store/sqlite/SqliteStore.h"
#include "platform/agent/Failures.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/support/StoredOwner.h"

namespace {

using globaldefs::NVSList_T;
using NS_CORBA::TECommonFunc;

agent::Network smallNetwork() {
  agent::Network network;
  for (const char* id : {"core", "west"}) {
    NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
    node.nodeId = id;
    node.nodeType = NS_DOMAIN::kTopoSubnetwork;
  }
  return network;
}

void setPair(globaldefs::NameAndStringValue_T& pair, const char* name, const std::string& value) {
  pair.name = CORBA::string_dup(name);
  pair.value = CORBA::string_dup(value.c_str());
}

NVSList_T subnetwork(const std::string& id) {
  NVSList_T name;
  name.length(2);
  setPair(name[0], "EMS", "E");
  setPair(name[1], "TopoSubnetwork", id);
  return name;
}

// The exception that a failure becomes for a client.
struct Thrown {
  globaldefs::ExceptionType_T type = globaldefs::EXCPT_INTERNAL_ERROR;
  std::string reason;

  bool operator==(const Thrown& other) const {
    return type == other.type && reason == other.reason;
  }
};

void PrintTo(const Thrown& thrown, std::ostream* out) {
  *out << "type " << thrown.type << ", reason " << thrown.reason;
}

// The exception of the work; no value if the work throws nothing.
std::optional<Thrown> thrownBy(const std::function<void()>& work) {
  try {
    work();
  } catch (const globaldefs::ProcessingFailureException& failure) {
    return Thrown{failure.exceptionType, failure.errorReason.in()};
  }
  return std::nullopt;
}

std::optional<Thrown> thrownFor(CORBA::ULong code) {
  return thrownBy([&] { NS_CORBA::ThrowException(code); });
}

std::string codeText(CORBA::ULong code) {
  return " (code " + std::to_string(code) + ")";
}

class CommonAttributes : public testing::Test {
 protected:
  CommonAttributes() { store_.load(smallNetwork()); }

  const support::TemporaryDirectory directory_;
  agent::SqliteStore store_{directory_.file("store.db")};
  agent::NetworkModel model_{smallNetwork()};
  agent::NetworkWriter writer_{store_, model_};
  agent::AttributeService service_{"E", writer_};
  const agent::AgentRegistration registration_{{nullptr, nullptr, nullptr, &service_}};

  const Thrown noObject_{globaldefs::EXCPT_ENTITY_NOT_FOUND, "no object {EMS=E, TopoSubnetwork=x}"};
  const Thrown genericNoObject_{globaldefs::EXCPT_ENTITY_NOT_FOUND,
                                "no such object" + codeText(agent::kEntityNotFound)};
  const Thrown internalError_{globaldefs::EXCPT_INTERNAL_ERROR,
                              "internal error" + codeText(agent::kInternalError)};
};

TEST_F(CommonAttributes, AreStored) {
  EXPECT_EQ(std::nullopt,
            thrownFor(TECommonFunc::onSetUserLabel(subnetwork("core"), "label", true)));
  EXPECT_EQ(std::nullopt, thrownFor(TECommonFunc::onSetOwner(subnetwork("core"), "owner")));
  EXPECT_EQ(std::nullopt,
            thrownFor(TECommonFunc::onSetNativeEMSName(subnetwork("core"), "native")));
  EXPECT_EQ("label", model_.labelOf(54, "core"));
  EXPECT_EQ("owner", storedOwner(store_, {54, "core"}));
  EXPECT_EQ("native", store_.read().topoNodes.front().nativeName);
  EXPECT_EQ(std::nullopt, thrownFor(TECommonFunc::resetObject(subnetwork("core"))));
  EXPECT_EQ("", model_.labelOf(54, "core"));
}

TEST_F(CommonAttributes, ReturnTheStoredInformation) {
  NVSList_T info;
  info.length(1);
  setPair(info[0], "a", "1");
  std::string reason;
  EXPECT_EQ(0U, TECommonFunc::onSetAdditionalInfo(subnetwork("core"), info, reason));
  setPair(info[0], "b", "2");
  EXPECT_EQ(0U, TECommonFunc::onSetAdditionalInfo(subnetwork("core"), info, reason));
  ASSERT_EQ(2U, info.length());
  EXPECT_STREQ("a", info[0].name.in());
  EXPECT_STREQ("2", info[1].value.in());
  EXPECT_EQ("", reason);
}

TEST_F(CommonAttributes, FailWithATypeAndAReason) {
  EXPECT_EQ(noObject_, thrownFor(TECommonFunc::onSetUserLabel(subnetwork("x"), "", false)));
  EXPECT_EQ(noObject_, thrownFor(TECommonFunc::onSetOwner(subnetwork("x"), "")));
  EXPECT_EQ(noObject_, thrownFor(TECommonFunc::onSetNativeEMSName(subnetwork("x"), "")));
  EXPECT_EQ(noObject_, thrownFor(TECommonFunc::resetObject(subnetwork("x"))));
  EXPECT_EQ(
      (Thrown{globaldefs::EXCPT_INVALID_INPUT, "malformed name {}: it has 0 pairs instead of 2"}),
      thrownFor(TECommonFunc::onSetOwner(NVSList_T(), "")));
  TECommonFunc::onSetUserLabel(subnetwork("core"), "label", true);
  EXPECT_EQ((Thrown{globaldefs::EXCPT_USERLABEL_IN_USE,
                    "the user label \"label\" is already that of {EMS=E, TopoSubnetwork=core}"}),
            thrownFor(TECommonFunc::onSetUserLabel(subnetwork("west"), "label", true)));
}

TEST_F(CommonAttributes, FailWithTheReasonOfAdditionalInformation) {
  NVSList_T info;
  std::string reason;
  const CORBA::ULong code = TECommonFunc::onSetAdditionalInfo(subnetwork("x"), info, reason);
  EXPECT_EQ(noObject_, thrownBy([&] { NS_CORBA::ThrowException(code, reason); }));
  EXPECT_EQ(genericNoObject_, thrownFor(code));
}

TEST_F(CommonAttributes, TreatNullTextsAsEmpty) {
  EXPECT_EQ(0U, TECommonFunc::onSetUserLabel(subnetwork("core"), nullptr, true));
  EXPECT_EQ(0U, TECommonFunc::onSetOwner(subnetwork("core"), nullptr));
  EXPECT_EQ(0U, TECommonFunc::onSetNativeEMSName(subnetwork("core"), nullptr));
}

TEST_F(CommonAttributes, GiveAReasonOnce) {
  const CORBA::ULong code = TECommonFunc::onSetOwner(subnetwork("x"), "");
  EXPECT_EQ(noObject_, thrownFor(code));
  EXPECT_EQ(genericNoObject_, thrownFor(code));
}

TEST_F(CommonAttributes, GiveTheirReasonToAConstructedException) {
  const CORBA::ULong code = TECommonFunc::onSetOwner(subnetwork("x"), "");
  globaldefs::ProcessingFailureException failure;
  NS_CORBA::ConstructException(code, failure);
  EXPECT_STREQ("no object {EMS=E, TopoSubnetwork=x}", failure.errorReason.in());
}

TEST_F(CommonAttributes, GiveNoReasonToAnotherFailure) {
  const CORBA::ULong code = TECommonFunc::onSetOwner(subnetwork("x"), "");
  EXPECT_EQ(internalError_, thrownFor(agent::kInternalError));
  EXPECT_EQ(genericNoObject_, thrownFor(code));
}

TEST_F(CommonAttributes, GiveNoReasonToAFailureAfterASuccess) {
  const CORBA::ULong code = TECommonFunc::onSetOwner(subnetwork("x"), "");
  TECommonFunc::onSetOwner(subnetwork("core"), "");
  EXPECT_EQ(genericNoObject_, thrownFor(code));
}

TEST_F(CommonAttributes, GiveNoReasonToAnotherThread) {
  const CORBA::ULong code = TECommonFunc::onSetOwner(subnetwork("x"), "");
  std::optional<Thrown> other;
  std::thread([&] { other = thrownFor(code); }).join();
  EXPECT_EQ(genericNoObject_, other);
  EXPECT_EQ(noObject_, thrownFor(code));
}

TEST_F(CommonAttributes, PreferTheTextOfTheCaller) {
  const CORBA::ULong code = TECommonFunc::onSetOwner(subnetwork("x"), "");
  EXPECT_EQ((Thrown{globaldefs::EXCPT_ENTITY_NOT_FOUND, "given"}),
            thrownBy([&] { NS_CORBA::ThrowException(code, "given"); }));
}

TEST_F(CommonAttributes, AreAllSupported) {
  common::CapabilityList_T_var list;
  TECommonFunc::onGetCapabilities(list.out(), {"a::setOwner"}, {"a::get"});
  ASSERT_EQ(2U, list->length());
  EXPECT_STREQ("a::setOwner", list[CORBA::ULong{0}].name.in());
  EXPECT_STREQ("Supported", list[CORBA::ULong{0}].value.in());
  EXPECT_STREQ("a::get", list[CORBA::ULong{1}].name.in());
  EXPECT_STREQ("Supported", list[CORBA::ULong{1}].value.in());
}

// Runs in a child process with a file size limit that only the log stays within.
TEST_F(CommonAttributes, ReportAFailureOfTheStoreInTheLogOnly) {
  const auto fail = [&] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit small{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &small);
    exit(thrownFor(TECommonFunc::onSetOwner(subnetwork("core"), "owner")) == internalError_ ? 0
                                                                                            : 1);
  };
  EXPECT_EXIT(fail(), testing::ExitedWithCode(0),
              "setOwner: \\{EMS=E, TopoSubnetwork=core\\}: .*store.db: ");
}

}  // namespace
