// An incoming connection between the thread that reads from it and those that serve its requests.

#ifndef ORB_OMNIORB_INCOMING_CHANNEL_H
#define ORB_OMNIORB_INCOMING_CHANNEL_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "../../incoming/assembler.h"

namespace orb {

// Wakes the reading thread.
//
// Thread-safety: any thread; called under a channel's lock.
class Watcher {
 public:
  using Id = std::uint64_t;

  virtual ~Watcher() = default;

  // Has the channel attended to once, when its socket is readable.
  virtual void watch(Id id, int socket) = 0;

  // Has the channel attended to soon.
  virtual void attend(Id id) = 0;

 protected:
  Watcher() = default;
};

// A socket of which complete requests are read. While the channel is selectable the reading thread
// receives and assembles; a complete request, or the end of the connection, makes the channel
// ready and no longer selectable until a serving thread asks for the next request.
//
// Thread-safety: any thread, but attend() from the reading thread alone.
class Channel {
 public:
  using Time = Assembler::Time;

  // Owns the socket. REQUIRES: watcher, limits and budget outlive this.
  Channel(Watcher::Id id, int socket, Watcher& watcher, const RequestLimits& limits,
          ReceiveBudget& budget)
      : id_(id), socket_(socket), watcher_(watcher), assembler_(limits, budget) {}
  ~Channel();
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  int socket() const { return socket_; }

  // Serving threads.

  // Reads from the oldest complete request, and never beyond its end. Waits until the deadline when
  // there is none; no deadline: without limit. 0: the deadline has passed; -1: the connection is at
  // its end.
  int read(char* to, std::size_t count,
           std::optional<std::chrono::system_clock::time_point> deadline);

  // Whether the request that was read last was refused for its size. For the thread that read it,
  // before another thread may read from the channel.
  bool isRefused() const;

  void setSelectable();

  // The calling thread serves the channel no longer. When it was to read on and did not make the
  // channel selectable, the rest of its request cannot be read any more: the connection is shut
  // down and ready, so that the serving side finds its end.
  void leave();

  // Returns when no notification of the channel is running.
  void clearSelectable();

  bool isSelectable() const;

  // Ends the connection in both directions.
  void shutDown();

  // The reading thread.

  enum class State { kWaiting, kReady, kStarved };

  // Receives and assembles once. kReady: the serving side is to be notified, and finishNotification
  // to be called then. kStarved: the memory for receiving is used up, attend again later.
  State attend(char* scratch, std::size_t scratchBytes, Time now);
  void finishNotification();

  struct RefusedRequest {
    std::string operation;
    std::size_t bytes = 0;  // as declared by the client
  };

  // The next request, if it was refused for its size.
  std::optional<RefusedRequest> refusedRequest() const;

  // When the oldest incomplete message began, if the channel waits for the rest.
  std::optional<Time> begun() const;

 private:
  void shutDownLocked();
  bool isReady() const { return assembler_.isComplete() || ended_ || shutDown_; }
  Assembler::Taken assemble(const char* bytes, std::size_t count, Time now);
  void receive(char* scratch, std::size_t scratchBytes, Time now, bool& starved);

  const Watcher::Id id_;
  const int socket_;
  Watcher& watcher_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by mutex_.
  Assembler assembler_;
  std::string rest_;  // received and not assembled, because a request was complete
  std::optional<Assembler::Request> current_;  // that is being read
  bool refused_ = false;                       // the request that was read last
  std::thread::id reader_;  // the thread that reads, until it makes the channel selectable
  bool selectable_ = false;
  bool notifying_ = false;
  bool ended_ = false;  // nothing more is to be received
  bool shutDown_ = false;
};

}  // namespace orb

#endif
