// The incoming connections of an ORB: their limit and their end.

#ifndef ORB_TAO_CONNECTIONS_H
#define ORB_TAO_CONNECTIONS_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "../boundendpoints.h"
#include "../descriptor.h"
#include "../incoming/assembler.h"
#include "../limitlog.h"
#include "../tls.h"
#include "../unixsocket.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace orb {

// An open incoming connection, from accept until the end of its transport.
//
// Thread-safety: any thread, while the socket is open; peer() on the thread of the connection. The
// socket is borrowed. No function fails.
class Connection {
 public:
  // REQUIRES: a connected socket. endpoint: the index of the endpoint that accepted it.
  Connection(int socket, Transport transport, std::size_t endpoint);

  int socket() const { return socket_; }
  const Peer& peer() const { return peer_; }

  // Sets the subject of the client's certificate. REQUIRES: called by the thread of the connection,
  // before its first request.
  void setSubject(std::string subject) { peer_.subject = std::move(subject); }

  const Endpoint& address() const { return address_; }

  // Wakes the thread that waits for a request. A reply can still be sent.
  void stopReading() const;

  // Resets the connection, so that a peer that is blocked in sending or receiving sees its end.
  void reset() const;

  // Applies Options::drainGrace to the reply of the current request.
  void beginDrain();

  bool isDraining() const;

  // Begins a request to the object, without drain.
  void beginRequest(const ObjectKey& target);

  // The object of the current or latest request.
  ObjectKey target() const;

 private:
  const int socket_;
  const Endpoint address_;
  Peer peer_;
  mutable Mutex mutex_;
  ObjectKey target_ GUARDED_BY(mutex_);
  bool draining_ GUARDED_BY(mutex_) = false;
};

// The current or latest request of a thread that serves a connection.
struct ServedRequest {
  std::shared_ptr<Connection> connection;
  std::size_t bytes = 0;  // size of the whole message
  bool refused = false;   // refused for its size: the ORB receives a request without arguments
};

// Returns the request of the calling thread.
ServedRequest& servedRequest();

// All incoming connections of an ORB, with their limits and log lines.
//
// Ownership: shared by the ORB and its transports. Thread-safety: any thread. admit() throws
// std::bad_alloc.
class Connections {
 public:
  // tls: null without a certificate. Listens on the Unix sockets among the endpoints; throws
  // EndpointError.
  Connections(const Options& options, std::vector<Endpoint> endpoints,
              std::shared_ptr<TlsContext> tls, const LogFunction& log);

  // Adds a connection; the caller keeps the socket. Returns null when the limit is reached or the
  // ORB is ending.
  std::shared_ptr<Connection> admit(int socket);
  void remove(const std::shared_ptr<Connection>& connection);
  std::size_t count() const;

  // Log lines. All but logUnread() are grouped into episodes.
  void logNoDescriptor();
  void logNoMemory();
  void logIncomplete();
  void logHandshake(const Connection& connection, const std::string& reason);
  void logUnread(const Connection& connection) const;
  void logTooLarge(const Connection& connection, const Assembler::Request& request);
  void endEpisodes();

  // Applies Options::drainGrace to the running requests to objects for which `matches` is true.
  void drain(const std::function<bool(const ObjectKey&)>& matches);

  // Stops admitting connections and reading requests. Returns when all requests and connections
  // have ended. Removes the files of the Unix sockets.
  void close();

  bool isClosing() const;

  // The requested endpoint of the next addEndpoint(). REQUIRES: addEndpoint() was called for fewer
  // endpoints than were requested.
  const Endpoint& nextEndpoint() const { return endpoints_[addresses_.bound().size()]; }

  // Returns the listening socket of a Unix endpoint, -1 without one; the caller owns the socket.
  int takeUnixSocket(const std::string& path);

  // Adds the address of the next endpoint that listens. Returns its address in references. Called
  // by the thread that starts the ORB, before the first connection is accepted.
  const Endpoint& addEndpoint(const Endpoint& endpoint) { return addresses_.add(endpoint); }
  const BoundEndpoints& addresses() const { return addresses_; }

  const Options& options() const { return options_; }
  const std::shared_ptr<TlsContext>& tls() const { return tls_; }
  const RequestLimits& limits() const { return limits_; }
  ReceiveBudget& budget() { return budget_; }

 private:
  struct UnixSocket {
    explicit UnixSocket(const std::string& path);

    Descriptor socket;
    SocketFile file;
  };

  void listenOnUnixSockets();
  std::size_t endpointOf(int socket) const;

  const Options options_;
  const std::vector<Endpoint> endpoints_;  // as requested
  const std::shared_ptr<TlsContext> tls_;
  const RequestLimits limits_;
  const LogFunction log_;
  LimitLog limitLog_;
  ReceiveBudget budget_;
  BoundEndpoints addresses_;
  std::map<std::string, UnixSocket> unixSockets_;  // by path; used at the start and in close()

  mutable Mutex mutex_;
  std::condition_variable removed_;
  std::set<std::shared_ptr<Connection>> connections_ GUARDED_BY(mutex_);
  bool closing_ GUARDED_BY(mutex_) = false;
};

}  // namespace orb

#endif
