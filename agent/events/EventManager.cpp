#include "agent/events/EventManager.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <list>
#include <set>
#include <string>
#include <utility>

#include "agent/base/Log.h"

namespace agent {
namespace {

constexpr int kSource = 0;  // every event's source

thread_local std::uint64_t changeOfThisThread = 0;

// Sets the thread's change number during a call of a handler.
class ChangeScope {
 public:
  explicit ChangeScope(std::uint64_t change) { changeOfThisThread = change; }
  ~ChangeScope() { changeOfThisThread = 0; }
  ChangeScope(const ChangeScope&) = delete;
  ChangeScope& operator=(const ChangeScope&) = delete;
};

// Calls the handler and logs an exception. Returns whether the handler returned. Destroys the
// exception before it returns, because the exception's type may belong to the handler's module.
bool callAndLog(TEEventHandler& handler, int eventId, const TEEvent& event) {
  std::string reason;
  try {
    handler.HandleEvent(eventId, kSource, event);
    return true;
  } catch (const std::exception& failure) {
    reason = failure.what();
  } catch (...) {
    reason = "unknown exception";
  }
  log(kLogErrors, "a handler of event " + std::to_string(eventId) + " failed: " + reason);
  return false;
}

bool handle(TEEventHandler& handler, int eventId, const TEEvent& event) noexcept {
  try {
    return callAndLog(handler, eventId, event);
  } catch (...) {
    return false;  // no memory for the log line
  }
}

// Moves the nodes into events of at most kMaxNodesPerEvent nodes, in the order of the nodes. No
// nodes make one event without nodes.
std::vector<std::shared_ptr<const TEEvent>> eventsOf(std::vector<NS_DOMAIN::TopoNode_T> nodes) {
  constexpr auto kMaxNodes = static_cast<std::ptrdiff_t>(EventManager::kMaxNodesPerEvent);
  std::vector<std::shared_ptr<const TEEvent>> events;
  auto first = std::make_move_iterator(nodes.begin());
  const auto end = std::make_move_iterator(nodes.end());
  do {
    const auto last = first + std::min(kMaxNodes, end - first);
    events.push_back(
        std::make_shared<const TEEvent>(TEEvent{std::vector<NS_DOMAIN::TopoNode_T>(first, last)}));
    first = last;
  } while (first != end);
  return events;
}

}  // namespace

// All queues share an event.
struct EventManager::Queued {
  std::uint64_t change;
  int eventId;
  std::uint64_t sequence;
  std::shared_ptr<const TEEvent> event;
};

// Guarded by the manager's mutex.
struct EventManager::Lane {
  explicit Lane(TEEventHandler& laneHandler) : handler(laneHandler) {}

  bool isSubscribed() const { return !eventIds.empty(); }
  bool isCalling() const { return callsEnded != callsBegun; }

  // Moves the oldest event of a queue that exceeds the limit into evicted. True when the queue was
  // not overflowing before.
  bool evictBeyond(std::size_t limit, std::vector<Queued>& evicted) {
    if (queue.size() <= limit) {
      return false;
    }
    evicted.push_back(std::move(queue.front()));
    queue.pop_front();
    hasGap = true;
    return !std::exchange(overflowing, true);
  }

  // Removes and returns the oldest event, for a call of the handler. REQUIRES: queue is not empty.
  Queued take() {
    Queued next = std::move(queue.front());
    queue.pop_front();
    overflowing = overflowing && !queue.empty();
    lastTaken = next.sequence;
    ++callsBegun;
    return next;
  }

  // Removes the events of one identifier from the queue.
  std::vector<Queued> withdraw(int eventId) {
    const auto others = std::stable_partition(
        queue.begin(), queue.end(), [&](const Queued& entry) { return entry.eventId != eventId; });
    std::vector<Queued> withdrawn;
    std::move(others, queue.end(), std::back_inserter(withdrawn));
    queue.erase(others, queue.end());
    return withdrawn;
  }

  TEEventHandler& handler;
  std::condition_variable work;  // queue has an event, or no subscription is left
  std::set<int> eventIds;
  std::deque<Queued> queue;      // events of eventIds only
  bool overflowing = false;      // events were evicted since the queue was last empty
  bool hasGap = false;           // events were lost since the last call
  std::uint64_t lastTaken = 0;   // sequence of the event of the last call
  std::uint64_t callsBegun = 0;  // calls of the handler
  std::uint64_t callsEnded = 0;
  bool ended = false;
  std::list<std::thread> thread;  // one thread; a list, because a list node moves without memory
};

EventManager::EventManager(std::size_t queueLimit, ReportGap reportGap)
    : queueLimit_(queueLimit), reportGap_(std::move(reportGap)) {}

EventManager::~EventManager() {
  {
    MutexLock lock(mutex_);
    for (const auto& [handler, lane] : lanes_) {
      lane->eventIds.clear();
      lane->queue.clear();
      lane->work.notify_one();
    }
    changed_.wait(lock.native(), [this]() REQUIRES(mutex_) { return lanes_.empty(); });
  }
  for (std::thread& thread : ended_) {
    thread.join();
  }
}

void EventManager::Subscribe(TEEventHandler* handler, int eventId, int /*third*/, int /*fourth*/) {
  bool hasGap = false;
  try {
    hasGap = addSubscription(*handler, eventId);
  } catch (const std::exception& failure) {
    log(kLogErrors,
        "a handler cannot subscribe to event " + std::to_string(eventId) + ": " + failure.what());
    throw;
  }
  if (hasGap) {
    reportGap();
  }
}

// Returns whether events without a handler were raised since the last subscription.
bool EventManager::addSubscription(TEEventHandler& handler, int eventId) {
  const MutexLock lock(mutex_);
  laneOf(handler).eventIds.insert(eventId);
  changed_.notify_all();  // an UnSubscribe that waits for the end of the lane returns
  return std::exchange(unhandledGap_, false);
}

// Finds or makes the lane of a handler.
EventManager::Lane& EventManager::laneOf(TEEventHandler& handler) {
  const auto known = lanes_.find(&handler);
  if (known != lanes_.end()) {
    return *known->second;
  }
  const auto lane = std::make_shared<Lane>(handler);
  const auto added = lanes_.emplace(&handler, lane).first;
  try {
    lane->thread.emplace_back([this, lane] { deliver(lane); });
  } catch (...) {
    lanes_.erase(added);
    throw;
  }
  return *lane;
}

void EventManager::UnSubscribe(TEEventHandler* handler, int eventId) {
  std::vector<Queued> withdrawn;  // destroyed after the lock is released
  std::list<std::thread> ended;
  {
    MutexLock lock(mutex_);
    const auto known = lanes_.find(handler);
    if (known != lanes_.end()) {
      const std::shared_ptr<Lane> lane = known->second;
      lane->eventIds.erase(eventId);
      withdrawn = lane->withdraw(eventId);
      lane->work.notify_one();
      if (lane->thread.front().get_id() != std::this_thread::get_id()) {
        changed_.wait(lock.native(), [&lane, calls = lane->callsBegun] {
          return lane->ended || (lane->isSubscribed() && lane->callsEnded >= calls);
        });
      }
    }
    ended.swap(ended_);
  }
  for (std::thread& thread : ended) {
    thread.join();
  }
  if (!withdrawn.empty()) {
    reportGap();
  }
}

void EventManager::raise(std::uint64_t change, int eventId,
                         std::vector<NS_DOMAIN::TopoNode_T> nodes) {
  try {
    queue(change, eventId, std::move(nodes));
  } catch (...) {
    markGap(eventId);
    throw;
  }
}

// Reports a gap before the next event of every handler that is subscribed to this event.
void EventManager::markGap(int eventId) noexcept {
  const MutexLock lock(mutex_);
  for (const auto& [handler, lane] : lanes_) {
    lane->hasGap = lane->hasGap || lane->eventIds.count(eventId) != 0;
  }
}

void EventManager::queue(std::uint64_t change, int eventId,
                         std::vector<NS_DOMAIN::TopoNode_T> nodes) {
  const auto events = eventsOf(std::move(nodes));
  std::vector<Queued> evicted;  // destroyed after the lock is released
  bool overflowBegins = false;
  {
    const MutexLock lock(mutex_);
    for (const auto& event : events) {
      const Queued entry = {change, eventId, ++raised_, event};
      overflowBegins = queueLocked(entry, evicted) || overflowBegins;
    }
    dropped_ += evicted.size();
  }
  if (overflowBegins) {
    log(kLogErrors, "a handler of event " + std::to_string(eventId) +
                        " is too slow: its queue of " + std::to_string(queueLimit_) +
                        " events is full, the oldest events are dropped");
  }
}

// Adds an event to the queues of its handlers and evicts older events. Returns whether a queue
// begins to overflow.
bool EventManager::queueLocked(const Queued& entry, std::vector<Queued>& evicted) {
  bool overflowBegins = false;
  bool hasHandler = false;
  for (const auto& [handler, lane] : lanes_) {
    if (lane->eventIds.count(entry.eventId) != 0) {
      hasHandler = true;
      lane->queue.push_back(entry);
      overflowBegins = lane->evictBeyond(queueLimit_, evicted) || overflowBegins;
      lane->work.notify_one();
    }
  }
  unhandledGap_ = unhandledGap_ || !hasHandler;
  return overflowBegins;
}

bool EventManager::flush(std::chrono::milliseconds atMost) {
  MutexLock lock(mutex_);
  return changed_.wait_for(lock.native(), atMost,
                           [this, last = raised_]() REQUIRES(mutex_) { return handledUpTo(last); });
}

bool EventManager::handledUpTo(std::uint64_t sequence) const {
  return std::all_of(lanes_.begin(), lanes_.end(), [&](const auto& entry) {
    const Lane& lane = *entry.second;
    return (lane.queue.empty() || lane.queue.front().sequence > sequence) &&
           (!lane.isCalling() || lane.lastTaken > sequence);
  });
}

EventManager::Status EventManager::status() const {
  const MutexLock lock(mutex_);
  Status status;
  for (const auto& [handler, lane] : lanes_) {
    status.subscriptions += lane->eventIds.size();
    status.queued += lane->queue.size();
  }
  status.delivered = delivered_;
  status.failed = failed_;
  status.dropped = dropped_;
  return status;
}

// The lane's thread.
void EventManager::deliver(const std::shared_ptr<Lane>& lane) {
  MutexLock lock(mutex_);
  for (;;) {
    lane->work.wait(lock.native(), [&] { return !lane->isSubscribed() || !lane->queue.empty(); });
    if (!lane->isSubscribed()) {
      break;
    }
    Queued next = lane->take();
    const bool hasGap = std::exchange(lane->hasGap, false);
    lock.unlock();
    if (hasGap) {
      reportGap();
    }
    const bool returned = call(lane->handler, next);
    next.event.reset();
    lock.lock();
    ++(returned ? delivered_ : failed_);
    ++lane->callsEnded;
    changed_.notify_all();
  }
  end(*lane);
}

void EventManager::reportGap() const noexcept {
  try {
    if (reportGap_) {
      reportGap_();
    }
  } catch (...) {
    // Nobody can be notified of the failure.
  }
}

bool EventManager::call(TEEventHandler& handler, const Queued& event) noexcept {
  const ChangeScope scope(event.change);
  return handle(handler, event.eventId, *event.event);
}

std::uint64_t EventManager::changeInProgress() noexcept {
  return changeOfThisThread;
}

// Last step of the lane's thread, which does not access the handler afterwards. Allocates nothing,
// because the thread could not report a lack of memory.
void EventManager::end(Lane& lane) noexcept {
  lane.ended = true;
  ended_.splice(ended_.end(), lane.thread);
  lanes_.erase(&lane.handler);
  changed_.notify_all();
}

}  // namespace agent
