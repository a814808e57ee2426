#include "client/watch/Watcher.h"

#include <utility>

#include "client/agent/CallFailure.h"

namespace topoctl {
namespace {

// The text of the failure that is being handled. Throws the failure if its cause is this process.
// REQUIRES: called in a catch block.
std::string failureOfAgent(const AgentAccess& access) {
  const Failure failure = currentFailure(access);
  if (failure.code() == ExitCode::kLocal || failure.code() == ExitCode::kOutputClosed) {
    throw failure;
  }
  return failure.what();
}

}  // namespace

Watcher::Watcher(Subscription& subscription, Inbox& inbox, EventLines& lines,
                 RetryDelay& retryDelay, const WatcherOptions& options)
    : subscription_(subscription),
      inbox_(inbox),
      lines_(lines),
      retryDelay_(retryDelay),
      options_(options) {}

void Watcher::start() {
  subscription_.subscribe();
  known_ = subscription_.readNodes();
  connected_ = true;
  printWatching(known_.size());
}

void Watcher::printWatching(std::size_t nodes) {
  lines_.printWatching(nodes);
  switch (subscription_.eventAccess()) {
    case TopoAgent::EA_ALLOWED:
      return;
    case TopoAgent::EA_DENIED:
      return lines_.printSilent(
          "no notification will arrive: the agent denies its module the access to events");
    case TopoAgent::EA_UNKNOWN:
      return lines_.printSilent(
          "no notification will arrive: the agent has no security service that allows its module "
          "the access to events");
  }
}

bool Watcher::isDone() const {
  return inbox_.isStopped() || (options_.count > 0 && printed_ >= options_.count);
}

void Watcher::step() {
  if (!connected_) {
    inbox_.waitForStop(retryDelay_.next());
    if (!inbox_.isStopped()) {
      reconnect();
    }
    return;
  }
  if (!pending_.empty()) {
    const Event event = std::move(pending_.front());
    pending_.pop_front();
    process(event);
    return;
  }
  const Inbox::TakeResult taken = inbox_.take(options_.heartbeat);
  switch (taken.state) {
    case Inbox::State::kEvent:
      return process(taken.event);
    case Inbox::State::kTimeout:
      return checkSubscription();
    case Inbox::State::kEnded:
      return disconnect("the agent ended the subscription");
    case Inbox::State::kStopped:
      return;
  }
}

// Applies the event even when the count is reached, so that `known_` stays correct.
void Watcher::applyAndPrint(const Event& event) {
  known_.apply(event);
  if (!isDone()) {
    lines_.printEvent(event);
    ++printed_;
  }
}

void Watcher::process(const Event& event) {
  applyAndPrint(event);
  if (event.kind == EventKind::kLost && !isDone()) {
    try {
      synchronize();
    } catch (...) {
      disconnect(failureOfAgent(options_.access));
    }
  }
}

// Pings the agent, and subscribes again at once when the agent has dropped the subscription.
void Watcher::checkSubscription() {
  try {
    if (subscription_.isAlive()) {
      return;
    }
  } catch (...) {
    disconnect(failureOfAgent(options_.access));
    return;
  }
  disconnect("the agent was restarted, or has dropped the subscription");
  reconnect();
}

// Events that arrive during the read are printed later, so the printed differences do not contain
// the changes of these events.
std::size_t Watcher::synchronize() {
  KnownNodes read = readNodes();
  if (printGapsAtFront() && !isDone()) {
    read = readNodes();  // the gap may be newer than the first read
  }
  const std::size_t nodes = read.size();
  const std::vector<Event> differences = resync(known_, read, pending_);
  known_ = std::move(read);
  for (const Event& event : differences) {
    if (!isDone()) {
      lines_.printEvent(event);
      ++printed_;
    }
  }
  return nodes;
}

// Reads the view, and takes the events that have arrived until the end of the read.
KnownNodes Watcher::readNodes() {
  KnownNodes read = subscription_.readNodes();
  inbox_.takeAll(pending_, kMaxWaiting);
  return read;
}

// Prints a gap before the differences that it explains. Returns true if there is a gap.
bool Watcher::printGapsAtFront() {
  bool any = false;
  for (; !pending_.empty() && pending_.front().kind == EventKind::kLost; pending_.pop_front()) {
    applyAndPrint(pending_.front());
    any = true;
  }
  return any;
}

void Watcher::disconnect(const std::string& reason) {
  subscription_.stopReceiving();
  connected_ = false;
  retryDelay_.reset();
  printPending();
  if (!isDone()) {
    lines_.printDisconnected(reason);
  }
  subscription_.unsubscribe();  // the agent may be reachable although its view cannot be read
}

// Prints all received events: they are older than the next view.
void Watcher::printPending() {
  inbox_.takeAll(pending_, pending_.size() + kMaxWaiting);
  for (; !pending_.empty(); pending_.pop_front()) {
    applyAndPrint(pending_.front());
  }
}

void Watcher::reconnect() {
  std::size_t nodes = 0;
  try {
    subscription_.subscribe();
    nodes = synchronize();
  } catch (...) {
    failureOfAgent(options_.access);
    subscription_.unsubscribe();
    printPending();
    return;
  }
  connected_ = true;
  if (!isDone()) {
    printWatching(nodes);
  }
}

}  // namespace topoctl
