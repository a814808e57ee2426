// An event channel that can forget, refuse and vanish.

#ifndef UNIT_AGENT_NOTIFICATIONS_FAKECHANNEL_H
#define UNIT_AGENT_NOTIFICATIONS_FAKECHANNEL_H

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "orb/eventchannel.h"
#include "orb/orb.h"
#include "tests/unit/agent/notifications/Events.h"

namespace notification_tests {

// Its objects are reference counted and refer to this, so it outlives their requests.
class FakeChannel {
 public:
  using Hook = std::function<void(const std::string& event)>;

  // Serves its objects on this POA.
  explicit FakeChannel(PortableServer::POA_ptr poa);
  ~FakeChannel();

  FakeChannel(const FakeChannel&) = delete;
  FakeChannel& operator=(const FakeChannel&) = delete;

  // The channel, for serving it elsewhere.
  PortableServer::ServantBase* servant() { return servant_.in(); }

  // Its proxies cease to exist.
  void forgetProxies();

  // As a channel that started again without them: their keys belong to other objects.
  void giveKeysOfProxiesAway();

  // Hands out this reference as its administrator of suppliers. REQUIRES: it is not served yet.
  void useAdmin(const std::string& reference, CORBA::ORB_ptr orb);

  // Hands out this reference as its proxies.
  void useProxy(const std::string& reference, CORBA::ORB_ptr orb);

  // Hands out this reference as its next proxy, its own ones after that.
  void useProxyOnce(const std::string& reference, CORBA::ORB_ptr orb);

  // Is called within a push, after it is recorded.
  void onPush(Hook hook);

  // "connect N", "N: EVENT", "disconnect N", where N counts proxies from 1.
  Record record;

  // For its objects.
  CosEventChannelAdmin::SupplierAdmin_ptr admin();
  CosEventChannelAdmin::ProxyPushConsumer_ptr makeProxy();
  void pushed(const std::string& proxy, const CORBA::Any& event);

 private:
  CORBA::Object_ptr activate(PortableServer::ServantBase* servant);
  std::vector<PortableServer::ObjectId> takeProxies();

  const PortableServer::POA_var poa_;
  PortableServer::ServantBase_var servant_;
  CosEventChannelAdmin::SupplierAdmin_var admin_;
  std::mutex mutex_;
  // Guarded by mutex_.
  std::vector<PortableServer::ObjectId> proxies_;
  std::size_t lastProxy_ = 0;
  Hook hook_;
  CosEventChannelAdmin::ProxyPushConsumer_var foreign_;
  bool foreignOnce_ = false;
};

}  // namespace notification_tests

#endif
