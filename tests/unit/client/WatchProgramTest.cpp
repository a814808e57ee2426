// The watch as a user runs it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <memory>

#include "FakeSession.h"
#include "MakeEvents.h"
#include "RunProgram.h"
#include "RunningProgram.h"
#include "WithAgent.h"

namespace topoctl {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

class WatchProgram : public WithAgent {
 protected:
  void SetUp() override {
    WithAgent::SetUp();
    script.nodes = makeNodes(2);
    script.settle();
    session_ = new FakeSession(script, server().rootPoa());
    published_ = server().wellKnownObject("TopoAgentSession");
    const CORBA::Object_var reference = published_->publish(session_.in());
  }

  void TearDown() override {
    published_->retire();
    WithAgent::TearDown();
  }

  static Words arguments(const Words& more = {}) {
    Words all = {"--agent", agentReference(), "watch"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  CosNotifyComm::StructuredPushConsumer_var consumer() { return session_->consumer(); }

 private:
  PortableServer::Servant_var<FakeSession> session_;
  std::unique_ptr<orb::WellKnownObject> published_;
};

TEST_F(WatchProgram, PrintsEachEventAtOnceAndEndsBySignals) {
  for (const int number : {SIGINT, SIGTERM}) {
    RunningProgram program(arguments({"--format", "json"}));
    EXPECT_THAT(program.line(), StartsWith("{\"event\":\"watching\",\"nodes\":2,"));
    consumer()->push_structured_event(creation("5", makeNode("a")));
    EXPECT_THAT(program.line(), HasSubstr("\"notificationId\":\"5\""));
    consumer()->push_structured_event(deletion("6", "a"));
    EXPECT_THAT(program.line(), HasSubstr("\"notificationId\":\"6\""));
    program.signal(number);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.line(), "");
    EXPECT_EQ(script.calls().back(), "unsubscribe");
  }
}

TEST_F(WatchProgram, PrintsATableAndEndsAfterItsEvents) {
  RunningProgram program(arguments({"--count", "1", "--listen", "localhost"}));
  EXPECT_THAT(program.line(), EndsWith("  watching  2 nodes"));
  consumer()->push_structured_event(deletion("6", "a"));
  EXPECT_EQ(program.line(), "2026-11-21 10:03:07.4Z  deleted  TopoSubnetwork a");
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(WatchProgram, EndsAtOnceByASecondSignal) {
  // Shared with a request that may end after this function.
  const auto reached = std::make_shared<std::promise<void>>();
  const auto released = std::make_shared<std::promise<void>>();
  script.onView = [reached, release = released->get_future().share()] {
    reached->set_value();
    release.wait();
  };
  script.settle();
  RunningProgram program(arguments());
  reached->get_future().wait();
  program.signal(SIGINT);
  program.signal(SIGTERM);
  EXPECT_LT(program.wait(), 0);
  released->set_value();
}

TEST_F(WatchProgram, EndsWith5WhenNobodyReadsItsOutput) {
  RunningProgram program(arguments());
  program.line();
  program.closeOutput();
  consumer()->push_structured_event(deletion("6", "a"));
  EXPECT_EQ(program.wait(), 5);
  EXPECT_EQ(script.calls().back(), "unsubscribe");
}

TEST_F(WatchProgram, EndsWith5WhereItCannotListen) {
  const Ended ended = runProgram(arguments({"--listen", address()}));
  EXPECT_EQ(ended.status, 5);
  EXPECT_THAT(ended.err, StartsWith("topoctl: cannot listen on " + address()));
}

TEST_F(WatchProgram, EndsAsOtherCommandsWhenTheAgentFailsAtTheStart) {
  const std::string nowhere = "corbaloc::" + address() + "/TopoManagement";
  script.onSubscribe = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_ACCESS_DENIED, "no");
  };
  script.settle();
  EXPECT_EQ(runProgram(arguments()).status, 3);
  script.settle();
  script.onSubscribe = [] { throw CORBA::NO_RESOURCES(); };
  script.settle();
  EXPECT_EQ(runProgram(arguments()).status, 4);
  script.settle();
  script.onSubscribe = [] { throw CORBA::TRANSIENT(); };
  script.settle();
  EXPECT_EQ(runProgram(arguments()).status, 2);
  EXPECT_EQ(runProgram({"--agent", "nonsense", "watch"}).status, 1);
}

TEST_F(WatchProgram, LeavesNoSubscriptionBehindWhenTheViewCannotBeReadAtTheStart) {
  script.onView = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INTERNAL_ERROR, "no");
  };
  script.settle();
  EXPECT_EQ(runProgram(arguments()).status, 3);
  EXPECT_THAT(script.calls(), testing::ElementsAre("subscribe()", "topo(1000)", "unsubscribe"));
}

}  // namespace
}  // namespace topoctl
