// topo-agentd: the reference agent.

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <string>

#include "agent/Agent.h"
#include "agent/OptionChecks.h"
#include "agent/Options.h"
#include "agent/base/Log.h"
#include "agent/base/PrintableText.h"
#include "agent/process/Descriptors.h"
#include "agent/process/MemoryBudget.h"
#include "agent/process/ServiceManager.h"
#include "agent/process/StopSignals.h"
#include "agent/process/WriteWithin.h"
#include "orb/orb.h"

namespace {

// The timeout of a start after a request to stop.
constexpr std::chrono::seconds kStartPatience{3};

// The timeout of a write to standard output and standard error.
constexpr std::chrono::seconds kReaderPatience{1};

constexpr std::size_t kLongestReason = 3000;

int fail(const std::string& reason) {
  agent::flushLog(kReaderPatience);
  const std::string line = "topo-agentd: " + agent::printable(reason, kLongestReason) + '\n';
  agent::writeWithin(STDERR_FILENO, line, kReaderPatience);
  return 1;
}

// Loses no data: SQLite rolls an open transaction back at the next start.
[[noreturn]] void leaveStart() {
  agent::log(agent::kLogErrors, "stopped in the middle of a step of the start");
  agent::flushLog(kReaderPatience);
  std::_Exit(0);
}

void announce(const std::string& line) {
  if (!agent::writeWithin(STDOUT_FILENO, line + '\n', kReaderPatience)) {
    agent::log(agent::kLogErrors, "standard output cannot be written: " + line);
  }
}

void serveUntilStopped(const agent::Options& options) {
  agent::confineAddressSpace();
  agent::StopSignals signals(kStartPatience, leaveStart);
  agent::logInBackground();
  agent::raiseDescriptorLimit();
  agent::Agent agent(options);
  const bool started = agent.start([&signals] { return signals.arrived(); });
  signals.startEnded();
  if (started) {
    signals.onHangup([&agent] { agent.reloadFiles(); });
    const std::string line = agent.readyLine();
    announce(line);
    agent::ServiceManager manager;
    manager.ready(line, [&agent] { agent.checkAlive(); });
    signals.wait();
    signals.onHangup(nullptr);
    manager.stopping();
    agent.stop();
  }
  agent::flushLog(kReaderPatience);
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    const std::optional<agent::Options> options = agent::parseOptions(argc, argv);
    if (options && options->checkOnly) {
      agent::checkOptions(*options);
      announce("the options are valid");
    } else if (options) {
      serveUntilStopped(*options);
    }
    return 0;
  } catch (const std::exception& failure) {
    return fail(failure.what());
  } catch (const CORBA::SystemException& failure) {
    return fail("the ORB failed with " + orb::describe(failure));
  } catch (const CORBA::Exception& failure) {
    return fail(std::string("the ORB failed with ") + failure._name());
  }
}
