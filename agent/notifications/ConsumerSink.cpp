#include "agent/notifications/ConsumerSink.h"

#include "agent/notifications/RetriedCall.h"

namespace agent {

using CosNotifyComm::StructuredPushConsumer;

ConsumerSink::ConsumerSink(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                           std::chrono::milliseconds callTimeout)
    : consumer_(StructuredPushConsumer::_duplicate(consumer)) {
  orb::setCallTimeout(consumer_.in(), callTimeout);
}

CallOutcome ConsumerSink::connect(const Stopping& stopping) {
  return check(stopping);
}

CallOutcome ConsumerSink::push(const CosNotification::StructuredEvent& event,
                               const Stopping& stopping) {
  try {
    callWithRetry(stopping, [&] { consumer_->push_structured_event(event); });
    return {};
  } catch (const CORBA::Exception& failure) {
    return {CallOutcome::kFatal, reasonOf(failure)};
  }
}

// Every answer but true proves that the consumer exists, also an exception.
CallOutcome ConsumerSink::check(const Stopping& stopping) {
  try {
    bool isDeleted = false;
    callWithRetry(stopping, [&] { isDeleted = consumer_->_non_existent(); });
    return isDeleted ? CallOutcome{CallOutcome::kFatal, "the consumer does not exist any more"}
                     : CallOutcome{};
  } catch (const CORBA::SystemException& failure) {
    const bool isUnanswered = orb::isUnreachable(failure) || orb::isConnectionClosed(failure);
    return isUnanswered ? CallOutcome{CallOutcome::kFatal, orb::describe(failure)} : CallOutcome{};
  }
}

void ConsumerSink::disconnect() {}

}  // namespace agent
