// Commands that meet a reload of the agent's module. The clock is the test's own, and calls within
// a process are direct, so nothing waits.

#include "client/agent/Reload.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/unit/client/support/FakeConsole.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using std::chrono::milliseconds;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;

void reject() {
  throw CORBA::TRANSIENT(CORBA::OMGVMCID | 1, CORBA::COMPLETED_NO);
}

class Reload : public WithAgent {
 protected:
  Reload() {
    retry = RetryPolicy();
    retry.now = [this] { return now_; };
    retry.wait = [this](milliseconds delay) {
      delays.push_back(delay);
      now_ += delay;
      return true;
    };
    script.nodes = makeNodes(3);
  }

  void SetUp() override {
    WithAgent::SetUp();
    console_ = new FakeConsole(script);
    published_ = server().wellKnownObject("TopoAgentConsole");
    const CORBA::Object_var reference = published_->publish(console_.in());
  }

  void TearDown() override {
    published_->retire();
    WithAgent::TearDown();
  }

  void removeConsole() { published_->retire(); }

  // Rejects the next `count` requests that call the returned function.
  static std::function<void()> rejecting(int count) {
    return [count]() mutable {
      if (count-- > 0) {
        reject();
      }
    };
  }

  Options setOwner() const {
    Options set = options("set");
    set.arguments.attribute = Attribute::kOwner;
    set.arguments.object = {{"OS", "1"}};
    set.arguments.isWholeName = true;
    set.arguments.value = "ops";
    return set;
  }

  std::size_t countOf(const std::string& call) {
    const std::vector<std::string> calls = script.calls();
    return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), call));
  }

  std::vector<milliseconds> delays;

 private:
  std::chrono::steady_clock::time_point now_;
  PortableServer::Servant_var<FakeConsole> console_;
  std::unique_ptr<orb::WellKnownObject> published_;
};

TEST_F(Reload, RepeatsAViewThatIsRejected) {
  const std::string expected = output(options("topo"));
  script.onView = rejecting(3);
  EXPECT_EQ(output(options("topo")), expected);
  EXPECT_THAT(delays, ElementsAre(milliseconds(50), milliseconds(100), milliseconds(200)));
}

TEST_F(Reload, RepeatsAViewWhoseIteratorIsRejected) {
  const std::string expected = output(options("topo"));
  script.onNext = rejecting(1);
  EXPECT_EQ(output(options("topo", 2)), expected);
  EXPECT_EQ(countOf("topo(2)"), 2U);
}

TEST_F(Reload, RepeatsAViewWhoseIteratorEnded) {
  script.nodes = makeNodes(7);
  const std::string expected = output(options("topo"));
  script.vanishes = true;
  script.onView = [this, views = 0]() mutable { script.vanishes = ++views == 1; };
  EXPECT_EQ(output(options("topo", 2)), expected);
  EXPECT_THAT(delays, ElementsAre(milliseconds(50)));
}

TEST_F(Reload, RepeatsARejectedChange) {
  script.onSet = rejecting(2);
  EXPECT_EQ(output(setOwner()), "");
  EXPECT_EQ(countOf("owner((OS,1), ops)"), 3U);
}

TEST_F(Reload, NeverRepeatsAChangeThatMayHaveBeenExecuted) {
  const std::vector<std::function<void()>> failures = {
      [] { throw CORBA::TRANSIENT(CORBA::OMGVMCID | 1, CORBA::COMPLETED_MAYBE); },
      [] { throw CORBA::TIMEOUT(); }, [] { throw CORBA::COMM_FAILURE(); },
      [] { throw CORBA::OBJECT_NOT_EXIST(); }};
  for (const auto& failure : failures) {
    script.onSet = failure;
    const std::size_t before = countOf("owner((OS,1), ops)");
    EXPECT_EQ(failureOf(setOwner()).exitCode, 2);
    EXPECT_EQ(countOf("owner((OS,1), ops)"), before + 1);
  }
  EXPECT_THAT(delays, IsEmpty());
}

TEST_F(Reload, FailsAfterFiveSeconds) {
  script.onView = reject;
  EXPECT_EQ(failureOf(options("topo")),
            exitWith(2, "topoctl: the agent at '" + agentReference() +
                            "' answers, but does not serve the request now: it reloads its module, "
                            "starts or stops\n"));
  milliseconds all{0};
  for (const milliseconds delay : delays) {
    all += delay;
  }
  EXPECT_THAT(all, AllOf(Ge(milliseconds(5000)), Le(milliseconds(5500))));
  EXPECT_THAT(delays, Each(Le(milliseconds(500))));
}

TEST_F(Reload, FailsWhenTheWaitIsInterrupted) {
  script.onView = reject;
  retry.wait = [](milliseconds) { return false; };
  EXPECT_EQ(failureOf(options("topo")).exitCode, 2);
  EXPECT_EQ(countOf("topo(1000)"), 1U);
}

TEST_F(Reload, FailsAtOnceWithoutAModule) {
  script.onView = reject;
  script.hasModule = false;
  EXPECT_EQ(failureOf(options("topo")),
            exitWith(2, "topoctl: the agent at '" + agentReference() +
                            "' has no module loaded (module x.so: cannot be read); load the "
                            "module with \"topoctl module reload\"\n"));
  EXPECT_THAT(delays, IsEmpty());
}

TEST_F(Reload, RepeatsWithoutAConsoleToAsk) {
  removeConsole();
  script.onView = rejecting(1);
  EXPECT_NE(output(options("topo")), "[]\n");
  EXPECT_EQ(countOf("topo(1000)"), 2U);
}

}  // namespace
}  // namespace topoctl
