// The commands that print views, and the name in the request of `below`.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::ElementsAre;

constexpr CORBA::ULong kRecords = 5;

class Views : public WithAgent {
 protected:
  Views() {
    script.nodes = makeNodes(kRecords);
    script.links = makeLinks(kRecords);
  }

  Options below(const std::vector<TypedPair>& object, bool isWholeName) const {
    Options options = this->options("below");
    options.arguments.object = object;
    options.arguments.isWholeName = isWholeName;
    return options;
  }

  // Complete options for any view.
  Options viewOptions(const std::string& command) const {
    Options options = this->options(command);
    options.arguments.object = {{"TopoSubnetwork", "core"}};
    options.arguments.isWholeName = true;
    return options;
  }
};

struct Batching {
  std::uint32_t howMany;
  std::vector<std::string> next;  // the calls of the iterator
};

TEST_F(Views, PrintTheSameForEveryBatchSize) {
  const std::vector<Batching> batchings = {
      {0, {"next_n(1000)"}},
      {1, {"next_n(1)", "next_n(1)", "next_n(1)", "next_n(1)"}},
      {kRecords - 1, {"next_n(4)"}},
      {kRecords, {}},
      {kRecords + 1, {}},
      {4294967295U, {}}};
  const std::vector<std::pair<std::string, std::string>> views = {
      {"topo", "topo("},
      {"protect", "protect("},
      {"below", "below((TopoSubnetwork,core), "},
      {"clocks", "clocks("},
      {"clock-links", "links("}};
  for (const auto& [command, call] : views) {
    for (const Format format : {Format::kTable, Format::kJson, Format::kCsv}) {
      Options options = viewOptions(command);
      options.format = format;
      const std::string expected = output(options);
      for (const Batching& batching : batchings) {
        const std::size_t before = script.calls().size();
        options.access.howMany = batching.howMany;
        EXPECT_EQ(output(options), expected);
        std::vector<std::string> calls = {call + std::to_string(batching.howMany) + ")"};
        calls.insert(calls.end(), batching.next.begin(), batching.next.end());
        const std::vector<std::string> all = script.calls();
        EXPECT_EQ(std::vector<std::string>(all.begin() + static_cast<long>(before), all.end()),
                  calls);
      }
    }
  }
}

TEST_F(Views, OfNodesPrintTheSameForTheSameNodes) {
  const std::string expected = output(viewOptions("topo"));
  for (const char* const command : {"protect", "below", "clocks"}) {
    EXPECT_EQ(output(viewOptions(command)), expected);
  }
}

TEST_F(Views, MayBeEmpty) {
  script.nodes.length(0);
  script.links.length(0);
  for (const char* const command : {"topo", "protect", "below", "clocks", "clock-links"}) {
    EXPECT_EQ(output(viewOptions(command)), "[]\n");
  }
}

TEST_F(Views, ReportAnExceptionOfTheAgent) {
  script.onView = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INVALID_INPUT, "no way");
  };
  for (const char* const command : {"protect", "clocks", "clock-links", "tree"}) {
    EXPECT_EQ(failureOf(viewOptions(command)),
              exitWith(3, "topoctl: the agent refused: EXCPT_INVALID_INPUT: no way\n"));
  }
}

TEST_F(Views, BelowAnUnknownSubnetworkNameTheSubnetwork) {
  script.onView = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INVALID_INPUT, "please");
  };
  EXPECT_EQ(
      failureOf(below({{"EMS", "e"}, {"TopoSubnetwork", "no\npe"}}, true)),
      exitWith(3,
               "topoctl: the agent refused: EXCPT_INVALID_INPUT: please (there is no topology "
               "subnetwork {EMS=e; TopoSubnetwork=no\\npe})\n"));
  script.onView = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INTERNAL_ERROR, "no memory");
  };
  EXPECT_EQ(failureOf(viewOptions("below")),
            exitWith(3, "topoctl: the agent refused: EXCPT_INTERNAL_ERROR: no memory\n"));
}

TEST_F(Views, OfLinksDestroyTheirIteratorAfterAFailure) {
  script.onNext = [] { throw CORBA::NO_MEMORY(); };
  EXPECT_EQ(failureOf(options("clock-links", 2)),
            exitWith(4, "topoctl: a call to the agent at '" + agentReference() +
                            "' failed: NO_MEMORY\n"));
  EXPECT_THAT(script.calls(), ElementsAre("links(2)", "next_n(2)", "destroy"));
}

// ---- links

class LinkFormats : public Views {
 protected:
  std::string printed(Format format) const {
    Options links = options("clock-links");
    links.format = format;
    return output(links);
  }

  LinkFormats() {
    script.links.length(2);
    script.links[1].direction = globaldefs::CD_UNI;
    script.links[1].rate = 32767;
    script.links[1].owner = "Z\u00fcrich, \"ops\"";
  }
};

TEST_F(LinkFormats, IncludeJson) {
  EXPECT_EQ(printed(Format::kJson),
            "[\n"
            R"({"name":[{"name":"EMS","value":"zurich"},{"name":"ClockTopoLinkId","value":"e0"}],)"
            R"("userLabel":"label of e0","nativeEMSName":"name of e0","owner":"ops","direction":1,)"
            R"("rate":-1,"aEndTP":[{"name":"ManagedElement","value":"1"}],)"
            R"("zEndTP":[{"name":"ManagedElement","value":"2"}],)"
            R"("additionalInfo":[{"name":"Region","value":"north"}]},)"
            "\n"
            R"({"name":[{"name":"EMS","value":"zurich"},{"name":"ClockTopoLinkId","value":"e1"}],)"
            R"("userLabel":"label of e1","nativeEMSName":"name of e1","owner":")"
            "Z\u00fcrich, \\\"ops\\\""
            R"(","direction":0,"rate":32767,"aEndTP":[{"name":"ManagedElement","value":"1"}],)"
            R"("zEndTP":[{"name":"ManagedElement","value":"2"}],)"
            R"("additionalInfo":[{"name":"Region","value":"north"}]})"
            "\n]\n");
}

TEST_F(LinkFormats, IncludeCsv) {
  EXPECT_EQ(printed(Format::kCsv),
            "name,userLabel,nativeEMSName,owner,direction,rate,aEndTP,zEndTP,additionalInfo\r\n"
            "EMS=zurich;ClockTopoLinkId=e0,label of e0,name of e0,ops,1,-1,ManagedElement=1,"
            "ManagedElement=2,Region=north\r\n"
            "EMS=zurich;ClockTopoLinkId=e1,label of e1,name of e1,\"Z\u00fcrich, \"\"ops\"\"\",0,"
            "32767,ManagedElement=1,ManagedElement=2,Region=north\r\n");
}

TEST_F(LinkFormats, IncludeATable) {
  EXPECT_EQ(
      printed(Format::kTable),
      "name                userLabel    nativeEMSName  owner          direction   rate  "
      "aEndTP            zEndTP            additionalInfo\n"
      "ClockTopoLinkId=e0  label of e0  name of e0     ops                    1     -1  "
      "ManagedElement=1  ManagedElement=2  Region=north\n"
      "ClockTopoLinkId=e1  label of e1  name of e1     Z\u00fcrich, \"ops\"          0  32767  "
      "ManagedElement=1  ManagedElement=2  Region=north\n");
}

// ---- below

TEST_F(Views, BelowASubnetworkUseTheEmsOfTheFirstNode) {
  output(below({{"TopoSubnetwork", "core"}}, false));
  EXPECT_THAT(script.calls(),
              ElementsAre("topo(1)", "destroy", "below((EMS,zurich)(TopoSubnetwork,core), 1000)"));
}

TEST_F(Views, BelowASubnetworkNeedNoIteratorWhenThereIsOneNode) {
  script.nodes.length(1);
  script.nodes[0].name[0].value = "Z\u00fcrich";
  output(below({{"TopoSubnetwork", ""}}, false));
  EXPECT_THAT(script.calls(),
              ElementsAre("topo(1)", "below((EMS,Z\u00fcrich)(TopoSubnetwork,), 1000)"));
}

TEST_F(Views, BelowASubnetworkFailWithoutAnEms) {
  script.nodes[0].name.length(0);
  EXPECT_EQ(
      failureOf(below({{"TopoSubnetwork", "core"}}, false)),
      exitWith(4,
               "topoctl: the name of the agent's first node has no EMS; give the whole name with "
               "--name\n"));
  script.nodes.length(0);
  EXPECT_EQ(
      failureOf(below({{"TopoSubnetwork", "core"}}, false)),
      exitWith(4,
               "topoctl: the agent shows no node to learn the EMS name from; give the whole name "
               "with --name\n"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(1)", "destroy", "topo(1)"));
}

TEST_F(Views, BelowAWholeNameSendTheNameUnchanged) {
  output(below({{"", ""}, {"b", "a=b"}, {"a", "\u6771\u4eac"}, {"b", "a=b"}}, true));
  EXPECT_THAT(script.calls(), ElementsAre("below((,)(b,a=b)(a,\u6771\u4eac)(b,a=b), 1000)"));
}

}  // namespace
}  // namespace topoctl
