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
#include "../log.h"
#include "acceptor.h"
#include "channels.h"

namespace orb {

// One thread of the ORB runs AcceptAndMonitor and does all reading; it never waits for a client.
// Further threads are only used while complete requests are served.
//
// Connections over the limit are closed when they are accepted, and connections whose request is
// not complete in time are shut down. Each kind of refusal is logged at its beginning and its end.
//
// Owned by the ORB, which ends its life with Shutdown.
class Listener final : public omni::giopEndpoint {
 public:
  Listener(std::string address, const ChannelLimits& limits);

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

  omni::giopConnection* accept(Time now);
  omni::giopConnection* admit(int socket, Time now);
  void attend(Watcher::Id id, omni::giopConnection::notifyReadable_t notify, void* cookie,
              Time now);
  void noteExpiry(std::optional<Time> begun);
  void expire(Time now);
  void doWhatIsDue(Time now);
  int patience(Time now) const;

  const std::string parameter_;
  const ChannelLimits limits_;
  omni::orbServer::EndpointList addresses_;
  std::optional<Acceptor> acceptor_;
  std::shared_ptr<Channels> channels_;
  std::atomic<bool> poked_{false};

  // Of the thread in AcceptAndMonitor.
  std::optional<Time> nextExpiry_;    // no request is incomplete for too long before
  std::optional<Time> resumeAccept_;  // no value: connections are accepted
  std::vector<Watcher::Id> starved_;  // to be attended to again
  LimitLog limitLog_{writeLog};
  std::string scratch_;
};

}  // namespace orb

#endif
