// A fake event channel with failures on demand.

#ifndef UNIT_AGENT_NOTIFICATIONS_FAKECHANNEL_H
#define UNIT_AGENT_NOTIFICATIONS_FAKECHANNEL_H

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <string>
#include <vector>

#include "orb/eventchannel.h"
#include "orb/orb.h"
#include "tests/unit/agent/notifications/Events.h"

namespace notification_tests {

// A call of a proxy of the channel.
struct ProxyCall {
  enum Kind { kConnect, kPush, kDisconnect };

  Kind kind;
  std::uint64_t proxy;  // counts from 1
  Delivered event;      // of a push
};
using ProxyCalls = std::vector<ProxyCall>;
bool operator==(const ProxyCall& left, const ProxyCall& right);
void PrintTo(const ProxyCall& call, std::ostream* out);

// Expected calls.
ProxyCall connected(std::uint64_t proxy);
ProxyCall pushed(std::uint64_t proxy, const Delivered& event);
ProxyCall disconnected(std::uint64_t proxy);

// Thread-safety: any thread, except useAdmin. The objects of the channel borrow the FakeChannel,
// which outlives their requests.
class FakeChannel {
 public:
  using Hook = std::function<void(const Delivered& event)>;

  // Serves the objects of the channel on this POA.
  explicit FakeChannel(PortableServer::POA_ptr poa);
  ~FakeChannel();

  FakeChannel(const FakeChannel&) = delete;
  FakeChannel& operator=(const FakeChannel&) = delete;

  // The servant of the channel, to be served at another place, too.
  PortableServer::ServantBase* servant() { return servant_.in(); }

  // Deactivates all proxies.
  void forgetProxies();

  // Replaces all proxies by other objects with the same keys, as a restarted channel may do.
  void reuseKeysOfProxies();

  // Returns this reference as the supplier admin. REQUIRES: the channel is not served yet.
  void useAdmin(const std::string& reference, CORBA::ORB_ptr orb);

  // Returns this reference for every new proxy.
  void useProxy(const std::string& reference, CORBA::ORB_ptr orb);

  // Returns this reference for the next new proxy only.
  void useProxyOnce(const std::string& reference, CORBA::ORB_ptr orb);

  // Sets a hook that is called during a push, after the record.
  void onPush(Hook hook);

  // An entry for each call of a proxy.
  Record<ProxyCall> record;

  // Called by the objects of the channel.
  CosEventChannelAdmin::SupplierAdmin_ptr admin();
  CosEventChannelAdmin::ProxyPushConsumer_ptr makeProxy();
  void push(std::uint64_t proxy, const CORBA::Any& event);

 private:
  CORBA::Object_ptr activate(PortableServer::ServantBase* servant);
  std::vector<PortableServer::ObjectId> takeProxies();

  const PortableServer::POA_var poa_;
  PortableServer::ServantBase_var servant_;
  CosEventChannelAdmin::SupplierAdmin_var admin_;
  std::mutex mutex_;
  // Guarded by mutex_.
  std::vector<PortableServer::ObjectId> proxies_;
  std::uint64_t lastProxy_ = 0;
  Hook hook_;
  CosEventChannelAdmin::ProxyPushConsumer_var foreign_;
  bool foreignOnce_ = false;
};

}  // namespace notification_tests

#endif
