// All incoming connections of an endpoint.

#ifndef ORB_OMNIORB_INCOMING_CHANNELS_H
#define ORB_OMNIORB_INCOMING_CHANNELS_H

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "channel.h"

namespace omni {
class giopConnection;
}

namespace orb {

struct ChannelLimits {
  RequestLimits requests;
  std::size_t connections = 0;
  std::chrono::milliseconds requestTime{0};  // from a request's first byte to its last; 0: none
};

// The channels of the open connections, and what the reading thread waits for.
//
// Thread-safety: any thread, but wait(), add() and listen() from the reading thread alone.
class Channels final : public Watcher {
 public:
  struct Entry {
    std::shared_ptr<Channel> channel;
    omni::giopConnection* connection = nullptr;  // lives at least as long as it is selectable
  };

  // What happened while the reading thread waited.
  struct Events {
    bool incoming = false;  // connections can be accepted
    std::vector<Id> toAttend;
  };

  // Borrows the listening socket. Throws std::system_error.
  Channels(const RequestLimits& limits, std::size_t budgetBytes, int listeningSocket);
  ~Channels() override;
  Channels(const Channels&) = delete;
  Channels& operator=(const Channels&) = delete;

  void watch(Id id, int socket) override;
  void attend(Id id) override;

  // Ends the present wait, or the next one.
  void wake() const;

  std::size_t size() const;

  // Owns the socket from now on. Throws std::bad_alloc and leaves the socket to the caller then.
  std::pair<Watcher::Id, std::shared_ptr<Channel>> add(int socket);
  void connect(Id id, omni::giopConnection* connection);
  void remove(Id id);

  // Empty: removed already.
  Entry find(Id id) const;
  std::vector<std::pair<Id, Entry>> all() const;

  // Whether wait() reports incoming connections.
  void listen(bool on);

  // Waits no longer than so many milliseconds; -1: without limit.
  Events wait(int milliseconds);

 private:
  void control(int operation, int socket, unsigned events, Id id) const;

  const RequestLimits limits_;
  ReceiveBudget budget_;
  const int listeningSocket_;
  const int epoll_;
  const int wakeUp_;
  Id lastId_;

  mutable std::mutex mutex_;
  std::map<Id, Entry> entries_;  // guarded by mutex_
  std::vector<Id> toAttend_;     // guarded by mutex_
};

}  // namespace orb

#endif
