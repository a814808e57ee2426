// Makes metric families in the data model of Prometheus.
//
// Thread-safety: any thread. Ownership: results are plain values. Errors: std::bad_alloc.

#ifndef AGENT_METRICS_METRICFAMILIES_H
#define AGENT_METRICS_METRICFAMILIES_H

#include <prometheus/metric_family.h>

#include <string>
#include <utility>
#include <vector>

namespace agent {

using MetricFamilies = std::vector<prometheus::MetricFamily>;

// Names and values of labels.
using MetricLabels = std::vector<std::pair<std::string, std::string>>;

// A family without metrics.
prometheus::MetricFamily counterFamily(std::string name, std::string help);
prometheus::MetricFamily gaugeFamily(std::string name, std::string help);

// A family with one metric.
prometheus::MetricFamily counter(std::string name, std::string help, double value);
prometheus::MetricFamily gauge(std::string name, std::string help, double value);

// Appends a metric to a family of counters or gauges.
void addMetric(prometheus::MetricFamily& family, const MetricLabels& labels, double value);

std::vector<prometheus::ClientMetric::Label> metricLabels(const MetricLabels& labels);

// The families in Prometheus' text format, version 0.0.4.
std::string metricsText(const MetricFamilies& families);

}  // namespace agent

#endif
