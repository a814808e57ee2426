// Tests of the text of metrics.

#include "agent/metrics/MetricFamilies.h"

#include <gtest/gtest.h>

namespace {

TEST(MetricFamilies, HaveOneHelpAndOneTypeLineEach) {
  prometheus::MetricFamily family = agent::gaugeFamily("some_bytes", "Bytes.");
  agent::addMetric(family, {{"kind", "a"}}, 1);
  agent::addMetric(family, {{"kind", "b"}}, 2.5);
  EXPECT_EQ(
      "# HELP some_bytes Bytes.\n# TYPE some_bytes gauge\n"
      "some_bytes{kind=\"a\"} 1\nsome_bytes{kind=\"b\"} 2.5\n"
      "# HELP calls_total Calls.\n# TYPE calls_total counter\ncalls_total 3\n",
      agent::metricsText({family, agent::counter("calls_total", "Calls.", 3)}));
}

TEST(MetricFamilies, EscapeTheValuesOfLabels) {
  prometheus::MetricFamily family = agent::gaugeFamily("info", "Info.");
  agent::addMetric(family, {{"version", "a\"b\\c\nd"}}, 1);
  EXPECT_EQ("# HELP info Info.\n# TYPE info gauge\ninfo{version=\"a\\\"b\\\\c\\nd\"} 1\n",
            agent::metricsText({family}));
}

}  // namespace
