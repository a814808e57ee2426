// The output and the calls of a Watcher, one step at a time. Everything runs in one thread, because
// calls within a process are direct.

#include "client/watch/Watcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "client/base/Failure.h"
#include "tests/unit/client/support/FakeSession.h"
#include "tests/unit/client/support/MakeEvents.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using Calls = std::vector<std::string>;

// The parts of a printed line that the tests compare; empty when the line lacks them.
struct Line {
  std::string event;
  std::string object;  // value of the last pair of the name
  std::string id;
  std::string firstLostId;
  std::string lastLostId;
  std::size_t nodes = 0;
  bool isResync = false;
};

bool operator==(const Line& a, const Line& b) {
  return a.event == b.event && a.object == b.object && a.id == b.id &&
         a.firstLostId == b.firstLostId && a.lastLostId == b.lastLostId && a.nodes == b.nodes &&
         a.isResync == b.isResync;
}

void PrintTo(const Line& line, std::ostream* out) {
  *out << line.event << " object " << line.object << " id " << line.id << " lost "
       << line.firstLostId << " to " << line.lastLostId << " nodes " << line.nodes << " resync "
       << line.isResync;
}

Line eventLine(const std::string& event, const std::string& object = "",
               const std::string& id = "") {
  Line line;
  line.event = event;
  line.object = object;
  line.id = id;
  return line;
}

Line resyncLine(const std::string& event, const std::string& object) {
  Line line = eventLine(event, object);
  line.isResync = true;
  return line;
}

Line lostLine(const std::string& first, const std::string& last) {
  Line line = eventLine("lost");
  line.firstLostId = first;
  line.lastLostId = last;
  return line;
}

Line watchingLine(std::size_t nodes) {
  Line line = eventLine("watching");
  line.nodes = nodes;
  return line;
}

Line disconnectedLine() {
  return eventLine("disconnected");
}

class WatcherTest : public WithAgent {
 protected:
  void SetUp() override {
    WithAgent::SetUp();
    session_ = new FakeSession(script, server().rootPoa());
    published_ = server().wellKnownObject("TopoAgentSession");
    const CORBA::Object_var reference = published_->publish(session_.in());
    access = options("watch").access;
    script.nodes = makeNodes(2);
  }

  void TearDown() override {
    watcher_.reset();
    subscription_.reset();
    published_->retire();
    WithAgent::TearDown();
  }

  void start(const RetryDelay& delay = {milliseconds(0), milliseconds(0)}) {
    retryDelay = std::make_unique<RetryDelay>(delay);
    subscription_ =
        std::make_unique<Subscription>(server().get(), server().rootPoa(), access, inbox, retry);
    watcher_ = std::make_unique<Watcher>(*subscription_, inbox, eventLines_, *retryDelay,
                                         WatcherOptions{access, count, milliseconds(0)});
    watcher_->start();
  }

  Watcher& watcher() { return *watcher_; }
  Subscription& subscription() { return *subscription_; }
  FakeSession& session() { return *session_; }
  orb::WellKnownObject& publishedSession() { return *published_; }

  void push(const CosNotification::StructuredEvent& event) {
    const CosNotifyComm::StructuredPushConsumer_var consumer = session_->consumer();
    consumer->push_structured_event(event);
  }

  void step(int times = 1) {
    for (int i = 0; i < times; ++i) {
      watcher_->step();
    }
  }

  // The lines printed since the previous call.
  std::vector<Line> printed() {
    std::istringstream text(out_.str());
    out_.str("");
    std::vector<Line> lines;
    for (std::string line; std::getline(text, line);) {
      lines.push_back(toLine(nlohmann::json::parse(line)));
    }
    return lines;
  }

  void breakOutput() { out_.setstate(std::ios::badbit); }

  // The calls to the agent since the previous call.
  Calls calls() {
    const Calls all = script.calls();
    const Calls fresh(all.begin() + static_cast<std::ptrdiff_t>(seenCalls_), all.end());
    seenCalls_ = all.size();
    return fresh;
  }

  void removeNode(CORBA::ULong index) {
    TopoManagementManager::NodeList_T rest;
    for (CORBA::ULong i = 0; i < script.nodes.length(); ++i) {
      if (i != index) {
        addNode(rest, script.nodes[i]);
      }
    }
    script.nodes = rest;
  }

  void addNode(const TopoManagementManager::Node_T& node) { addNode(script.nodes, node); }

  Inbox inbox{100};
  AgentAccess access;
  std::uint32_t count = 0;
  std::unique_ptr<RetryDelay> retryDelay;

 private:
  static void addNode(TopoManagementManager::NodeList_T& nodes,
                      const TopoManagementManager::Node_T& node) {
    nodes.length(nodes.length() + 1);
    nodes[nodes.length() - 1] = node;
  }

  static Line toLine(const nlohmann::json& json) {
    Line line;
    line.event = json["event"];
    line.nodes = json.value("nodes", std::size_t{0});
    line.id = json.value("notificationId", "");
    line.firstLostId = json.value("firstLostId", "");
    line.lastLostId = json.value("lastLostId", "");
    line.isResync = json.value("resync", false);
    if (json.contains("objectName")) {
      line.object = json["objectName"].back()["value"];
    }
    return line;
  }

  PortableServer::Servant_var<FakeSession> session_;
  std::unique_ptr<orb::WellKnownObject> published_;
  std::ostringstream out_;
  EventLines eventLines_{out_, Format::kJson, std::chrono::system_clock::now};
  std::unique_ptr<Subscription> subscription_;
  std::unique_ptr<Watcher> watcher_;
  std::size_t seenCalls_ = 0;
};

// ---- start

TEST_F(WatcherTest, SubscribesBeforeReadingTheView) {
  start();
  EXPECT_THAT(calls(), ElementsAre("subscribe()", "topo(1000)"));
  EXPECT_THAT(printed(), ElementsAre(watchingLine(2)));
}

TEST_F(WatcherTest, SaysThatNoNotificationWillArrive) {
  for (const TopoAgent::EventAccess_T answer : {TopoAgent::EA_DENIED, TopoAgent::EA_UNKNOWN}) {
    session().setEventAccess(answer);
    start();
    EXPECT_THAT(printed(), ElementsAre(watchingLine(2), eventLine("silent")));
  }
}

TEST_F(WatcherTest, WatchesASessionWithoutGetEventAccess) {
  session().removeEventAccess();
  start();
  EXPECT_THAT(calls(), ElementsAre("subscribe()", "topo(1000)"));
  EXPECT_THAT(printed(), ElementsAre(watchingLine(2)));
}

TEST_F(WatcherTest, ReadsAViewInBatches) {
  access.howMany = 1;
  start();
  EXPECT_THAT(calls(), ElementsAre("subscribe()", "topo(1)", "next_n(1)"));
  EXPECT_THAT(printed(), ElementsAre(watchingLine(2)));
}

TEST_F(WatcherTest, PrintsEventsThatArriveDuringTheFirstReadAfterTheRead) {
  script.onView = [this] {
    push(creation("5", makeNode("a")));
    push(deletion("6", "n0"));
  };
  start();
  EXPECT_THAT(printed(), ElementsAre(watchingLine(2)));
  step(2);
  EXPECT_THAT(printed(),
              ElementsAre(eventLine("creation", "a", "5"), eventLine("deletion", "n0", "6")));
}

TEST_F(WatcherTest, StartThrowsWhenTheAgentFails) {
  script.onView = [] { throw CORBA::TRANSIENT(); };
  EXPECT_THROW(start(), CORBA::TRANSIENT);
  script.onSubscribe = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_ACCESS_DENIED, "no");
  };
  EXPECT_THROW(start(), globaldefs::ProcessingFailureException);
  EXPECT_THAT(printed(), IsEmpty());
}

// ---- events

TEST_F(WatcherTest, PrintsEachEventOnce) {
  start();
  printed();
  push(creation("5", makeNode("a")));
  push(creation("5", makeNode("a")));
  push(renaming("7", "a", "A"));
  push(creation("5", makeNode("a")));
  push(eventOf("NT_ALARM"));
  push(eventOf("NT_ALARM"));
  step(4);
  EXPECT_THAT(printed(), ElementsAre(eventLine("creation", "a", "5"), eventLine("change", "a", "7"),
                                     eventLine("other"), eventLine("other")));
  step();
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(WatcherTest, IgnoresAnOfferOfOtherEvents) {
  start();
  const CosNotifyComm::StructuredPushConsumer_var consumer = session().consumer();
  consumer->offer_change(CosNotification::EventTypeSeq(), CosNotification::EventTypeSeq());
  printed();
  step();
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(WatcherTest, IsDoneAfterCountEvents) {
  count = 2;
  start();
  push(creation("5", makeNode("a")));
  push(creation("6", makeNode("b")));
  push(creation("7", makeNode("c")));
  EXPECT_FALSE(watcher().isDone());
  step(2);
  EXPECT_TRUE(watcher().isDone());
  EXPECT_THAT(printed(), ElementsAre(watchingLine(2), eventLine("creation", "a", "5"),
                                     eventLine("creation", "b", "6")));
}

TEST_F(WatcherTest, PrintsAtMostCountEvents) {
  count = 2;
  start();
  printed();
  script.nodes = makeNodes(0);
  push(lost("5", "7", 3));
  step();
  EXPECT_TRUE(watcher().isDone());
  EXPECT_THAT(printed(), ElementsAre(lostLine("5", "7"), testing::Field(&Line::isResync, true)));
}

TEST_F(WatcherTest, ReadsNoViewOnceTheCountIsReached) {
  count = 1;
  start();
  calls();
  push(lost("5", "7", 3));
  step();
  EXPECT_TRUE(watcher().isDone());
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(WatcherTest, CountsEventsPrintedAtADisconnection) {
  count = 2;
  start();
  printed();
  push(lost("5", "7", 3));
  script.onView = [this] {
    push(deletion("8", "n0"));
    push(deletion("9", "n1"));
    throw CORBA::TRANSIENT();
  };
  step();
  EXPECT_TRUE(watcher().isDone());
  EXPECT_THAT(printed(), ElementsAre(lostLine("5", "7"), eventLine("deletion", "n0", "8")));
}

TEST_F(WatcherTest, CountsEventsPrintedAfterAReconnection) {
  count = 1;
  start();
  printed();
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  step();
  EXPECT_THAT(printed(), ElementsAre(disconnectedLine()));
  removeNode(0);
  step();
  EXPECT_TRUE(watcher().isDone());
  EXPECT_THAT(printed(), ElementsAre(resyncLine("deletion", "n0")));
}

TEST_F(WatcherTest, PrintsEventsThatArriveDuringAFailedReconnection) {
  start();
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  step();
  printed();
  script.onView = [this] {
    push(deletion("8", "n0"));
    throw CORBA::TRANSIENT();
  };
  step();
  EXPECT_THAT(printed(), ElementsAre(eventLine("deletion", "n0", "8")));
}

TEST_F(WatcherTest, ThrowsWhenTheOutputFailsAfterAReconnection) {
  start();
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  step();
  script.onView = [this] { breakOutput(); };
  removeNode(0);
  EXPECT_THROW(step(), Failure);
}

TEST_F(WatcherTest, RejectsEventsAfterADisconnection) {
  start();
  const CosNotifyComm::StructuredPushConsumer_var former = session().consumer();
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  step();
  EXPECT_THROW(former->push_structured_event(deletion("5", "n0")), CORBA::OBJECT_NOT_EXIST);
}

TEST_F(WatcherTest, WaitsBeforeARetry) {
  start({milliseconds(100), milliseconds(100)});
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  step();
  const auto begin = std::chrono::steady_clock::now();
  step();
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(99));
}

TEST_F(WatcherTest, IsDoneWhenStopped) {
  start();
  EXPECT_FALSE(watcher().isDone());
  inbox.stop();
  step();
  EXPECT_TRUE(watcher().isDone());
  calls();
  subscription().unsubscribe();
  EXPECT_THAT(calls(), ElementsAre("unsubscribe"));
}

TEST_F(WatcherTest, RejectsEventsAfterUnsubscribing) {
  start();
  subscription().unsubscribe();
  EXPECT_THROW(push(deletion("5", "n0")), CORBA::OBJECT_NOT_EXIST);
}

// ---- the heartbeat

TEST_F(WatcherTest, PingsTheAgentAfterATimeoutWithoutEvents) {
  start();
  calls();
  step(2);
  EXPECT_THAT(calls(), ElementsAre("ping", "ping"));
  push(deletion("5", "n0"));
  step();
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(WatcherTest, RepeatsAPingOnceOverANewConnection) {
  start();
  calls();
  printed();
  int closed = 1;  // connections that end during a ping
  script.onPing = [&closed] {
    if (closed > 0) {
      --closed;
      throw CORBA::COMM_FAILURE(0, CORBA::COMPLETED_MAYBE);
    }
  };
  step();
  EXPECT_THAT(calls(), ElementsAre("ping", "ping"));
  EXPECT_THAT(printed(), IsEmpty());
  closed = 3;
  step();
  EXPECT_THAT(calls(), ElementsAre("ping", "ping", "unsubscribe"));
  EXPECT_THAT(printed(), ElementsAre(disconnectedLine()));
}

TEST_F(WatcherTest, SubscribesAgainAfterTheLastIdWhenTheAgentDroppedTheSubscription) {
  start();
  push(deletion("5", "n0"));
  removeNode(0);
  step();
  printed();
  calls();
  const CosNotifyComm::StructuredPushConsumer_var former = session().consumer();
  session().drop();
  step();
  EXPECT_THAT(calls(), ElementsAre("subscribe(5)", "topo(1000)"));
  EXPECT_THROW(former->push_structured_event(deletion("6", "n0")), CORBA::OBJECT_NOT_EXIST);
  push(deletion("7", "n1"));
  step(2);
  EXPECT_THAT(printed(),
              ElementsAre(disconnectedLine(), watchingLine(1), eventLine("deletion", "n1", "7")));
  EXPECT_THAT(calls(), ElementsAre("ping"));
}

TEST_F(WatcherTest, AcceptsIdsThatRestartWithASubscription) {
  start();
  push(deletion("1000", "n0"));
  removeNode(0);
  step();
  session().drop();
  step();
  push(deletion("1", "n1"));
  step();
  EXPECT_THAT(printed(),
              ElementsAre(watchingLine(2), eventLine("deletion", "n0", "1000"), disconnectedLine(),
                          watchingLine(1), eventLine("deletion", "n1", "1")));
}

// An agent reports no gap to a subscriber without a last id.
TEST_F(WatcherTest, ComparesTheViewsWhenDroppedBeforeTheFirstEvent) {
  start();
  printed();
  calls();
  session().drop();
  addNode(makeNode("n2"));
  step();
  EXPECT_THAT(calls(), ElementsAre("subscribe()", "topo(1000)"));
  EXPECT_THAT(printed(),
              ElementsAre(disconnectedLine(), resyncLine("creation", "n2"), watchingLine(3)));
}

// As after the death and the restart of the agent between two pings.
TEST_F(WatcherTest, PrintsAGapBeforeTheDifferencesThatItExplains) {
  start();
  push(deletion("5", "n0"));
  removeNode(0);
  step();
  printed();
  session().drop();
  addNode(makeNode("n2"));
  script.onView = [this, views = 0]() mutable {
    if (++views == 1) {
      push(lost("6", "1048576", 0));
    }
  };
  step();
  EXPECT_THAT(printed(), ElementsAre(disconnectedLine(), lostLine("6", "1048576"),
                                     resyncLine("creation", "n2"), watchingLine(2)));
}

TEST_F(WatcherTest, SubscribesWithoutAnIdAtAnAgentThatRejectsTheLastId) {
  start();
  push(deletion("1000", "n0"));
  step();
  printed();
  calls();
  session().drop();
  session().rejectIdsAbove(10);
  step();
  EXPECT_THAT(calls(), ElementsAre("subscribe(1000)", "subscribe()", "topo(1000)"));
  EXPECT_THAT(printed(),
              ElementsAre(disconnectedLine(), resyncLine("creation", "n0"), watchingLine(2)));
}

// ---- lost events

TEST_F(WatcherTest, ComparesTheViewsAfterLostEvents) {
  start();
  printed();
  calls();
  addNode(makeNode("n2"));
  removeNode(0);
  script.nodes[0].nativeEMSName = "other";
  push(lost("5", "7", 3));
  step();
  EXPECT_THAT(calls(), ElementsAre("topo(1000)"));
  EXPECT_THAT(printed(), ElementsAre(lostLine("5", "7"), resyncLine("deletion", "n0"),
                                     resyncLine("creation", "n2"), resyncLine("change", "n1")));
  session().drop();
  step();
  // The reported gap ends at id 7, so the next subscription starts after id 7.
  EXPECT_THAT(calls(), ElementsAre("subscribe(7)", "topo(1000)"));
}

TEST_F(WatcherTest, ComparesTheViewWithTheAppliedEvents) {
  start();
  push(creation("5", makeNode("n2")));
  push(renaming("6", "n2", "N"));
  push(deletion("7", "n0"));
  step(3);
  addNode(makeNode("n2"));
  script.nodes[2].nativeEMSName = "N";
  removeNode(0);
  printed();
  push(lost("8", "8", 1));
  step();
  EXPECT_THAT(printed(), ElementsAre(lostLine("8", "8")));
}

TEST_F(WatcherTest, PrintsNoChangeTwiceThatArrivesDuringAComparison) {
  start();
  printed();
  push(lost("5", "7", 3));
  script.onView = [this] {
    script.nodes[0].nativeEMSName = "N";  // pending, and in the view
    addNode(makeNode("n2"));              // lost, and in the view
    push(renaming("8", "n0", "N"));
    push(creation("9", makeNode("n3")));  // pending, and not in the view
  };
  step(3);
  EXPECT_THAT(printed(),
              ElementsAre(lostLine("5", "7"), resyncLine("creation", "n2"),
                          eventLine("change", "n0", "8"), eventLine("creation", "n3", "9")));
  script.onView = [] {};
  addNode(makeNode("n3"));
  push(lost("10", "10", 1));
  step();
  EXPECT_THAT(printed(), ElementsAre(lostLine("10", "10")));
}

TEST_F(WatcherTest, ComparesAgainForLostEventsDuringAComparison) {
  start();
  printed();
  push(lost("5", "7", 3));
  int views = 0;
  script.onView = [&] {
    if (++views == 1) {
      push(lost("8", "9", 2));
    } else {
      addNode(makeNode("n2"));
    }
  };
  step(2);
  EXPECT_EQ(views, 2);
  EXPECT_THAT(printed(),
              ElementsAre(lostLine("5", "7"), lostLine("8", "9"), resyncLine("creation", "n2")));
}

// ---- disconnections

TEST_F(WatcherTest, ReconnectsWhenTheAgentIsBack) {
  start();
  push(deletion("5", "n0"));
  step();
  printed();
  calls();
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  script.onSubscribe = [] { throw CORBA::TRANSIENT(); };
  step();
  EXPECT_THAT(printed(), ElementsAre(disconnectedLine()));
  step(3);
  EXPECT_THAT(printed(), IsEmpty());
  script.onPing = [] {};
  script.onSubscribe = [] {};
  removeNode(0);
  addNode(makeNode("n2"));
  step();
  EXPECT_THAT(printed(), ElementsAre(resyncLine("creation", "n2"), watchingLine(2)));
  EXPECT_THAT(calls(), ElementsAre("ping", "unsubscribe", "subscribe(5)", "subscribe(5)",
                                   "subscribe(5)", "subscribe(5)", "topo(1000)"));
}

TEST_F(WatcherTest, RetriesWhileTheSessionObjectIsMissing) {
  start();
  printed();
  script.onPing = [] { throw CORBA::COMM_FAILURE(); };
  step();
  publishedSession().retire();
  step();
  EXPECT_THAT(printed(), ElementsAre(disconnectedLine()));
}

TEST_F(WatcherTest, PrintsReceivedEventsBeforeTheDisconnectedLine) {
  start();
  printed();
  push(lost("5", "7", 3));
  script.onView = [this] {
    push(deletion("8", "n0"));
    push(lost("9", "9", 1));
    throw CORBA::TRANSIENT();
  };
  step();
  EXPECT_THAT(printed(), ElementsAre(lostLine("5", "7"), eventLine("deletion", "n0", "8"),
                                     lostLine("9", "9"), disconnectedLine()));
  script.onView = [this] { push(deletion("10", "n1")); };
  removeNode(0);
  step();
  EXPECT_THAT(printed(), ElementsAre(watchingLine(1) /* n0 is known to be gone */));
}

TEST_F(WatcherTest, UnsubscribesWhenTheViewCannotBeRead) {
  start();
  push(lost("5", "7", 3));
  script.onView = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INTERNAL_ERROR, "not now");
  };
  calls();
  printed();
  step();
  EXPECT_THAT(printed(), ElementsAre(lostLine("5", "7"), disconnectedLine()));
  step(2);
  EXPECT_THAT(calls(), ElementsAre("topo(1000)", "unsubscribe", "subscribe(7)", "topo(1000)",
                                   "unsubscribe", "subscribe(7)", "topo(1000)", "unsubscribe"));
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(WatcherTest, ReconnectsWhenTheAgentEndsTheSubscription) {
  start();
  printed();
  push(deletion("5", "n0"));
  removeNode(0);
  const CosNotifyComm::StructuredPushConsumer_var consumer = session().consumer();
  consumer->disconnect_structured_push_consumer();
  step(3);
  EXPECT_THAT(printed(),
              ElementsAre(eventLine("deletion", "n0", "5"), disconnectedLine(), watchingLine(1)));
}

TEST_F(WatcherTest, DoublesTheRetryDelayUntilAReconnection) {
  start({milliseconds(1), milliseconds(100)});
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  script.onSubscribe = [] { throw CORBA::TRANSIENT(); };
  step(3);
  EXPECT_EQ(retryDelay->next(), milliseconds(4));
  script.onSubscribe = [] {};
  step(2);
  EXPECT_EQ(retryDelay->next(), milliseconds(1));
}

TEST_F(WatcherTest, IsDoneWhenStoppedDuringARetryDelay) {
  start({std::chrono::hours(1), std::chrono::hours(1)});
  script.onPing = [] { throw CORBA::TRANSIENT(); };
  step();
  inbox.stop();
  calls();
  step();
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_TRUE(watcher().isDone());
}

TEST_F(WatcherTest, HasDefaultIntervals) {
  const Intervals intervals;
  EXPECT_EQ(intervals.heartbeat, milliseconds(5000));
  EXPECT_EQ(intervals.firstRetry, milliseconds(200));
  EXPECT_EQ(intervals.lastRetry, milliseconds(5000));
}

}  // namespace
}  // namespace topoctl
