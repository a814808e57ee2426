// Processes of the agent, of the client and of CORBA services.

#ifndef TESTS_INTEGRATION_PROGRAMS_H
#define TESTS_INTEGRATION_PROGRAMS_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/ResidentMemory.h"
#include "tests/support/TemporaryDirectory.h"

namespace integration {

// Paths of the agent and the client.
struct Programs {
  std::string agent;
  std::string client;
};

// The programs of this build.
const Programs& ownPrograms();

// A running topo-agentd on a free loopback port. Its files are in a temporary directory.
class RunningAgent {
 public:
  // Starts the agent and waits until it is ready. Throws an exception with the agent's error text
  // when the start fails. The arguments are added to an endpoint, an IOR file and an in-memory
  // store. A missing store file is created.
  explicit RunningAgent(const std::vector<std::string>& arguments,
                        const std::string& store = ":memory:",
                        const std::string& endpoint = "127.0.0.1:0",
                        const Programs& programs = ownPrograms());

  const std::string& readyLine() const { return readyLine_; }
  std::string iorFile() const { return directory_.file("manager.ior"); }
  std::string endpoint() const;   // HOST:PORT
  std::string corbaloc() const;   // the corbaloc of the manager
  std::string reference() const;  // the IOR of the manager

  support::Process& process() { return process_; }

  // Ends the agent with a signal.
  support::Ended stop(int signal);

 private:
  support::TemporaryDirectory directory_;
  support::Process process_;
  std::string readyLine_;
};

// A running topoctl watch that prints JSON.
class Watcher {
 public:
  explicit Watcher(const RunningAgent& agent, const Programs& programs = ownPrograms());

  // The "watching" line.
  const nlohmann::json& first() const { return first_; }

  // The next line, or null at the end of the output; the next lines.
  nlohmann::json next();
  std::vector<nlohmann::json> next(std::size_t count);

  support::Ended stop();

 private:
  support::Process process_;
  const nlohmann::json first_;
};

// A loopback endpoint that no other process uses.
std::string quietEndpoint();

// A running naming service.
class NamingService {
 public:
  NamingService();

  // An empty naming service at an endpoint whose former naming service has ended.
  explicit NamingService(const std::string& endpoint);

  // The root context as an IOR, and the address of the service (HOST:PORT).
  const std::string& reference() const { return reference_; }
  const std::string& endpoint() const { return endpoint_; }

 private:
  support::TemporaryDirectory directory_;
  const std::string endpoint_;
  support::Process process_;
  std::string reference_;
};

// Sanitizers delay the release of memory and slow the programs down.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

using support::residentKib;

// Runs a topo-agentd whose start must fail.
support::Ended runAgent(const std::vector<std::string>& arguments);

support::Ended runTopoctl(const std::vector<std::string>& arguments,
                          const Programs& programs = ownPrograms());

// The records that a topoctl command prints as JSON. Throws unless the command ends with status 0.
nlohmann::json records(const RunningAgent& agent, const std::vector<std::string>& arguments);

}  // namespace integration

#endif
