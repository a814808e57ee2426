#include "tests/integration/Programs.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <stdexcept>

namespace integration {
namespace {

std::vector<std::string> operator+(std::vector<std::string> first,
                                   const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace

const Programs& ownPrograms() {
  static const Programs programs = {TOPO_AGENTD, TOPOCTL};
  return programs;
}

// The port is below 32768, so the system never assigns it to a process that asks for any port. The
// process id in the address separates tests that run at the same time.
std::string quietEndpoint() {
  constexpr int kFirst = 20000;
  constexpr int kCount = 12000;
  for (int i = 0; i < kCount; ++i) {
    const int port = kFirst + (getpid() + i) % kCount;
    const int probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const bool free = bind(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(probe);
    if (free) {
      return "127.0.0.1:" + std::to_string(port);
    }
  }
  throw std::runtime_error("no free port");
}

NamingService::NamingService() : NamingService(quietEndpoint()) {}

NamingService::NamingService(const std::string& endpoint)
    : endpoint_(endpoint),
      process_("/bin/sh", {"-c", "exec " TOPO_NAMING_SERVICE " -start 1 -nohostname -datadir " +
                                     directory_.path().string() +
                                     " -ORBendPoint giop:tcp:" + endpoint_ + " 2>&1"}) {
  const std::string before = "Root context is ";
  std::string line = process_.readLine();
  while (!line.empty() && line.find(before) == std::string::npos) {
    line = process_.readLine();
  }
  reference_ = line.substr(line.find(before) + before.size());
  reference_ = reference_.substr(0, reference_.find_last_not_of(". ") + 1);
}

RunningAgent::RunningAgent(const std::vector<std::string>& arguments, const std::string& store,
                           const std::string& endpoint, const Programs& programs)
    : process_(programs.agent, std::vector<std::string>{"--endpoint", endpoint, "--store", store,
                                                        "--create", "--ior-file", iorFile()} +
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

Watcher::Watcher(const RunningAgent& agent, const Programs& programs)
    : process_(programs.client, {"--ior-file", agent.iorFile(), "--format", "json", "watch"}),
      first_(next()) {}

nlohmann::json Watcher::next() {
  const std::string line = process_.readLine();
  return line.empty() ? nlohmann::json() : nlohmann::json::parse(line);
}

std::vector<nlohmann::json> Watcher::next(std::size_t count) {
  std::vector<nlohmann::json> lines;
  for (std::size_t i = 0; i < count; ++i) {
    lines.push_back(next());
  }
  return lines;
}

support::Ended Watcher::stop() {
  process_.send(SIGTERM);
  return process_.wait();
}

support::Ended runAgent(const std::vector<std::string>& arguments) {
  return support::run(ownPrograms().agent, arguments);
}

support::Ended runTopoctl(const std::vector<std::string>& arguments, const Programs& programs) {
  return support::run(programs.client, arguments);
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
