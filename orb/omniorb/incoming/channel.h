// Hand-over of requests from the reading thread to the serving threads.

#ifndef ORB_OMNIORB_INCOMING_CHANNEL_H
#define ORB_OMNIORB_INCOMING_CHANNEL_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "../../incoming/assembler.h"
#include "stream.h"
#include "sync/Mutex.h"

namespace orb {

// Schedules work of the reading thread. An interface, so that tests of Channel need no epoll.
//
// Thread-safety: any thread. Called under the lock of a channel. Borrows the sockets.
// Errors: none.
class Watcher {
 public:
  using Id = std::uint64_t;

  virtual ~Watcher() = default;

  // Schedules one Channel::attend() when the socket becomes readable.
  virtual void watch(Id id, int socket) = 0;

  // Schedules one Channel::attend() now.
  virtual void attend(Id id) = 0;

 protected:
  Watcher() = default;
};

// The receiving side of a connection. A channel is in one of two states:
// - selectable: the reading thread receives bytes and assembles requests. A complete request, or
//   the end of the connection, ends this state and is reported to the serving side.
// - not selectable: a serving thread reads the request, until setSelectable() requests the next
// one.
//
// Thread-safety: any thread; attend() by the reading thread only. Ownership: owns the stream,
// borrows watcher, limits and budget. Errors of the socket, and a lack of memory while a request is
// received, appear as the end of the connection. refusedRequest() throws std::bad_alloc.
class Channel {
 public:
  using Time = Assembler::Time;

  // REQUIRES: watcher, limits and budget outlive the channel.
  Channel(Watcher::Id id, std::unique_ptr<Stream> stream, Watcher& watcher,
          const RequestLimits& limits, ReceiveBudget& budget)
      : id_(id), stream_(std::move(stream)), watcher_(watcher), assembler_(limits, budget) {}
  ~Channel() = default;
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  int socket() const { return stream_->socket(); }
  Stream& stream() const { return *stream_; }

  // Functions for serving threads:

  // Reads up to `count` bytes of the oldest complete request, and never beyond its end. Without a
  // request, waits until the deadline, or forever without a deadline. Returns the number of bytes,
  // 0 after the deadline, -1 at the end of the connection.
  int read(char* to, std::size_t count,
           std::optional<std::chrono::system_clock::time_point> deadline);

  // Whether the latest request was refused for its size. REQUIRES: called by the thread that read
  // the request, before setSelectable().
  bool isRefused() const;

  void setSelectable();

  // Whether the calling thread has begun to read and has not called setSelectable().
  bool isReading() const;

  // The calling thread stops serving the channel. If the thread has begun to read and has not
  // called setSelectable(), the rest of the request is lost: the connection is shut down, and its
  // end is reported to the serving side.
  void leave();

  // Returns when no notification of the channel is running.
  void clearSelectable();

  bool isSelectable() const;

  // Ends the connection in both directions.
  void shutDown();

  // Functions for the reading thread:

  enum class State { kWaiting, kReady, kStarved };

  // Receives and assembles once. After kReady the caller notifies the serving side, then calls
  // finishNotification(), or cancelNotification() when the notification has failed and attend() is
  // to be called again. After kStarved the receive budget is exhausted and the caller retries
  // later.
  State attend(char* scratch, std::size_t scratchBytes, Time now);
  void finishNotification();
  void cancelNotification();

  struct RefusedRequest {
    std::string operation;
    std::size_t bytes = 0;  // as declared by the client
  };

  // The next request, if it was refused for its size.
  std::optional<RefusedRequest> refusedRequest() const;

  // Arrival time of the oldest incomplete message, if the channel waits for the rest.
  std::optional<Time> incompleteSince() const;

 private:
  void shutDownLocked() REQUIRES(mutex_);
  // Whether a request, or the end of the connection, can be reported.
  bool isReady() const REQUIRES(mutex_) { return assembler_.isComplete() || ended_ || shutDown_; }
  // Whether attend() has work before the socket becomes readable.
  bool hasReceived() const REQUIRES(mutex_) { return !rest_.empty() || stream_->hasReceived(); }
  Assembler::Progress assemble(const char* bytes, std::size_t count, Time now) REQUIRES(mutex_);
  void receive(char* scratch, std::size_t scratchBytes, Time now, bool& starved) REQUIRES(mutex_);
  void endNotification(bool isTaken);

  const Watcher::Id id_;
  const std::unique_ptr<Stream> stream_;
  Watcher& watcher_;

  mutable Mutex mutex_;
  std::condition_variable changed_;
  Assembler assembler_ GUARDED_BY(mutex_);
  std::string rest_ GUARDED_BY(mutex_);  // received bytes after a complete request
  std::optional<Assembler::Request> current_ GUARDED_BY(mutex_);  // the request in read()
  bool refused_ GUARDED_BY(mutex_) = false;    // whether the latest request was refused
  std::thread::id reader_ GUARDED_BY(mutex_);  // the thread between read() and setSelectable()
  bool selectable_ GUARDED_BY(mutex_) = false;
  bool notifying_ GUARDED_BY(mutex_) = false;  // from kReady until finishNotification()
  bool ended_ GUARDED_BY(mutex_) = false;      // end of the stream, or invalid bytes
  bool shutDown_ GUARDED_BY(mutex_) = false;
};

}  // namespace orb

#endif
