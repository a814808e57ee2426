// The command that sets attributes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/unit/client/support/RunProgram.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::ElementsAre;
using Words = std::vector<std::string>;

class SetAttributeTest : public WithAgent {
 protected:
  SetAttributeTest() { script.nodes = makeNodes(1); }

  Ended run(Words words) {
    script.settle();
    words.insert(words.begin(), {"--agent", agentReference(), "set"});
    return runProgram(words);
  }

  // Runs a command with a whole name, which makes one call and prints nothing. Returns the call.
  std::string callOf(const std::string& attribute, const std::string& value) {
    const std::size_t before = script.calls().size();
    const Ended ended =
        run({attribute, "--name", "EMS=Z\u00fcrich", "--name", "OS=1", "--", value});
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.out + ended.err, "");
    EXPECT_EQ(script.calls().size(), before + 1);
    return script.lastCall();
  }
};

TEST_F(SetAttributeTest, SendsAnyTextUnchanged) {
  for (const std::string text : {"", "ops", "-x", "a=b", " ", "Z\u00fcrich \u6771\u4eac \U0001F600",
                                 "two\nlines", "[a,b]"}) {
    const std::string arguments = "((EMS,Z\u00fcrich)(OS,1), " + text + ")";
    EXPECT_EQ(callOf("user-label", text), "userLabel" + arguments);
    EXPECT_EQ(callOf("owner", text), "owner" + arguments);
    EXPECT_EQ(callOf("native-name", text), "nativeEMSName" + arguments);
  }
}

TEST_F(SetAttributeTest, UsesTheEmsOfTheFirstNode) {
  for (const std::string object : {"TopoSubnetwork=core", "ManagedElement=5", "ClockTopoLinkId="}) {
    EXPECT_EQ(run({"owner", object, "ops"}).status, 0);
    std::string pair = object;
    std::replace(pair.begin(), pair.end(), '=', ',');
    EXPECT_EQ(script.lastCall(), "owner((EMS,zurich)(" + pair + "), ops)");
  }
  EXPECT_EQ(script.firstCall(), "topo(1)");
}

TEST_F(SetAttributeTest, EndsWith4WithoutAnEms) {
  script.nodes.length(0);
  const Ended ended = run({"owner", "OS=1", "ops"});
  EXPECT_EQ(ended.status, 4);
  EXPECT_EQ(ended.err,
            "topoctl: the agent shows no node to learn the EMS name from; give the whole name with "
            "--name\n");
  EXPECT_THAT(script.calls(), ElementsAre("topo(1)"));
}

TEST_F(SetAttributeTest, AsksForAUniqueUserLabel) {
  EXPECT_EQ(run({"user-label", "--name", "OS=1", "x", "--unique"}).status, 0);
  EXPECT_THAT(script.calls(), ElementsAre("userLabel((OS,1), x, unique)"));
}

TEST_F(SetAttributeTest, PrintsTheReturnedInformation) {
  addPair(script.storedInfo, "Region", "north");
  addPair(script.storedInfo, "Owner", "Z\u00fcrich");
  const auto printed = [this](const std::string& format) {
    return run({"info", "--name", "OS=1", "Region=north", "--format", format}).out;
  };
  EXPECT_EQ(printed("table"), "name    value\nRegion  north\nOwner   Z\u00fcrich\n");
  EXPECT_EQ(printed("json"),
            "[\n{\"name\":\"Region\",\"value\":\"north\"},\n"
            "{\"name\":\"Owner\",\"value\":\"Z\u00fcrich\"}\n]\n");
  EXPECT_EQ(printed("csv"), "name,value\r\nRegion,north\r\nOwner,Z\u00fcrich\r\n");
  EXPECT_EQ(script.lastCall(), "info((OS,1), (Region,north))");
}

TEST_F(SetAttributeTest, RemovesInformationWithAnEmptyText) {
  const Ended ended = run({"info", "--name", "OS=1", "Region=", "--format", "json"});
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.out, "[]\n");
  EXPECT_THAT(script.calls(), ElementsAre("info((OS,1), (Region,))"));
}

TEST_F(SetAttributeTest, EndsWith3AndTheReasonOfTheAgent) {
  script.onSet = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_USERLABEL_IN_USE, "by OS=2");
  };
  for (const char* const attribute : {"user-label", "owner", "native-name", "info"}) {
    const Ended ended = run({attribute, "OS=1", "x=y"});
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "topoctl: the agent refused: EXCPT_USERLABEL_IN_USE: by OS=2\n");
  }
}

TEST_F(SetAttributeTest, EndsWith1WithoutACallOnUsageErrors) {
  for (const Words& words : std::vector<Words>{{},
                                               {"colour", "OS=1", "x"},
                                               {"owner", "OS=1"},
                                               {"owner", "OS", "x"},
                                               {"info", "OS=1", "x"},
                                               {"owner", "OS=1", "x", "--unique"}}) {
    const Ended ended = run(words);
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
  }
  EXPECT_THAT(script.calls(), ElementsAre());
}

}  // namespace
}  // namespace topoctl
