#include "agent/metrics/MetricFamilies.h"

#include <prometheus/text_serializer.h>

namespace agent {
namespace {

prometheus::MetricFamily family(std::string name, std::string help, prometheus::MetricType type) {
  prometheus::MetricFamily result;
  result.name = std::move(name);
  result.help = std::move(help);
  result.type = type;
  return result;
}

}  // namespace

prometheus::MetricFamily counterFamily(std::string name, std::string help) {
  return family(std::move(name), std::move(help), prometheus::MetricType::Counter);
}

prometheus::MetricFamily gaugeFamily(std::string name, std::string help) {
  return family(std::move(name), std::move(help), prometheus::MetricType::Gauge);
}

prometheus::MetricFamily counter(std::string name, std::string help, double value) {
  prometheus::MetricFamily result = counterFamily(std::move(name), std::move(help));
  addMetric(result, {}, value);
  return result;
}

prometheus::MetricFamily gauge(std::string name, std::string help, double value) {
  prometheus::MetricFamily result = gaugeFamily(std::move(name), std::move(help));
  addMetric(result, {}, value);
  return result;
}

std::vector<prometheus::ClientMetric::Label> metricLabels(const MetricLabels& labels) {
  std::vector<prometheus::ClientMetric::Label> result;
  result.reserve(labels.size());
  for (const auto& [name, value] : labels) {
    result.push_back({name, value});
  }
  return result;
}

void addMetric(prometheus::MetricFamily& family, const MetricLabels& labels, double value) {
  prometheus::ClientMetric metric;
  metric.label = metricLabels(labels);
  if (family.type == prometheus::MetricType::Counter) {
    metric.counter.value = value;
  } else {
    metric.gauge.value = value;
  }
  family.metric.push_back(std::move(metric));
}

std::string metricsText(const MetricFamilies& families) {
  return prometheus::TextSerializer().Serialize(families);
}

}  // namespace agent
