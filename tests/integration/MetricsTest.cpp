// Metrics and health of a running agent.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <list>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "tests/integration/Programs.h"
#include "tests/support/HttpGet.h"
#include "tests/unit/orb/RawClient.h"

namespace {

using integration::records;
using integration::RunningAgent;
using integration::runTopoctl;
using support::Ended;
using support::httpGet;
using support::HttpReply;
using testing::HasSubstr;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";

std::uint16_t portOf(const std::string& endpoint) {
  return static_cast<std::uint16_t>(std::stoi(endpoint.substr(endpoint.rfind(':') + 1)));
}

// The samples of the text format by name and labels. Fails for a malformed line, for a sample
// without the lines HELP and TYPE before it, and for repeated lines.
std::map<std::string, double> samplesOf(const std::string& text) {
  std::map<std::string, double> samples;
  std::set<std::string> helps;
  std::map<std::string, std::string> types;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string mark;
    std::string kind;
    std::string name;
    words >> mark >> kind >> name;
    if (mark == "#") {
      std::string type;
      words >> type;
      EXPECT_TRUE(kind == "HELP" ? helps.insert(name).second
                                 : kind == "TYPE" && types.emplace(name, type).second)
          << line;
      continue;
    }
    const std::size_t end = line.rfind(' ');
    const std::string sample = line.substr(0, end);
    std::string family = sample.substr(0, sample.find('{'));
    for (const std::string suffix : {"_bucket", "_sum", "_count"}) {
      const std::size_t base = family.size() - std::min(family.size(), suffix.size());
      if (types.count(family) == 0 && family.substr(base) == suffix) {
        family.resize(base);
      }
    }
    EXPECT_EQ(1U, types.count(family)) << line;
    EXPECT_EQ(1U, helps.count(family)) << line;
    EXPECT_EQ(types[family] == "counter",
              family.size() > 6 && family.substr(family.size() - 6) == "_total")
        << line;
    std::size_t used = 0;
    const std::string value = line.substr(end + 1);
    EXPECT_TRUE(samples.emplace(sample, std::stod(value, &used)).second) << line;
    EXPECT_EQ(value.size(), used) << line;
  }
  return samples;
}

class Metrics : public testing::Test {
 protected:
  // more: options of the agent.
  explicit Metrics(const std::vector<std::string>& more = {}) : agent_(options(more)) {}

  std::map<std::string, double> scrape() const {
    const HttpReply reply = httpGet(port_, "/metrics");
    EXPECT_EQ(200, reply.status);
    EXPECT_THAT(reply.header, HasSubstr("Content-Type: text/plain; version=0.0.4"));
    return samplesOf(reply.body);
  }

  // The first samples with this value of `sample`; after ten seconds, any samples. Some ORBs count
  // a request after its reply.
  std::map<std::string, double> scrapeUntil(double value, const std::string& sample) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::map<std::string, double> samples = scrape();
    while (samples[sample] != value && std::chrono::steady_clock::now() < end) {
      samples = scrape();
    }
    return samples;
  }

  static std::string requests(const std::string& operation, const std::string& outcome) {
    return "topo_requests_total{operation=\"" + operation + "\",outcome=\"" + outcome + "\"}";
  }

  const std::string address_ = integration::quietEndpoint();
  const std::uint16_t port_ = portOf(address_);
  RunningAgent agent_;

 private:
  std::vector<std::string> options(const std::vector<std::string>& more) const {
    std::vector<std::string> all = {"--network", kBackbone, "--metrics", address_};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }
};

class MetricsOfAReadOnlyAgent : public Metrics {
 protected:
  MetricsOfAReadOnlyAgent() : Metrics({"--read-only"}) {}
};

TEST_F(MetricsOfAReadOnlyAgent, CountRefusedRequests) {
  EXPECT_EQ(3, runTopoctl({"--ior-file", agent_.iorFile(), "test-switch", "on"}).status);
  const std::string refused = requests("setTestSwitch", "NO_PERMISSION");
  EXPECT_EQ(1, scrapeUntil(1, refused)[refused]);
}

TEST_F(Metrics, ReportTheStateOfTheAgent) {
  const std::map<std::string, double> samples = scrape();
  EXPECT_EQ(52, samples.at("topo_nodes"));
  EXPECT_EQ(1, samples.at("topo_module_state{state=\"loaded\"}"));
  EXPECT_EQ(0, samples.at("topo_module_state{state=\"missing\"}"));
  EXPECT_EQ(1, samples.at("topo_module_loads_total"));
  EXPECT_LT(1 << 20, samples.at("process_resident_memory_bytes"));
  EXPECT_LT(3, samples.at("process_threads"));
  EXPECT_LT(3, samples.at("process_open_fds"));
  EXPECT_EQ(0, samples.at("topo_store_errors_total"));
  EXPECT_EQ(0, samples.at("topo_audit_lost_total"));
  EXPECT_EQ(0, samples.at("topo_receivers{kind=\"subscriber\"}"));
  EXPECT_EQ(0, samples.at("topo_views_in_progress{kind=\"view\"}"));
}

TEST_F(Metrics, CountKnownCallsByOperationAndOutcome) {
  EXPECT_EQ(0, runTopoctl({"--ior-file", agent_.iorFile(), "--how-many", "10", "topo"}).status);
  // "set" learns the name of the EMS from a view of one node.
  runTopoctl({"--ior-file", agent_.iorFile(), "set", "owner", "NE=none", "x"});
  const std::map<std::string, double> samples =
      scrapeUntil(1, requests("setOwner", "ProcessingFailureException"));
  EXPECT_EQ(2, samples.at(requests("getTopoSubnetworkViewInfo", "ok")));
  EXPECT_LE(4, samples.at(requests("next_n", "ok")));
  EXPECT_EQ(1, samples.at(requests("setOwner", "ProcessingFailureException")));
  EXPECT_EQ(2, samples.at("topo_request_duration_seconds_count"
                          "{operation=\"getTopoSubnetworkViewInfo\"}"));
  EXPECT_EQ(2, samples.at("topo_iterators_ended_total"));
  EXPECT_EQ(0, samples.at("topo_iterators"));
}

TEST_F(Metrics, ReportAConnectionAndASubscriber) {
  const integration::Watcher watcher(agent_);
  const std::map<std::string, double> samples = scrapeUntil(1, requests("subscribe", "ok"));
  EXPECT_LE(1, samples.at("topo_connections"));
  EXPECT_EQ(1, samples.at("topo_receivers{kind=\"subscriber\"}"));
  EXPECT_EQ(1, samples.at(requests("subscribe", "ok")));
}

TEST_F(Metrics, HaveNoTimeSeriesForHostileOperations) {
  const std::size_t before = scrape().size();
  for (int i = 0; i < 50; ++i) {
    const orb_tests::RawClient client({"127.0.0.1", portOf(agent_.endpoint())});
    ASSERT_TRUE(client.send(
        orb_tests::requestTo("TopoManagement", "x\"} 1\n" + std::to_string(i)).bytes()));
    ASSERT_TRUE(client.answer());
  }
  const std::map<std::string, double> samples = scrapeUntil(50, requests("other", "BAD_OPERATION"));
  EXPECT_EQ(50, samples.at(requests("other", "BAD_OPERATION")));
  EXPECT_GT(before + 50, samples.size());
}

TEST_F(Metrics, HaveThePagesOfReadinessAndLiveness) {
  EXPECT_EQ("ready\n", httpGet(port_, "/ready").body);
  EXPECT_EQ("alive\n", httpGet(port_, "/live").body);
  EXPECT_EQ(404, httpGet(port_, "/").status);
}

TEST_F(Metrics, LeaveTheAgentInServiceWithStalledClients) {
  std::list<support::HttpConnection> stalled;
  for (int i = 0; i < 40; ++i) {
    stalled.emplace_back(port_);
    stalled.back().send("GET /met");
  }
  EXPECT_EQ(56U, records(agent_, {"topo"}).size());
  EXPECT_EQ(0, agent_.stop(SIGTERM).status);
}

TEST(MetricsOption, RefusesAPortInUseInOneLine) {
  const std::string address = integration::quietEndpoint();
  const RunningAgent agent({"--metrics", address});
  const Ended ended = integration::runAgent(
      {"--store", ":memory:", "--create", "--endpoint", "127.0.0.1:0", "--metrics", address});
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("topo-agentd: cannot serve metrics on " + address + ": Address already in use\n",
            ended.err);
}

TEST(MetricsOption, RefusesATextThatIsNoAddress) {
  const Ended ended = integration::runAgent({"--metrics", "9464"});
  EXPECT_EQ(1, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("--metrics: '9464' is not HOST:PORT"));
}

}  // namespace
