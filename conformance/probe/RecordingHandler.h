// Records the events that the host delivers.

#ifndef CONFORMANCE_PROBE_RECORDINGHANDLER_H
#define CONFORMANCE_PROBE_RECORDINGHANDLER_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/event/EventMgr.h"

namespace conformance::probe {

// Thread-safety: any thread. Owns the thread that unsubscribes; the destructor joins it.
// REQUIRES: unsubscribed before its destruction. Errors: HandleEvent throws nothing.
class RecordingHandler final : public TEEventHandler {
 public:
  using Events = std::vector<std::pair<std::string, std::string>>;  // id, ids of the nodes

  RecordingHandler() = default;
  ~RecordingHandler() override;

  int HandleEvent(int eventId, int source, const TEEvent& event) override;

  // The events since the previous call.
  Events take();

  // The largest number of calls of HandleEvent at the same time.
  int mostConcurrent();

  // During the next event 372, another thread ends the subscription to event 372 while HandleEvent
  // is running.
  void unsubscribeInNext();

  // "waited" or "early": whether HandleEvent had returned when UnSubscribe returned. "pending"
  // until then.
  std::string unsubscription();

 private:
  void countCall();
  void record(int eventId, const TEEvent& event);
  void unsubscribe();
  void join();

  std::mutex mutex_;
  std::condition_variable changed_;
  Events events_;
  int running_ = 0;
  int mostConcurrent_ = 0;
  bool isArmed_ = false;
  bool isUnsubscribing_ = false;
  std::string result_ = "pending";
  std::thread unsubscriber_;  // used by the handler's thread, and with no handler running
};

// The subscriptions of the module. Do nothing in a host without an event manager. The exceptions of
// the host pass.
void subscribe(RecordingHandler& handler);
void unsubscribe(RecordingHandler& handler);

}  // namespace conformance::probe

#endif
