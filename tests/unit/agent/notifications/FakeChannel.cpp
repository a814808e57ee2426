#include "tests/unit/agent/notifications/FakeChannel.h"

#include <ostream>
#include <utility>

#include "orb/notification.h"

namespace notification_tests {
namespace {

class Proxy final : public POA_CosEventChannelAdmin::ProxyPushConsumer {
 public:
  Proxy(FakeChannel& channel, std::uint64_t number) : channel_(channel), number_(number) {}

  void connect_push_supplier(CosEventComm::PushSupplier_ptr /*supplier*/) override {
    channel_.record.add(connected(number_));
  }
  void push(const CORBA::Any& event) override { channel_.push(number_, event); }
  void disconnect_push_consumer() override { channel_.record.add(disconnected(number_)); }

 private:
  FakeChannel& channel_;
  const std::uint64_t number_;
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

bool operator==(const ProxyCall& left, const ProxyCall& right) {
  return left.kind == right.kind && left.proxy == right.proxy && left.event == right.event;
}

void PrintTo(const ProxyCall& call, std::ostream* out) {
  *out << "proxy " << call.proxy << ": ";
  if (call.kind == ProxyCall::kPush) {
    *out << "push ";
    PrintTo(call.event, out);
  } else {
    *out << (call.kind == ProxyCall::kConnect ? "connect" : "disconnect");
  }
}

ProxyCall connected(std::uint64_t proxy) {
  return {ProxyCall::kConnect, proxy, {}};
}

ProxyCall pushed(std::uint64_t proxy, const Delivered& event) {
  return {ProxyCall::kPush, proxy, event};
}

ProxyCall disconnected(std::uint64_t proxy) {
  return {ProxyCall::kDisconnect, proxy, {}};
}

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
  std::uint64_t number = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (foreignOnce_) {
      foreignOnce_ = false;
      return foreign_._retn();
    }
    if (!CORBA::is_nil(foreign_)) {
      return CosEventChannelAdmin::ProxyPushConsumer::_duplicate(foreign_);
    }
    number = ++lastProxy_;
  }
  const PortableServer::ServantBase_var proxy = new Proxy(*this, number);
  const PortableServer::ObjectId_var id = poa_->activate_object(proxy.in());
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    proxies_.push_back(id.in());
  }
  const CORBA::Object_var reference = poa_->id_to_reference(id.in());
  return CosEventChannelAdmin::ProxyPushConsumer::_narrow(reference);
}

void FakeChannel::push(std::uint64_t proxy, const CORBA::Any& event) {
  const CosNotification::StructuredEvent* content = nullptr;
  const Delivered delivered = (event >>= content) ? deliveredBy(*content) : Delivered();
  record.add(pushed(proxy, delivered));
  Hook hook;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    hook = hook_;
  }
  if (hook) {
    hook(delivered);
  }
}

}  // namespace notification_tests
