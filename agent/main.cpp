// topo-agentd: the reference agent.

#include <csignal>
#include <iostream>
#include <string>

#include "agent/Agent.h"
#include "agent/Options.h"
#include "orb/orb.h"

namespace {

// The signals that stop the agent. Blocked in every thread from the start, so that they are only
// ever taken here.
sigset_t stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

int fail(const std::string& reason) {
  std::cerr << "topo-agentd: " << reason << std::endl;
  return 1;
}

void serveUntilStopped(const agent::Options& options) {
  const sigset_t signals = stopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  agent::Agent agent(options);
  agent.start();
  std::cout << agent.readyLine() << std::endl;
  int signal = 0;
  sigwait(&signals, &signal);
  agent.stop();
}

}  // namespace

int main(int argc, char* argv[]) {
  try {
    const std::optional<agent::Options> options = agent::parseOptions(argc, argv);
    if (options) {
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
