#include "tests/unit/agent/notifications/Fixture.h"

#include <utility>

namespace notification_tests {

void Consumer::push_structured_event(const CosNotification::StructuredEvent& event) {
  received.add(briefly(event));
  if (hook_) {
    hook_(event);
  }
}

void Consumer::offer_change(const CosNotification::EventTypeSeq& /*added*/,
                            const CosNotification::EventTypeSeq& /*removed*/) {}

NotifierFixture::NotifierFixture()
    : server_(orb::startServer({}, {"127.0.0.1", 0}, [](const std::string&) {})) {
  const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
  manager->activate();
  options_.pushTimeout = kPatience;
}

NotifierFixture::~NotifierFixture() = default;

void NotifierFixture::start() {
  notifier_ =
      std::make_unique<agent::Notifier>(*server_, options_, reservation_.function(), someTime);
}

void NotifierFixture::restart() {
  notifier_.reset();
  start();
}

void NotifierFixture::publish(int count) {
  for (int i = 0; i < count; ++i) {
    notifier_->objectDeleted(objectName("TopoSubnetwork", "core"), true);
  }
}

ServedConsumer NotifierFixture::makeConsumer(Consumer::Hook hook) {
  ServedConsumer made;
  made.servant = new Consumer(std::move(hook));
  made.owner = made.servant;
  made.reference = made.servant->_this();
  return made;
}

CosNotifyComm::StructuredPushConsumer_ptr NotifierFixture::consumerAt(
    const std::string& reference) {
  const CORBA::Object_var object = orb()->string_to_object(reference.c_str());
  return CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(object);
}

TopoAgent::Subscription_I_var NotifierFixture::subscribe(const ServedConsumer& consumer,
                                                         const std::string& last,
                                                         const std::string& peer) {
  return notifier_->subscribe(consumer.reference.in(), last, peer);
}

std::string NotifierFixture::refusal(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                     const std::string& last, const std::string& peer) {
  try {
    const TopoAgent::Subscription_I_var subscription = notifier_->subscribe(consumer, last, peer);
  } catch (const globaldefs::ProcessingFailureException& failure) {
    return std::to_string(failure.exceptionType) + " " + failure.errorReason.in();
  }
  return "none";
}

Texts NotifierFixture::receivers() {
  Texts texts;
  const agent::NotifierStatus status = notifier_->status();
  for (CORBA::ULong i = 0; i < status.receivers.length(); ++i) {
    const TopoAgent::ReceiverStatus_T& receiver = status.receivers[i];
    texts.push_back(std::string(receiver.isChannel ? "channel " : "") +
                    std::to_string(receiver.queued) + " " + std::to_string(receiver.sent) + " " +
                    std::to_string(receiver.lost) + (receiver.isConnected ? "" : " down"));
  }
  return texts;
}

bool NotifierFixture::becomes(const Texts& wanted) {
  const bool came = eventually([&] { return receivers() == wanted; });
  EXPECT_EQ(wanted, receivers());
  return came;
}

bool NotifierFixture::stands(TopoAgent::Subscription_I_ptr subscription) {
  try {
    subscription->ping();
    return true;
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    return false;
  }
}

}  // namespace notification_tests
