#include "topo/Log.h"

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/Fixture.h"

namespace {

using Lines = std::vector<std::string>;

constexpr topo::LogSite kSite{"toposvc", 33};

class TopoLog : public fakes::Fixture {};

TEST_F(TopoLog, SetsThePositionBeforeATextIsWritten) {
  topo::logText(kSite, 3, "a text");
  EXPECT_EQ(fakes::Journal::lines(), Lines{"TaDebug(3, \"a text\") at toposvc:33 unknown"});
}

TEST_F(TopoLog, SetsThePositionBeforeAFormatIsWritten) {
  topo::logFormat({"topomanagementmgr", 7}, 1, "code = %d of %s", -4, "it");
  EXPECT_EQ(fakes::Journal::lines(),
            Lines{"TaDebugWithPara(1, \"code = -4 of it\") at topomanagementmgr:7 unknown"});
}

TEST_F(TopoLog, WritesAFormatWithoutParametersAsItIs) {
  topo::logFormat(kSite, 3, "no parameters");
  EXPECT_EQ(fakes::Journal::lines(),
            Lines{"TaDebugWithPara(3, \"no parameters\") at toposvc:33 unknown"});
}

TEST_F(TopoLog, OverwritesThePositionOfAnEarlierSite) {
  NS_CORBA::LogPosition* position = NS_CORBA::GetTss();
  position->file = "elsewhere";
  position->function = "something";
  position->line = 1;
  topo::setLogPosition(kSite);
  EXPECT_EQ(position->file, "toposvc");
  EXPECT_EQ(position->function, "unknown");
  EXPECT_EQ(position->line, 33);
}

TEST_F(TopoLog, SetsThePositionOfTheCallingThreadOnly) {
  topo::setLogPosition(kSite);
  std::thread([] { topo::setLogPosition({"topoeventmgr", 1}); }).join();
  EXPECT_EQ(NS_CORBA::GetTss()->file, "toposvc");
  EXPECT_EQ(NS_CORBA::GetTss()->line, 33);
}

TEST_F(TopoLog, HasTheLevelsOfErrorsAndTraces) {
  EXPECT_EQ(NS_CORBA::kLogError, 1);
  EXPECT_EQ(NS_CORBA::kLogTrace, 3);
}

TEST_F(TopoLog, PassesExceptionsOfTheLog) {
  fakes::onCall("TaDebug", 1, fakes::raiseRuntimeError("disk full"));
  EXPECT_THROW(topo::logText(kSite, 3, "text"), std::runtime_error);
}

TEST_F(TopoLog, WritesQuietlyAsOtherwise) {
  topo::logTextQuietly(kSite, 3, "text");
  EXPECT_EQ(fakes::Journal::lines(), Lines{"TaDebug(3, \"text\") at toposvc:33 unknown"});
}

TEST_F(TopoLog, DropsExceptionsOfTheLogWhenQuiet) {
  for (const fakes::Step& step :
       {fakes::raiseRuntimeError("disk full"), fakes::raiseProcessException(3),
        fakes::raiseBadAlloc(), fakes::raiseTransient()}) {
    fakes::onEveryCall("TaDebug", step);
    topo::logTextQuietly(kSite, 3, "text");
  }
  EXPECT_EQ(fakes::Journal::count("TaDebug"), 4);
}

TEST_F(TopoLog, SwallowsAMissingPositionWhenQuiet) {
  fakes::onCall("GetTss", 1, fakes::raiseBadAlloc());
  topo::logTextQuietly(kSite, 3, "text");
  EXPECT_EQ(fakes::Journal::count("TaDebug"), 0);
}

}  // namespace
