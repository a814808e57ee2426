// Delivers events about changes of the network to their handlers.

#ifndef AGENT_EVENTS_EVENTMANAGER_H
#define AGENT_EVENTS_EVENTMANAGER_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#include "platform/event/EventMgr.h"
#include "sync/Mutex.h"

namespace agent {

// Each handler has a lane: a queue and a thread that hands the events to the handler, one at a time
// and in the order of raising. Lanes do not wait for each other. An exception of a handler is
// logged and ignored.
//
// Thread-safety: any thread.
// Ownership: borrows the handlers, from Subscribe until the last UnSubscribe returns; owns the
// queued events and the threads.
// Errors: Subscribe and raise throw, as said there. A lost event becomes a gap (ReportGap).
class EventManager final : public TEEventMgr {
 public:
  static constexpr std::size_t kDefaultQueueLimit = 100000;

  // Bounds the duration of one call of a handler, for which UnSubscribe waits.
  static constexpr std::size_t kMaxNodesPerEvent = 1000;

  struct Status {
    std::size_t subscriptions = 0;  // pairs of handler and event identifier
    std::size_t queued = 0;         // sum over all queues
    std::uint64_t delivered = 0;    // calls of handlers that returned
    std::uint64_t failed = 0;       // calls of handlers that threw
    std::uint64_t dropped = 0;      // events evicted from full queues
  };

  // Reports a gap of unknown size: a handler does not get some events. Called
  //   - by the lane's thread, before the first event after the gap, when the handler's queue
  //     overflowed or memory for an event was short,
  //   - by the thread that unsubscribes a handler with queued events,
  //   - by the thread that subscribes first after events that had no handler.
  // Several threads may call at the same time. Exceptions are dropped.
  using ReportGap = std::function<void()>;

  // queueLimit: events in one handler's queue; a longer queue evicts its oldest events.
  // reportGap may be empty.
  explicit EventManager(std::size_t queueLimit = kDefaultQueueLimit, ReportGap reportGap = {});

  // Drops the queued events, waits for running calls and joins the threads. REQUIRES: no other use
  // of the manager, except by handlers in running calls; not called by a handler.
  ~EventManager() override;

  EventManager(const EventManager&) = delete;
  EventManager& operator=(const EventManager&) = delete;

  // Subscribing twice is the same as once; one UnSubscribe undoes both. The third and fourth
  // argument have no effect. When no thread can be created, logs a line (modules drop the
  // exception), subscribes nothing and throws std::system_error. REQUIRES: handler is not null.
  void Subscribe(TEEventHandler* handler, int eventId, int third, int fourth) override;

  // Drops the queued events of this identifier and waits for a running call of the handler, even a
  // call with another event: after the last UnSubscribe no thread is inside the handler. The last
  // UnSubscribe also ends the lane's thread.
  //
  // Does not wait when called by the handler itself. A second UnSubscribe by another thread then
  // waits for that call. REQUIRES: no running call of the handler waits for the calling thread.
  void UnSubscribe(TEEventHandler* handler, int eventId) override;

  // Queues the event of a change for every handler that is subscribed to eventId. More than
  // kMaxNodesPerEvent nodes become several events of the same change, in the order of the nodes and
  // without other events between them. All handlers get events in the same order. Does not call or
  // wait for a handler. Throws std::bad_alloc; a handler may then have a gap.
  void raise(std::uint64_t change, int eventId, std::vector<NS_DOMAIN::TopoNode_T> nodes);

  // The number of the change whose event the calling thread hands to a handler; 0 outside of a
  // handler's call.
  static std::uint64_t changeInProgress() noexcept;

  // Waits until all events raised before this call are handled; false when the time is over first.
  // Does not wait for later events. REQUIRES: not called by a handler.
  bool flush(std::chrono::milliseconds atMost);

  Status status() const;

 private:
  struct Queued;
  struct Lane;

  bool addSubscription(TEEventHandler& handler, int eventId);
  Lane& laneOf(TEEventHandler& handler) REQUIRES(mutex_);
  void queue(std::uint64_t change, int eventId, std::vector<NS_DOMAIN::TopoNode_T> nodes);
  bool queueLocked(const Queued& entry, std::vector<Queued>& evicted) REQUIRES(mutex_);
  void markGap(int eventId) noexcept;
  void deliver(const std::shared_ptr<Lane>& lane);
  static bool call(TEEventHandler& handler, const Queued& event) noexcept;
  void end(Lane& lane) noexcept REQUIRES(mutex_);
  void reportGap() const noexcept;
  bool handledUpTo(std::uint64_t sequence) const REQUIRES(mutex_);

  const std::size_t queueLimit_;
  const ReportGap reportGap_;

  // Not locked during a call of a handler or of reportGap_.
  mutable Mutex mutex_;
  std::condition_variable changed_;  // a call or a lane has ended
  // A lane's thread removes the lane in its last step.
  std::map<TEEventHandler*, std::shared_ptr<Lane>> lanes_ GUARDED_BY(mutex_);
  // Threads of removed lanes, to be joined.
  std::list<std::thread> ended_ GUARDED_BY(mutex_);
  std::uint64_t raised_ GUARDED_BY(mutex_) = 0;  // sequence number of the last event
  std::uint64_t delivered_ GUARDED_BY(mutex_) = 0;
  std::uint64_t failed_ GUARDED_BY(mutex_) = 0;
  std::uint64_t dropped_ GUARDED_BY(mutex_) = 0;
  // Events without a handler were raised since the last subscription.
  bool unhandledGap_ GUARDED_BY(mutex_) = false;
};

}  // namespace agent

#endif
