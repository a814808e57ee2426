#include "tests/unit/client/support/FakeSession.h"

namespace topoctl {
namespace {

class FakeSubscription final : public virtual POA_TopoAgent::Subscription_I {
 public:
  // Borrows the script.
  explicit FakeSubscription(Script& script) : script_(script) {}

  void ping() override {
    script_.record("ping");
    script_.onPing();
  }

  void unsubscribe() override { script_.record("unsubscribe"); }

 private:
  Script& script_;
};

}  // namespace

TopoAgent::Subscription_I_ptr FakeSession::subscribe(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const char* lastNotificationId) {
  script_.record(std::string("subscribe(") + lastNotificationId + ")");
  const PortableServer::Servant_var<FakeSubscription> servant = new FakeSubscription(script_);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (*lastNotificationId != '\0' && std::stoull(lastNotificationId) > newestId_) {
      throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INVALID_INPUT, "newer");
    }
    consumer_ = CosNotifyComm::StructuredPushConsumer::_duplicate(consumer);
    subscription_ = poa_->activate_object(servant.in());
  }
  script_.copyOf(script_.onSubscribe)();
  return servant->_this();
}

TopoAgent::EventAccess_T FakeSession::getEventAccess() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (!eventAccess_) {
    throw CORBA::BAD_OPERATION();
  }
  return *eventAccess_;
}

void FakeSession::setEventAccess(TopoAgent::EventAccess_T access) {
  const std::lock_guard<std::mutex> lock(mutex_);
  eventAccess_ = access;
}

void FakeSession::removeEventAccess() {
  const std::lock_guard<std::mutex> lock(mutex_);
  eventAccess_.reset();
}

CosNotifyComm::StructuredPushConsumer_ptr FakeSession::consumer() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return CosNotifyComm::StructuredPushConsumer::_duplicate(consumer_);
}

void FakeSession::rejectIdsAbove(std::uint64_t id) {
  const std::lock_guard<std::mutex> lock(mutex_);
  newestId_ = id;
}

void FakeSession::drop() {
  const std::lock_guard<std::mutex> lock(mutex_);
  poa_->deactivate_object(subscription_);
}

}  // namespace topoctl
