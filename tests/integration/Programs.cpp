#include "tests/integration/Programs.h"

#include <stdexcept>

namespace integration {
namespace {

std::vector<std::string> operator+(std::vector<std::string> first,
                                   const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace

RunningAgent::RunningAgent(const std::vector<std::string>& arguments, const std::string& store,
                           const std::string& endpoint)
    : process_(TOPO_AGENTD, std::vector<std::string>{"--endpoint", endpoint, "--store", store,
                                                     "--ior-file", iorFile()} +
                                arguments),
      readyLine_(process_.readLine()) {
  if (readyLine_.empty()) {
    throw std::runtime_error("topo-agentd did not get ready: " + process_.wait().err);
  }
}

std::string RunningAgent::endpoint() const {
  const std::string before = "endpoint ";
  const std::size_t begin = readyLine_.find(before) + before.size();
  return readyLine_.substr(begin, readyLine_.find(',', begin) - begin);
}

std::string RunningAgent::corbaloc() const {
  return "corbaloc::" + endpoint() + "/TopoManagement";
}

std::string RunningAgent::reference() const {
  const std::string text = support::readFile(iorFile());
  return text.substr(0, text.find('\n'));
}

support::Ended RunningAgent::stop(int signal) {
  process_.send(signal);
  return process_.wait();
}

support::Ended runAgent(const std::vector<std::string>& arguments) {
  return support::run(TOPO_AGENTD, arguments);
}

support::Ended runTopoctl(const std::vector<std::string>& arguments) {
  return support::run(TOPOCTL, arguments);
}

nlohmann::json records(const RunningAgent& agent, const std::vector<std::string>& arguments) {
  const support::Ended ended = runTopoctl(
      std::vector<std::string>{"--ior-file", agent.iorFile(), "--format", "json"} + arguments);
  if (ended.status != 0) {
    throw std::runtime_error("topoctl ended with " + std::to_string(ended.status) + ": " +
                             ended.err);
  }
  return nlohmann::json::parse(ended.out);
}

}  // namespace integration
