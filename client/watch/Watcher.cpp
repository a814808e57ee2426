#include "client/watch/Watcher.h"

#include <utility>

#include "client/agent/CallFailure.h"

namespace topoctl {
namespace {

// The failure that is being handled, if the agent can be blamed for it; others are thrown on.
// REQUIRES: called in a catch block.
std::string agentsFailure(const AgentAccess& access) {
  const Failure failure = currentFailure(access);
  if (failure.code() == ExitCode::kLocal) {
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
  lines_.tellWatching(known_.size());
}

bool Watcher::isDone() const {
  return inbox_.isStopped() || (options_.count > 0 && shown_ >= options_.count);
}

void Watcher::step() {
  if (!connected_) {
    comeBack();
    return;
  }
  if (!held_.empty()) {
    const Event event = std::move(held_.front());
    held_.pop_front();
    handle(event);
    return;
  }
  const Inbox::Taken taken = inbox_.take(options_.heartbeat);
  switch (taken.state) {
    case Inbox::State::kEvent:
      return handle(taken.event);
    case Inbox::State::kNothing:
      return ask();
    case Inbox::State::kEnded:
      return lose("the agent ended the subscription");
    case Inbox::State::kStopped:
      return;
  }
}

// Applied whether it is printed or not, so that what is known stays right.
void Watcher::show(const Event& event) {
  known_.apply(event);
  if (!isDone()) {
    lines_.tell(event);
    ++shown_;
  }
}

void Watcher::handle(const Event& event) {
  show(event);
  if (event.kind == EventKind::kLost && !isDone()) {
    try {
      synchronize();
    } catch (...) {
      lose(agentsFailure(options_.access));
    }
  }
}

// When there is nothing to print, is the agent still there, and does it still know of us? One who
// has not heard anything yet is told nothing of what it missed, so the view says it.
void Watcher::ask() {
  try {
    if (!subscription_.stands()) {
      subscription_.subscribe();
      synchronize();
    }
  } catch (...) {
    lose(agentsFailure(options_.access));
  }
}

// Events that arrive meanwhile are printed afterwards, so the differences leave out what they tell.
std::size_t Watcher::synchronize() {
  KnownNodes read = subscription_.readNodes();
  const std::size_t nodes = read.size();
  inbox_.takeAll(held_, kMaxWaiting);
  const std::vector<Event> differences = resync(known_, read, held_);
  known_ = std::move(read);
  for (const Event& event : differences) {
    if (!isDone()) {
      lines_.tell(event);
      ++shown_;
    }
  }
  return nodes;
}

void Watcher::lose(const std::string& reason) {
  subscription_.close();
  connected_ = false;
  retryDelay_.reset();
  showRest();
  if (!isDone()) {
    lines_.tellDisconnected(reason);
  }
  subscription_.unsubscribe();  // the agent may be there, and only its view not
}

// What was received before is older than the next view.
void Watcher::showRest() {
  inbox_.takeAll(held_, held_.size() + kMaxWaiting);
  for (; !held_.empty(); held_.pop_front()) {
    show(held_.front());
  }
}

void Watcher::comeBack() {
  inbox_.pause(retryDelay_.next());
  if (inbox_.isStopped()) {
    return;
  }
  std::size_t nodes = 0;
  try {
    subscription_.subscribe();
    nodes = synchronize();
  } catch (...) {
    agentsFailure(options_.access);
    subscription_.unsubscribe();
    showRest();
    return;
  }
  connected_ = true;
  if (!isDone()) {
    lines_.tellWatching(nodes);
  }
}

}  // namespace topoctl
