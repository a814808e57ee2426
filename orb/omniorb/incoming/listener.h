// The endpoint of a server: accepts connections and reads from all of them.

#ifndef ORB_OMNIORB_INCOMING_LISTENER_H
#define ORB_OMNIORB_INCOMING_LISTENER_H

#include <omniORB4/CORBA.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/omniServer.h>
#include <omniORB4/giopEndpoint.h>
// clang-format on

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../../limitlog.h"
#include "../../unixsocket.h"
#include "../log.h"
#include "acceptor.h"
#include "channels.h"
#include "serverstate.h"

namespace orb {

// One thread of the ORB runs AcceptAndMonitor() and reads from all connections without blocking on
// a client. Further threads only serve complete requests.
//
// A connection over the limit is closed after accept. A connection whose request is not complete
// within the request time is shut down. LimitLog logs both.
//
// Ownership: the ORB owns the object and destroys it with Shutdown(). Thread-safety: Poke() on any
// thread, all other functions as the ORB calls them. Errors: Bind() returns false; a connection
// that cannot be admitted is closed.
class Listener final : public omni::giopEndpoint {
 public:
  // For the endpoint of this index in the state.
  Listener(std::shared_ptr<ServerState> state, std::size_t index);

  const char* type() const override;
  const char* address() const override;
  const omni::orbServer::EndpointList* addresses() const override;
  _CORBA_Boolean publish(const omni::orbServer::PublishSpecs& specs, _CORBA_Boolean allSpecs,
                         _CORBA_Boolean allEndpoints,
                         omni::orbServer::EndpointList& published) override;
  _CORBA_Boolean Bind() override;
  omni::giopConnection* AcceptAndMonitor(omni::giopConnection::notifyReadable_t notify,
                                         void* cookie) override;
  void Poke() override;
  void Shutdown() override;

 private:
  using Time = std::chrono::steady_clock::time_point;

  ~Listener() override = default;

  const Endpoint& endpoint() const { return state_->endpoints[index_]; }
  int bindToHost();
  int bindToPath();
  omni::giopConnection* accept(Time now);
  omni::giopConnection* acceptOne(Time now);
  omni::giopConnection* admit(Descriptor socket, Time now);
  std::unique_ptr<Stream> makeStream(Descriptor socket) const;
  void attend(Watcher::Id id, omni::giopConnection::notifyReadable_t notify, void* cookie,
              Time now);
  void logFailure(const Channel& channel, Time now);
  void logRefused(const Channel& channel, Time now);
  void logExpiry(const Channel& channel, Time now);
  std::optional<Time> expiryOf(const Channels::Entry& entry) const;
  void scheduleExpiry(std::optional<Time> expiry);
  void expire(Time now);
  void runTimers(Time now);
  int millisecondsToNextTimer(Time now) const;

  const std::shared_ptr<ServerState> state_;
  const std::size_t index_;
  omni::orbServer::EndpointList addresses_;
  std::optional<SocketFile> file_;
  std::optional<Acceptor> acceptor_;
  std::shared_ptr<Channels> channels_;
  std::atomic<bool> poked_{false};

  // Used by the thread in AcceptAndMonitor() only.
  std::optional<Time> nextExpiry_;    // a lower bound of the times at which a request expires
  std::optional<Time> resumeAccept_;  // end of a pause in accepting; no value: no pause
  std::vector<Watcher::Id> starved_;  // channels to retry when the receive budget may have space
  LimitLog limitLog_{writeLog};
  std::string scratch_;
};

}  // namespace orb

#endif
