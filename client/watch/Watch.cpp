#include "client/watch/Watch.h"

#include "client/agent/Connection.h"
#include "client/base/StopSignals.h"
#include "client/watch/EventLines.h"
#include "client/watch/Inbox.h"
#include "client/watch/Subscription.h"
#include "client/watch/Watcher.h"
#include "orb/orb.h"

namespace topoctl {
namespace {

// A notification contains names and texts of any length, so a push may have the maximum message
// size.
orb::Options consumerOptions(const AgentAccess& access) {
  orb::Options result = orbOptions(access);
  result.largeOperations = {"push_structured_event"};
  return result;
}

// The agent pushes over TLS if topoctl has a certificate for it.
orb::Endpoint listenAt(const AgentAccess& access, const WatchOptions& options) {
  orb::Endpoint endpoint = options.listen;
  const bool tls = !access.tls.certificate.empty() && !access.tls.authorities.empty();
  endpoint.transport = tls ? orb::Transport::kTls : orb::Transport::kTcp;
  return endpoint;
}

// The default policy with one difference: stop() ends the repetitions.
RetryPolicy retryUntilStopped(Inbox& inbox) {
  RetryPolicy policy;
  policy.wait = [&inbox](std::chrono::milliseconds delay) {
    inbox.waitForStop(delay);
    return !inbox.isStopped();
  };
  return policy;
}

}  // namespace

void watch(const AgentAccess& access, const WatchOptions& options, std::ostream& out) {
  Inbox inbox(kMaxWaiting);
  const StopSignals signals([&inbox] { inbox.stop(); });
  const auto server = orb::startServer(consumerOptions(access), listenAt(access, options), nullptr);
  const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
  manager->activate();
  Subscription subscription(server->get(), server->rootPoa(), access, inbox,
                            retryUntilStopped(inbox));
  EventLines lines(out, options.format, std::chrono::system_clock::now);
  const Intervals intervals;
  RetryDelay retryDelay(intervals.firstRetry, intervals.lastRetry);
  Watcher watcher(subscription, inbox, lines, retryDelay,
                  {access, options.count, intervals.heartbeat});
  try {
    watcher.start();
    while (!watcher.isDone()) {
      watcher.step();
    }
  } catch (...) {
    subscription.unsubscribe();
    throw;
  }
  subscription.unsubscribe();
}

}  // namespace topoctl
