#include "tests/unit/agent/notifications/Fixture.h"

#include <ostream>
#include <utility>

namespace notification_tests {

bool operator==(const Refusal& left, const Refusal& right) {
  return left.code == right.code && left.reason == right.reason;
}

void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << "code " << std::hex << refusal.code << ", " << refusal.reason;
}

Refusal invalidInput(const std::string& reason) {
  return {agent::kInvalidInput, reason};
}

Refusal capacityExceeded(const std::string& reason) {
  return {agent::kTooMuch, reason};
}

void Consumer::push_structured_event(const CosNotification::StructuredEvent& event) {
  received.add(deliveredBy(event));
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
  notifier_ = std::make_unique<agent::Notifier>(*server_, options_, changes(), someTime);
}

agent::ChangeNumbers NotifierFixture::changes() {
  return {lastChange_, [this] { return change_.load(); }};
}

void NotifierFixture::restart() {
  notifier_.reset();
  ++lastChange_;
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
  return subscribeAt(consumer.reference.in(), last, peer);
}

TopoAgent::Subscription_I_var NotifierFixture::subscribeAt(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const std::string& last,
    const std::string& peer) {
  const auto result = notifier_->subscribe(consumer, last, peer);
  EXPECT_TRUE(result.ok()) << result.outcome().reason;
  return result.ok() ? result.value() : TopoAgent::Subscription_I_var();
}

Refusal NotifierFixture::refusal(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                 const std::string& last, const std::string& peer) {
  const agent::Outcome outcome = notifier_->subscribe(consumer, last, peer).outcome();
  return {outcome.code, outcome.reason};
}

ReceiverStates NotifierFixture::receivers() {
  ReceiverStates states;
  const agent::NotifierStatus status = notifier_->status();
  for (CORBA::ULong i = 0; i < status.receivers.length(); ++i) {
    states.push_back(stateOf(status.receivers[i]));
  }
  return states;
}

bool NotifierFixture::becomes(const ReceiverStates& wanted) {
  const bool reached = eventually([&] { return receivers() == wanted; });
  EXPECT_EQ(wanted, receivers());
  return reached;
}

bool NotifierFixture::isSubscribed(TopoAgent::Subscription_I_ptr subscription) {
  try {
    subscription->ping();
    return true;
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    return false;
  }
}

}  // namespace notification_tests
