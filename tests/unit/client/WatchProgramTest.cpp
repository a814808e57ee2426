// topoctl watch as a process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <stdexcept>

#include "tests/support/Process.h"
#include "tests/unit/client/support/FakeSession.h"
#include "tests/unit/client/support/MakeEvents.h"
#include "tests/unit/client/support/RunProgram.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

constexpr std::chrono::seconds kPatience{20};  // after which a missing step is a failure

// A running topoctl whose output is read line by line.
class Program : public support::Process {
 public:
  explicit Program(const Words& arguments) : Process(TOPOCTL_PROGRAM, arguments) {}
};

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

  // The consumer of the running program. Throws when the program has not subscribed.
  CosNotifyComm::StructuredPushConsumer_var consumer() {
    CosNotifyComm::StructuredPushConsumer_var consumer = session_->consumer();
    if (CORBA::is_nil(consumer)) {
      throw std::runtime_error("topoctl has not subscribed");
    }
    return consumer;
  }

 private:
  PortableServer::Servant_var<FakeSession> session_;
  std::unique_ptr<orb::WellKnownObject> published_;
};

TEST_F(WatchProgram, PrintsEachEventImmediatelyAndEndsOnASignal) {
  for (const int number : {SIGINT, SIGTERM}) {
    Program program(arguments({"--format", "json"}));
    EXPECT_THAT(program.readLine(), StartsWith("{\"event\":\"watching\",\"nodes\":2,"));
    consumer()->push_structured_event(creation("5", makeNode("a")));
    EXPECT_THAT(program.readLine(), HasSubstr("\"notificationId\":\"5\""));
    consumer()->push_structured_event(deletion("6", "a"));
    EXPECT_THAT(program.readLine(), HasSubstr("\"notificationId\":\"6\""));
    program.send(number);
    const support::Ended ended = program.wait();
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(script.lastCall(), "unsubscribe");
  }
}

TEST_F(WatchProgram, PrintsATableAndEndsAfterCountEvents) {
  Program program(arguments({"--count", "1", "--listen", "localhost"}));
  EXPECT_THAT(program.readLine(), EndsWith("  watching  2 nodes"));
  consumer()->push_structured_event(deletion("6", "a"));
  EXPECT_EQ(program.readLine(), "2026-11-21 10:03:07.4Z  deleted  TopoSubnetwork=a");
  EXPECT_EQ(program.wait().status, 0);
}

TEST_F(WatchProgram, PrintsAnEventWithATextLargerThanTheLimitOfOtherRequests) {
  Program program(arguments({"--format", "json", "--count", "1"}));
  program.readLine();
  const std::string name(2 * orb::kDefaultMaxRequestBytes, 'n');
  consumer()->push_structured_event(renaming("5", "a", name));
  EXPECT_THAT(program.readLine(), HasSubstr(name));
  EXPECT_EQ(program.wait().status, 0);
}

TEST_F(WatchProgram, IsKilledByASecondSignal) {
  // Shared: a request may end after this function returns.
  const auto reached = std::make_shared<std::promise<void>>();
  const auto released = std::make_shared<std::promise<void>>();
  script.onView = [reached, release = released->get_future().share()] {
    reached->set_value();
    release.wait();
  };
  script.settle();
  Program program(arguments());
  ASSERT_EQ(reached->get_future().wait_for(kPatience), std::future_status::ready);
  program.send(SIGINT);
  program.send(SIGTERM);
  EXPECT_NE(program.wait().signal, 0);
  released->set_value();
}

TEST_F(WatchProgram, EndsSilentlyWhenTheReaderOfItsOutputHasClosed) {
  Program program(arguments());
  program.readLine();
  program.closeOutput();
  consumer()->push_structured_event(deletion("6", "a"));
  const support::Ended ended = program.wait();
  EXPECT_EQ(ended.status, 141);
  EXPECT_EQ(ended.err, "");
  EXPECT_EQ(script.lastCall(), "unsubscribe");
}

TEST_F(WatchProgram, EndsWith5WhenTheAddressCannotBeListenedOn) {
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

TEST_F(WatchProgram, UnsubscribesWhenTheFirstViewCannotBeRead) {
  script.onView = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INTERNAL_ERROR, "no");
  };
  script.settle();
  EXPECT_EQ(runProgram(arguments()).status, 3);
  EXPECT_THAT(script.calls(), testing::ElementsAre("subscribe()", "topo(1000)", "unsubscribe"));
}

}  // namespace
}  // namespace topoctl
