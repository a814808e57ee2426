// The channels of an endpoint.

#ifndef ORB_OMNIORB_INCOMING_CHANNELS_H
#define ORB_OMNIORB_INCOMING_CHANNELS_H

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "channel.h"
#include "serverstate.h"
#include "sync/Mutex.h"

namespace omni {
class giopConnection;
}

namespace orb {

// The channels of the open connections and the epoll instance of the reading thread.
//
// Thread-safety: any thread; wait(), add() and listen() by the reading thread only.
// Ownership: shares the channels with the threads that serve them; borrows the listening socket and
// the connections. Errors: add() and all() throw std::bad_alloc.
class Channels final : public Watcher {
 public:
  struct Entry {
    std::shared_ptr<Channel> channel;
    omni::giopConnection* connection = nullptr;  // borrowed, valid while selectable
    Channel::Time accepted;
  };

  // The result of wait(). wait() allocates nothing, because the system reports an event only once.
  struct Events {
    bool incoming = false;  // a connection can be accepted
    std::array<Id, 64> readable{};
    std::size_t readableCount = 0;
    std::vector<Id> toAttend;  // arguments of attend()
  };

  // Counts its channels in the connections of `state`. Throws std::system_error.
  Channels(std::shared_ptr<ServerState> state, int listeningSocket);
  ~Channels() override;
  Channels(const Channels&) = delete;
  Channels& operator=(const Channels&) = delete;

  void watch(Id id, int socket) override;
  void attend(Id id) override;

  // Makes the current call of wait(), or the next call, return.
  void wake() const;

  // Takes ownership of the stream.
  std::pair<Watcher::Id, std::shared_ptr<Channel>> add(std::unique_ptr<Stream> stream,
                                                       Channel::Time now);
  void connect(Id id, omni::giopConnection* connection);
  void remove(Id id);

  // Returns an empty entry for a removed channel.
  Entry find(Id id) const;
  std::vector<std::pair<Id, Entry>> all() const;

  // Whether wait() reports incoming connections.
  void listen(bool on);

  // Waits for events for at most `milliseconds`; -1: no limit.
  Events wait(int milliseconds);

 private:
  void control(int operation, int socket, unsigned events, Id id) const;
  void addAll() REQUIRES(mutex_);

  const std::shared_ptr<ServerState> state_;
  const int listeningSocket_;
  const int epoll_;
  const int wakeUp_;
  Id lastId_;

  mutable Mutex mutex_;
  std::map<Id, Entry> entries_ GUARDED_BY(mutex_);
  std::vector<Id> toAttend_ GUARDED_BY(mutex_);
  bool attendAll_ GUARDED_BY(mutex_) = false;  // toAttend_ is incomplete for lack of memory
};

}  // namespace orb

#endif
