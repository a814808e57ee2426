#include "tests/unit/agent/notifications/FakeChannel.h"

#include <utility>

#include "orb/notification.h"

namespace notification_tests {
namespace {

class Proxy final : public POA_CosEventChannelAdmin::ProxyPushConsumer {
 public:
  Proxy(FakeChannel& channel, std::string name) : channel_(channel), name_(std::move(name)) {}

  void connect_push_supplier(CosEventComm::PushSupplier_ptr /*supplier*/) override {
    channel_.record.add("connect " + name_);
  }
  void push(const CORBA::Any& event) override { channel_.pushed(name_, event); }
  void disconnect_push_consumer() override { channel_.record.add("disconnect " + name_); }

 private:
  FakeChannel& channel_;
  const std::string name_;
};

class Admin final : public POA_CosEventChannelAdmin::SupplierAdmin {
 public:
  explicit Admin(FakeChannel& channel) : channel_(channel) {}

  CosEventChannelAdmin::ProxyPushConsumer_ptr obtain_push_consumer() override {
    return channel_.makeProxy();
  }
  CosEventChannelAdmin::ProxyPullConsumer_ptr obtain_pull_consumer() override {
    return CosEventChannelAdmin::ProxyPullConsumer::_nil();
  }

 private:
  FakeChannel& channel_;
};

class Channel final : public POA_CosEventChannelAdmin::EventChannel {
 public:
  explicit Channel(FakeChannel& channel) : channel_(channel) {}

  CosEventChannelAdmin::ConsumerAdmin_ptr for_consumers() override {
    return CosEventChannelAdmin::ConsumerAdmin::_nil();
  }
  CosEventChannelAdmin::SupplierAdmin_ptr for_suppliers() override { return channel_.admin(); }
  void destroy() override {}

 private:
  FakeChannel& channel_;
};

}  // namespace

FakeChannel::FakeChannel(PortableServer::POA_ptr poa)
    : poa_(PortableServer::POA::_duplicate(poa)), servant_(new Channel(*this)) {
  const PortableServer::ServantBase_var admin = new Admin(*this);
  const CORBA::Object_var reference = activate(admin.in());
  admin_ = CosEventChannelAdmin::SupplierAdmin::_narrow(reference);
}

FakeChannel::~FakeChannel() {
  forgetProxies();
}

CORBA::Object_ptr FakeChannel::activate(PortableServer::ServantBase* servant) {
  const PortableServer::ObjectId_var id = poa_->activate_object(servant);
  return poa_->id_to_reference(id.in());
}

std::vector<PortableServer::ObjectId> FakeChannel::takeProxies() {
  std::vector<PortableServer::ObjectId> proxies;
  const std::lock_guard<std::mutex> lock(mutex_);
  proxies.swap(proxies_);
  return proxies;
}

void FakeChannel::forgetProxies() {
  for (const PortableServer::ObjectId& proxy : takeProxies()) {
    poa_->deactivate_object(proxy);
  }
}

void FakeChannel::reuseKeysOfProxies() {
  for (const PortableServer::ObjectId& proxy : takeProxies()) {
    poa_->deactivate_object(proxy);
    const PortableServer::ServantBase_var other = new Admin(*this);
    poa_->activate_object_with_id(proxy, other.in());
  }
}

void FakeChannel::onPush(Hook hook) {
  const std::lock_guard<std::mutex> lock(mutex_);
  hook_ = std::move(hook);
}

CosEventChannelAdmin::SupplierAdmin_ptr FakeChannel::admin() {
  return CosEventChannelAdmin::SupplierAdmin::_duplicate(admin_);
}

void FakeChannel::useAdmin(const std::string& reference, CORBA::ORB_ptr orb) {
  const CORBA::Object_var object = orb->string_to_object(reference.c_str());
  admin_ = CosEventChannelAdmin::SupplierAdmin::_unchecked_narrow(object);
}

void FakeChannel::useProxy(const std::string& reference, CORBA::ORB_ptr orb) {
  const CORBA::Object_var object = orb->string_to_object(reference.c_str());
  const std::lock_guard<std::mutex> lock(mutex_);
  foreign_ = CosEventChannelAdmin::ProxyPushConsumer::_unchecked_narrow(object);
}

void FakeChannel::useProxyOnce(const std::string& reference, CORBA::ORB_ptr orb) {
  useProxy(reference, orb);
  const std::lock_guard<std::mutex> lock(mutex_);
  foreignOnce_ = true;
}

CosEventChannelAdmin::ProxyPushConsumer_ptr FakeChannel::makeProxy() {
  std::string name;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (foreignOnce_) {
      foreignOnce_ = false;
      return foreign_._retn();
    }
    if (!CORBA::is_nil(foreign_)) {
      return CosEventChannelAdmin::ProxyPushConsumer::_duplicate(foreign_);
    }
    name = std::to_string(++lastProxy_);
  }
  const PortableServer::ServantBase_var proxy = new Proxy(*this, name);
  const PortableServer::ObjectId_var id = poa_->activate_object(proxy.in());
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    proxies_.push_back(id.in());
  }
  const CORBA::Object_var reference = poa_->id_to_reference(id.in());
  return CosEventChannelAdmin::ProxyPushConsumer::_narrow(reference);
}

void FakeChannel::pushed(const std::string& proxy, const CORBA::Any& event) {
  const CosNotification::StructuredEvent* content = nullptr;
  const std::string text = (event >>= content) ? briefly(*content) : "something else";
  record.add(proxy + ": " + text);
  Hook hook;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    hook = hook_;
  }
  if (hook) {
    hook(text);
  }
}

}  // namespace notification_tests
