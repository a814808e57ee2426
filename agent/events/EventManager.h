// The agent's event manager: tells handlers about changes of the managed network.

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
#include <mutex>
#include <thread>
#include <vector>

#include "platform/event/EventMgr.h"

namespace agent {

// Each handler has a lane: a queue and a thread that hands it one event at a time, in the order of
// raising, whatever the identifiers are. Handlers do not wait for each other. An exception that
// leaves a handler is logged and forgotten.
//
// One in a process at a time: TEEventMgr::Instance() is the one that exists, or null.
//
// Thread-safety: any thread.
class EventManager final : public TEEventMgr {
 public:
  static constexpr std::size_t kDefaultQueueLimit = 100000;

  struct Status {
    std::size_t subscriptions = 0;  // pairs of handler and event identifier
    std::size_t queued = 0;         // events that wait, one count for each handler
    std::uint64_t delivered = 0;    // calls of handlers that have returned
    std::uint64_t failed = 0;       // calls that ended in an exception
    std::uint64_t dropped = 0;      // events lost because a handler's queue was full
  };

  // Told that handlers did not get events:
  //   - before the next event is handed to a handler whose queue was full, or for whose event there
  //     was no memory, by its lane's thread,
  //   - when a handler unsubscribes for which events wait, by that thread,
  //   - when the first handler comes after events that had none, by the subscribing thread.
  // May be called by several threads at once. What it throws is dropped.
  using TellLost = std::function<void()>;

  // queueLimit: how many events may wait for one handler. Beyond that its oldest are lost.
  // tellLost may be empty.
  explicit EventManager(std::size_t queueLimit = kDefaultQueueLimit, TellLost tellLost = {});

  // Drops what is queued, waits for running calls and ends the threads. REQUIRES: nobody uses the
  // manager any more, except handlers in calls that are still running; and not from within one.
  ~EventManager() override;

  EventManager(const EventManager&) = delete;
  EventManager& operator=(const EventManager&) = delete;

  // Subscribing again changes nothing: one registration, undone by one UnSubscribe. The third and
  // fourth argument mean nothing here. Throws std::system_error when there is no thread to be had;
  // nothing is subscribed then. A failure is logged too, because modules drop the exception.
  // REQUIRES: a handler.
  void Subscribe(TEEventHandler* handler, int eventId, int third, int fourth) override;

  // Events of this identifier that still wait for the handler are dropped, and a call of the
  // handler that is running, of whatever event, is waited for: nobody is inside the handler when
  // its last registration is gone. The lane's thread ends with it.
  //
  // From within a call of the same handler it does not wait; then the call may be waited for by
  // unsubscribing once more from elsewhere. REQUIRES: no running call of the handler waits for the
  // calling thread.
  void UnSubscribe(TEEventHandler* handler, int eventId) override;

  // Queues an event for every handler that is subscribed to it now. Calls of one thread are handled
  // in their order, calls of many threads by all handlers in the same order. Never calls a handler
  // and never waits for one. Throws std::bad_alloc; some handlers may then have lost the event.
  void raise(int eventId, std::vector<NS_DOMAIN::TopoNode_T> nodes);

  // Waits until no handler has anything left to do with what was raised before; false when that
  // took too long. Events raised meanwhile are not waited for. Not from within a handler, whose own
  // event cannot be done.
  bool flush(std::chrono::milliseconds atMost);

  Status status() const;

 private:
  struct Queued;
  struct Lane;

  bool addSubscription(TEEventHandler& handler, int eventId);
  Lane& laneOf(TEEventHandler& handler);
  void queue(int eventId, std::vector<NS_DOMAIN::TopoNode_T> nodes);
  void lose(int eventId) noexcept;
  void deliver(const std::shared_ptr<Lane>& lane);
  void end(Lane& lane) noexcept;
  void tellLost() const noexcept;
  bool handledUpTo(std::uint64_t sequence) const;

  const std::size_t queueLimit_;
  const TellLost tellLost_;

  // Never held during a call of a handler or of tellLost_.
  mutable std::mutex mutex_;
  std::condition_variable changed_;  // a call has ended, or a lane
  // Guarded by mutex_. A lane is here until its thread leaves it for good.
  std::map<TEEventHandler*, std::shared_ptr<Lane>> lanes_;
  std::list<std::thread> ended_;  // threads that have left their lane and can be joined
  std::uint64_t raised_ = 0;      // numbers the events
  std::uint64_t delivered_ = 0;
  std::uint64_t failed_ = 0;
  std::uint64_t dropped_ = 0;
  bool unheard_ = false;  // there were events without a handler since the last subscription
};

}  // namespace agent

#endif
