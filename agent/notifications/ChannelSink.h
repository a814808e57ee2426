// The sink for an event channel of the CORBA event service.

#ifndef AGENT_NOTIFICATIONS_CHANNELSINK_H
#define AGENT_NOTIFICATIONS_CHANNELSINK_H

#include <chrono>
#include <string>

#include "agent/notifications/NotificationSink.h"
#include "orb/eventchannel.h"
#include "orb/orb.h"

namespace agent {

// Pushes each event, in an any, to a proxy of the channel. Gets a new proxy
//   - when the channel has deleted the proxy: from the channel at the configured reference,
//   - when the proxy is unreachable, the reference is a corbaname, and the name is bound to another
//     address: from the channel at that address.
// Otherwise keeps an unreachable proxy, because a restarted channel may have the same proxies.
//
// Connects without a supplier object: the channel need not reach the agent, and the next push
// detects a disconnected proxy.
//
// Thread-safety: as NotificationSink.
// Ownership: holds references to the ORB and to the proxy.
// Errors: every failure is a CallOutcome; none is kFatal.
class ChannelSink final : public NotificationSink {
 public:
  // reference: in any form. callTimeout: of each remote call, calls to a naming service included.
  ChannelSink(CORBA::ORB_ptr orb, std::string reference, std::chrono::milliseconds callTimeout);

  CallOutcome connect(const Stopping& stopping) override;
  CallOutcome push(const CosNotification::StructuredEvent& event,
                   const Stopping& stopping) override;
  CallOutcome check(const Stopping& stopping) override;
  void disconnect() override;

  // The name of a channel in the log and the status: its address, or the beginning of a reference
  // without an address. Makes no remote call. Thread-safety: any thread.
  static std::string nameOf(CORBA::ORB_ptr orb, const std::string& reference);

 private:
  void obtainProxy(CORBA::Object_ptr object, const Stopping& stopping);
  bool findProxy(const Stopping& stopping);
  CORBA::Object_ptr movedChannel(const Stopping& stopping);
  CallOutcome outcomeOf(const CORBA::Exception& failure);
  CORBA::Object_ptr resolve();
  void setTimeout(CORBA::Object_ptr reference) const;

  const CORBA::ORB_var orb_;
  const std::string reference_;
  const std::chrono::milliseconds callTimeout_;
  CosEventChannelAdmin::ProxyPushConsumer_var proxy_;  // nil: the sink needs a new proxy
  bool suspect_ = false;                               // the proxy must be checked before a push
};

}  // namespace agent

#endif
