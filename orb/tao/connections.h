// The incoming connections of an ORB: how many there may be, and how they end.

#ifndef ORB_TAO_CONNECTIONS_H
#define ORB_TAO_CONNECTIONS_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "../episode.h"
#include "../incoming/assembler.h"
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

// Logs one kind of refusal: the first occurrence, and the number of occurrences when it is over.
//
// Thread-safety: any thread.
class Refusals {
 public:
  // `overText` follows the number; borrowed.
  Refusals(const LogFunction& log, const char* overText) : log_(log), overText_(overText) {}

  // Makes the line if it is to be logged. A line that finds no memory is left out.
  template <typename MakeLine>
  void add(MakeLine makeLine) {
    if (begins() && log_) {
      try {
        log_(makeLine());
      } catch (const std::bad_alloc&) {
        // There will be others.
      }
    }
  }

  // Logs the end of what is over by now.
  void end();

 private:
  bool begins();

  const LogFunction log_;
  const char* const overText_;
  std::mutex mutex_;
  Episode episode_;  // guarded by mutex_
};

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
  void noteWhatIsOver();

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
  ReceiveBudget budget_;
  Refusals refused_;
  Refusals tooLarge_;
  Refusals incomplete_;

  mutable std::mutex mutex_;
  std::condition_variable removed_;
  // Guarded by mutex_.
  std::set<std::shared_ptr<Connection>> connections_;
  bool closing_ = false;
};

}  // namespace orb

#endif
