// An event channel of the CORBA event service.

#ifndef AGENT_NOTIFICATIONS_CHANNELSINK_H
#define AGENT_NOTIFICATIONS_CHANNELSINK_H

#include <chrono>
#include <string>

#include "agent/notifications/NotificationSink.h"
#include "orb/eventchannel.h"
#include "orb/orb.h"

namespace agent {

// Pushes each event in an any. The reference is resolved anew whenever the channel does not know
// its supplier any more, and a corbaname also when nobody answers where the proxy is: the channel
// may be elsewhere by now. A proxy that is still there, or may come back there, is used on. Nothing
// is for good.
//
// The channel is given no supplier to call back: it need not reach the agent, and that it ended the
// connection shows at the next push.
class ChannelSink final : public NotificationSink {
 public:
  // No call takes longer than the time-out, naming services of a corbaname included.
  ChannelSink(CORBA::ORB_ptr orb, std::string reference, std::chrono::milliseconds callTimeout);

  CallOutcome connect(const Stopping& stopping) override;
  CallOutcome push(const CosNotification::StructuredEvent& event,
                   const Stopping& stopping) override;
  CallOutcome check(const Stopping& stopping) override;
  void disconnect() override;

  // Where a channel is, for messages; nothing is called.
  static std::string nameOf(CORBA::ORB_ptr orb, const std::string& reference);

 private:
  void obtainProxy(CORBA::Object_ptr object, const Stopping& stopping);
  bool proxyIsThere(const Stopping& stopping);
  CORBA::Object_ptr channelElsewhere(const Stopping& stopping);
  CallOutcome failed(const CORBA::Exception& failure);
  CORBA::Object_ptr resolve();
  void limit(CORBA::Object_ptr reference) const;

  const CORBA::ORB_var orb_;
  const std::string reference_;
  const std::chrono::milliseconds callTimeout_;
  CosEventChannelAdmin::ProxyPushConsumer_var proxy_;  // nil when it must be obtained
  bool suspect_ = false;  // a call to the proxy failed since it was known to be there
};

}  // namespace agent

#endif
