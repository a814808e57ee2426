// The incoming connections of an ORB: how many there may be, and how they end.

#ifndef ORB_TAO_CONNECTIONS_H
#define ORB_TAO_CONNECTIONS_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>

#include "../incoming/assembler.h"
#include "../limitlog.h"
#include "orb/orb.h"

namespace orb {

// An open incoming connection, from its acceptance until its transport is destroyed.
//
// Thread-safety: any thread, while it is open.
class Connection {
 public:
  // The socket is connected, and borrowed.
  explicit Connection(int socket);

  int socket() const { return socket_; }
  const std::string& peer() const { return peer_.host; }  // a numeric address
  const Endpoint& address() const { return peer_; }

  // Wakes the thread that waits for a request; a reply can still be sent.
  void stopReading() const;

  // Ends the connection in both directions at once; the peer may be stuck in sending or receiving.
  void cut() const;

  // Something waits for the reply to the present request from now on.
  void hurry();

  bool isHurried() const;

  // A request to the object is served from now on.
  void beginRequest(const ObjectKey& target);

  // The object of the present request, or of the last one.
  ObjectKey target() const;

 private:
  const int socket_;
  const Endpoint peer_;
  mutable std::mutex mutex_;
  // Guarded by mutex_.
  ObjectKey target_;
  bool hurried_ = false;
};

// The request that the calling thread serves, or served last.
struct ServedRequest {
  std::shared_ptr<Connection> connection;
  std::size_t bytes = 0;  // of the whole message
  bool refused = false;   // for its size: what the ORB was given has no arguments
};

ServedRequest& servedRequest();

// All incoming connections of an ORB.
//
// Thread-safety: any thread.
class Connections {
 public:
  Connections(const Options& options, const LogFunction& log);

  // Null when the limit is reached or the ORB ends; the socket stays the caller's.
  std::shared_ptr<Connection> admit(int socket);
  void remove(const std::shared_ptr<Connection>& connection);

  // What the log receives.
  void noteNoDescriptor();
  void noteNoMemory();
  void noteIncomplete();
  void noteUnread(const Connection& connection) const;
  void noteTooLarge(const Connection& connection, const Assembler::Request& request);
  void endEpisodes();

  // Has something wait for the replies to requests for whose objects the predicate is true: they
  // wait for their clients no longer than Options::drainGrace then.
  void hurry(const std::function<bool(const ObjectKey&)>& concerns);

  // From here on no connection is admitted and no request is read. Returns when all connections
  // have ended, which they do when their requests have.
  void close();

  bool isClosing() const;

  const Options& options() const { return options_; }
  const RequestLimits& limits() const { return limits_; }
  ReceiveBudget& budget() { return budget_; }

 private:
  std::size_t count() const;

  const Options options_;
  const RequestLimits limits_;
  const LogFunction log_;
  LimitLog limitLog_;
  ReceiveBudget budget_;

  mutable std::mutex mutex_;
  std::condition_variable removed_;
  // Guarded by mutex_.
  std::set<std::shared_ptr<Connection>> connections_;
  bool closing_ = false;
};

}  // namespace orb

#endif
