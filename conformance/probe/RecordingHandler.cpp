#include "conformance/probe/RecordingHandler.h"

#include <algorithm>
#include <chrono>

namespace conformance::probe {
namespace {

constexpr int kEventIds[] = {EVENT_TOPO_NODE_CREATED, EVENT_TOPO_NODE_DELETED,
                             EVENT_TOPO_NODE_CHANGED};

// The time that HandleEvent runs after another thread has begun to unsubscribe. An UnSubscribe that
// does not wait returns within this time.
constexpr std::chrono::milliseconds kHandling{200};

// The time in which a second call of HandleEvent at the same time begins.
constexpr std::chrono::milliseconds kEntering{1};

}  // namespace

RecordingHandler::~RecordingHandler() {
  join();
}

void RecordingHandler::join() {
  if (unsubscriber_.joinable()) {
    unsubscriber_.join();
  }
}

void RecordingHandler::record(int eventId, const TEEvent& event) {
  std::string ids;
  for (const NS_DOMAIN::TopoNode_T& node : event.nodes) {
    ids += (ids.empty() ? "" : "\t") + node.nodeId;
  }
  events_.emplace_back(std::to_string(eventId), ids);
}

void RecordingHandler::countCall() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    mostConcurrent_ = std::max(mostConcurrent_, ++running_);
  }
  std::this_thread::sleep_for(kEntering);
}

int RecordingHandler::HandleEvent(int eventId, int, const TEEvent& event) {
  countCall();
  std::unique_lock<std::mutex> lock(mutex_);
  record(eventId, event);
  if (isArmed_ && eventId == EVENT_TOPO_NODE_CREATED) {
    isArmed_ = false;
    isUnsubscribing_ = false;
    unsubscriber_ = std::thread([this] { unsubscribe(); });
    changed_.wait(lock, [this] { return isUnsubscribing_; });
    lock.unlock();
    std::this_thread::sleep_for(kHandling);
    lock.lock();
  }
  --running_;
  return 0;
}

void RecordingHandler::unsubscribe() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isUnsubscribing_ = true;
    changed_.notify_all();
  }
  TEEventMgr::Instance()->UnSubscribe(this, EVENT_TOPO_NODE_CREATED);
  const std::lock_guard<std::mutex> lock(mutex_);
  result_ = running_ == 0 ? "waited" : "early";
}

RecordingHandler::Events RecordingHandler::take() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(events_, {});
}

int RecordingHandler::mostConcurrent() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return mostConcurrent_;
}

void RecordingHandler::unsubscribeInNext() {
  join();
  const std::lock_guard<std::mutex> lock(mutex_);
  isArmed_ = true;
  result_ = "pending";
}

std::string RecordingHandler::unsubscription() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return result_;
}

void subscribe(RecordingHandler& handler) {
  if (TEEventMgr* const events = TEEventMgr::Instance()) {
    for (const int id : kEventIds) {
      events->Subscribe(&handler, id, 21, 0);
    }
  }
}

void unsubscribe(RecordingHandler& handler) {
  if (TEEventMgr* const events = TEEventMgr::Instance()) {
    for (const int id : kEventIds) {
      events->UnSubscribe(&handler, id);
    }
  }
}

}  // namespace conformance::probe
