// Tests of the metrics of requests.

#include "agent/metrics/RequestMetrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using agent::RequestMetrics;
using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::Not;

orb::FinishedRequest finished(const char* operation, const char* exception = nullptr,
                              std::chrono::steady_clock::duration duration = milliseconds(2)) {
  orb::FinishedRequest request;
  request.operation = operation;
  request.exception = exception;
  request.duration = duration;
  return request;
}

std::string textOf(const RequestMetrics& metrics) {
  return agent::metricsText(metrics.collect());
}

// The names before the parentheses in the interface definitions.
std::set<std::string> operationsOfTheInterface() {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(TOPO_IDL_FOLDER)) {
    if (entry.path().extension() != ".idl") {
      continue;
    }
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      line = line.substr(0, line.find("//"));
      const std::size_t end = line.find('(');
      std::size_t begin = end;
      while (end != std::string::npos && begin > 0 &&
             (std::isalnum(static_cast<unsigned char>(line[begin - 1])) != 0 ||
              line[begin - 1] == '_')) {
        --begin;
      }
      const std::string name = begin == end ? "" : line.substr(begin, end - begin);
      if (!name.empty() && name != "raises") {
        names.insert(name);
      }
    }
  }
  return names;
}

TEST(RequestMetrics, KnowEveryOperationOfTheInterface) {
  const std::set<std::string> names = operationsOfTheInterface();
  EXPECT_LT(30U, names.size());
  for (const std::string& name : names) {
    EXPECT_TRUE(RequestMetrics::isKnown(name)) << name;
  }
  EXPECT_TRUE(RequestMetrics::isKnown("_is_a"));
}

TEST(RequestMetrics, CountByOperationAndOutcome) {
  RequestMetrics metrics;
  metrics.count(finished("getCapabilities"));
  metrics.count(finished("getCapabilities"));
  metrics.count(finished("getCapabilities", "TRANSIENT"));
  metrics.count(finished("setOwner", "ProcessingFailureException"));
  const std::string text = textOf(metrics);
  EXPECT_THAT(text, HasSubstr("{operation=\"getCapabilities\",outcome=\"ok\"} 2\n"));
  EXPECT_THAT(text, HasSubstr("{operation=\"getCapabilities\",outcome=\"TRANSIENT\"} 1\n"));
  EXPECT_THAT(text,
              HasSubstr("{operation=\"setOwner\",outcome=\"ProcessingFailureException\"} 1\n"));
  EXPECT_THAT(text, HasSubstr("{operation=\"setOwner\",outcome=\"ok\"} 0\n"));
}

TEST(RequestMetrics, HaveNoTimeSeriesForUnknownNames) {
  RequestMetrics metrics;
  for (int i = 0; i < 1000; ++i) {
    const std::string name = "hostile" + std::to_string(i) + "\"} 1\n\xff";
    metrics.count(finished(name.c_str(), name.c_str()));
  }
  metrics.count(finished(""));
  metrics.count(finished("zzz"));
  const std::string text = textOf(metrics);
  EXPECT_THAT(text, Not(HasSubstr("hostile")));
  EXPECT_THAT(text, HasSubstr("{operation=\"other\",outcome=\"other\"} 1000\n"));
  EXPECT_THAT(text, HasSubstr("{operation=\"other\",outcome=\"ok\"} 2\n"));
}

TEST(RequestMetrics, HaveCumulativeBucketsInSeconds) {
  RequestMetrics metrics;
  metrics.count(finished("ping", nullptr, std::chrono::microseconds(100)));
  metrics.count(finished("ping", nullptr, milliseconds(2)));
  metrics.count(finished("ping", nullptr, std::chrono::seconds(60)));
  metrics.count(finished("ping", nullptr, -milliseconds(1)));
  const std::string text = textOf(metrics);
  const std::string bucket = "topo_request_duration_seconds_bucket{operation=\"ping\",le=";
  EXPECT_THAT(text, HasSubstr(bucket + "\"0.0001\"} 2\n"));
  EXPECT_THAT(text, HasSubstr(bucket + "\"0.005\"} 3\n"));
  EXPECT_THAT(text, HasSubstr(bucket + "\"+Inf\"} 4\n"));
  EXPECT_THAT(text, HasSubstr("topo_request_duration_seconds_count{operation=\"ping\"} 4\n"));
  EXPECT_THAT(text, HasSubstr("topo_request_duration_seconds_sum{operation=\"ping\"} 60.002"));
}

TEST(RequestMetrics, CountRequestsOfManyThreads) {
  RequestMetrics metrics;
  std::vector<std::thread> threads;
  for (int i = 0; i < 12; ++i) {
    threads.emplace_back([&metrics] {
      for (int request = 0; request < 1000; ++request) {
        metrics.count(finished("next_n"));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(textOf(metrics), HasSubstr("{operation=\"next_n\",outcome=\"ok\"} 12000\n"));
}

}  // namespace
