// The agent and the client as users run them.

#ifndef TESTS_INTEGRATION_PROGRAMS_H
#define TESTS_INTEGRATION_PROGRAMS_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/ResidentMemory.h"
#include "tests/support/TemporaryDirectory.h"

namespace integration {

// The agent and the client that a test runs.
struct Programs {
  std::string agent;
  std::string client;
};

// Those of this build.
const Programs& ownPrograms();

// A running topo-agentd on a free loopback port. What it keeps lies in a directory of the test's.
class RunningAgent {
 public:
  // Starts it and waits until it is ready; an exception with its error text when it does not get
  // there. Arguments come on top of the endpoint, the IOR file and an in-memory store. A store file
  // that does not exist is created.
  explicit RunningAgent(const std::vector<std::string>& arguments,
                        const std::string& store = ":memory:",
                        const std::string& endpoint = "127.0.0.1:0",
                        const Programs& programs = ownPrograms());

  const std::string& readyLine() const { return readyLine_; }
  std::string iorFile() const { return directory_.file("manager.ior"); }
  std::string endpoint() const;   // HOST:PORT
  std::string corbaloc() const;   // its reference by name
  std::string reference() const;  // its IOR

  support::Process& process() { return process_; }

  // Ends it with a signal.
  support::Ended stop(int signal);

 private:
  support::TemporaryDirectory directory_;
  support::Process process_;
  std::string readyLine_;
};

// A running topoctl watch. Its lines are records.
class Watcher {
 public:
  explicit Watcher(const RunningAgent& agent, const Programs& programs = ownPrograms());

  // The line that says that it watches.
  const nlohmann::json& first() const { return first_; }

  // The next line, null at the end; the next lines.
  nlohmann::json next();
  std::vector<nlohmann::json> next(std::size_t count);

  support::Ended stop();

 private:
  support::Process process_;
  const nlohmann::json first_;
};

// A loopback endpoint that stays free while nobody of this test uses it.
std::string quietEndpoint();

// A running naming service.
class NamingService {
 public:
  NamingService();

  // Its root context, as an IOR and as a corbaname or corbaloc address (HOST:PORT).
  const std::string& reference() const { return reference_; }
  const std::string& endpoint() const { return endpoint_; }

 private:
  support::TemporaryDirectory directory_;
  const std::string endpoint_;
  support::Process process_;
  std::string reference_;
};

// Sanitizers keep freed memory, to recognise its use, and take their time.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

using support::residentKib;

// Runs topo-agentd where it is expected to refuse.
support::Ended runAgent(const std::vector<std::string>& arguments);

support::Ended runTopoctl(const std::vector<std::string>& arguments,
                          const Programs& programs = ownPrograms());

// The records that a topoctl command prints as JSON; fails with an exception unless it ends with 0.
nlohmann::json records(const RunningAgent& agent, const std::vector<std::string>& arguments);

}  // namespace integration

#endif
