#include "client/agent/Fetch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "client/App.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::ElementsAre;

constexpr CORBA::ULong kNodes = 5;

class Fetch : public WithAgent {
 protected:
  Fetch() { script.nodes = makeNodes(kNodes); }
};

std::vector<std::string> idsOf(const std::string& json) {
  std::vector<std::string> ids;
  for (const auto& record : nlohmann::json::parse(json)) {
    ids.push_back(record["name"].back()["value"]);
  }
  return ids;
}

TEST_F(Fetch, NeedsOneCallWhenTheFirstBatchHasEveryRecord) {
  const std::string json = output(options("topo", kNodes + 1));
  EXPECT_THAT(idsOf(json), ElementsAre("n0", "n1", "n2", "n3", "n4"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(6)"));
}

TEST_F(Fetch, NeedsNoIteratorWhenTheFirstBatchFitsExactly) {
  EXPECT_THAT(idsOf(output(options("topo", kNodes))), ElementsAre("n0", "n1", "n2", "n3", "n4"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(5)"));
}

TEST_F(Fetch, FetchesOneRemainingRecordFromTheIterator) {
  EXPECT_THAT(idsOf(output(options("topo", kNodes - 1))),
              ElementsAre("n0", "n1", "n2", "n3", "n4"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(4)", "next_n(4)"));
}

TEST_F(Fetch, FetchesOneRecordACall) {
  EXPECT_THAT(idsOf(output(options("topo", 1))), ElementsAre("n0", "n1", "n2", "n3", "n4"));
  EXPECT_THAT(script.calls(),
              ElementsAre("topo(1)", "next_n(1)", "next_n(1)", "next_n(1)", "next_n(1)"));
}

TEST_F(Fetch, FetchesBatchesOfTheDefaultSizeAfterAHowManyOfZero) {
  EXPECT_THAT(idsOf(output(options("topo", 0))), ElementsAre("n0", "n1", "n2", "n3", "n4"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(0)", "next_n(1000)"));
}

TEST_F(Fetch, PassesTheLargestHowMany) {
  EXPECT_THAT(idsOf(output(options("topo", 4294967295U))),
              ElementsAre("n0", "n1", "n2", "n3", "n4"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(4294967295)"));
}

TEST_F(Fetch, PrintsTheSameTextForEveryBatchSize) {
  for (const Format format : {Format::kJson, Format::kCsv, Format::kTable}) {
    Options all = options("topo", 1000);
    all.format = format;
    const std::string expected = output(all);
    for (const std::uint32_t howMany : {0U, 1U, 2U, kNodes - 1, kNodes, kNodes + 1}) {
      all.access.howMany = howMany;
      EXPECT_EQ(output(all), expected) << howMany;
    }
  }
}

TEST_F(Fetch, ReturnsNoRecordForAnEmptyView) {
  script.nodes.length(0);
  for (const std::uint32_t howMany : {0U, 1U, 1000U}) {
    EXPECT_EQ(output(options("topo", howMany)), "[]\n");
  }
}

TEST_F(Fetch, ShowsItsProgressOnATerminalAndClearsIt) {
  std::ostringstream out;
  std::ostringstream err;
  execute(options("topo", 2), server().get(), {out, err, true}, retry);
  EXPECT_EQ(err.str(), "\r 2 records\r 4 records\r 5 records\r" + std::string(10, ' ') + "\r");
  EXPECT_EQ(out.str(), output(options("topo", 2)));
}

TEST_F(Fetch, ClearsTheProgressBeforeAFailure) {
  script.onNext = [] { throw CORBA::NO_MEMORY(); };
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_THROW(execute(options("topo", 2), server().get(), {out, err, true}, retry),
               CORBA::NO_MEMORY);
  EXPECT_EQ(err.str(), "\r 2 records\r" + std::string(10, ' ') + "\r");
}

TEST_F(Fetch, DestroysTheIteratorAfterAnExceptionOfTheAgent) {
  script.onNext = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INTERNAL_ERROR, "no more");
  };
  EXPECT_EQ(failureOf(options("topo", 2)),
            exitWith(3, "topoctl: the agent refused: EXCPT_INTERNAL_ERROR: no more\n"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(2)", "next_n(2)", "destroy"));
}

TEST_F(Fetch, DestroysTheIteratorAfterAFailedCall) {
  script.onNext = [] { throw CORBA::NO_MEMORY(); };
  EXPECT_EQ(failureOf(options("topo", 2)),
            exitWith(4, "topoctl: a call to the agent at '" + agentReference() +
                            "' failed: NO_MEMORY\n"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(2)", "next_n(2)", "destroy"));
}

TEST_F(Fetch, DoesNotDestroyAnUnreachableIterator) {
  script.onNext = [] { throw CORBA::TIMEOUT(); };
  EXPECT_EQ(failureOf(options("topo", 2)),
            exitWith(2, "topoctl: the agent at '" + agentReference() +
                            "' did not answer within 30 seconds; raise --timeout\n"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(2)", "next_n(2)"));
}

TEST_F(Fetch, FailsWhenTheIteratorDeliversNoRecord) {
  script.deliversNothing = true;
  EXPECT_EQ(failureOf(options("topo", 2)),
            exitWith(4, "topoctl: the iterator delivers nothing, yet says that more remains\n"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(2)", "next_n(2)", "destroy"));
}

TEST_F(Fetch, ReportsAnIteratorThatEndedEarlyAndPrintsNoRecord) {
  script.vanishes = true;
  EXPECT_EQ(
      failureOf(options("topo", 2)),
      exitWith(4,
               "topoctl: the iterator ended early, after 4 records: the agent was restarted, "
               "reloaded its module, or dropped the iterator because it was idle for too long\n"));
  EXPECT_THAT(script.calls(), ElementsAre("topo(2)", "next_n(2)"));
}

TEST_F(Fetch, GetsCapabilitiesInOneCall) {
  script.capabilities.length(2);
  script.capabilities[0].name = "b";
  script.capabilities[0].value = "Supported";
  script.capabilities[1].name = "a";
  script.capabilities[1].value = "Unsupported";
  EXPECT_EQ(output(options("capabilities")),
            "[\n{\"name\":\"b\",\"value\":\"Supported\"},\n"
            "{\"name\":\"a\",\"value\":\"Unsupported\"}\n]\n");
  EXPECT_THAT(script.calls(), ElementsAre("capabilities"));
}

}  // namespace
}  // namespace topoctl
