#include "agent/notifications/ConsumerSink.h"

#include <optional>
#include <utility>

#include "agent/notifications/RetriedCall.h"
#include "idl/PermissionMinors.h"

namespace agent {

using CosNotifyComm::StructuredPushConsumer;

namespace {

// Whether the DestinationCheck has rejected an address. A consumer that replies with the same
// exception and minor code ends its own subscription.
bool isRefusedAddress(const CORBA::SystemException& failure) {
  const auto* const refused = CORBA::NO_PERMISSION::_downcast(&failure);
  return refused != nullptr && refused->minor() == permission_minor::kPushAddress;
}

}  // namespace

ConsumerSink::ConsumerSink(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                           std::chrono::milliseconds callTimeout,
                           orb::DestinationCheck destinations)
    : consumer_(StructuredPushConsumer::_duplicate(consumer)),
      destinations_(std::move(destinations)) {
  orb::setCallTimeout(consumer_.in(), callTimeout);
}

template <typename Call>
void ConsumerSink::callConsumer(const Stopping& stopping, Call call) {
  std::optional<orb::CheckedCalls> checked;
  if (destinations_) {
    checked.emplace(consumer_.in(), destinations_);
  }
  callWithRetry(stopping, call);
}

CallOutcome ConsumerSink::connect(const Stopping& stopping) {
  return check(stopping);
}

CallOutcome ConsumerSink::push(const CosNotification::StructuredEvent& event,
                               const Stopping& stopping) {
  try {
    callConsumer(stopping, [&] { consumer_->push_structured_event(event); });
    return {};
  } catch (const CORBA::Exception& failure) {
    return {CallOutcome::kFatal, reasonOf(failure)};
  }
}

// Every answer but true proves that the consumer exists, also an exception.
CallOutcome ConsumerSink::check(const Stopping& stopping) {
  try {
    bool isDeleted = false;
    callConsumer(stopping, [&] { isDeleted = consumer_->_non_existent(); });
    return isDeleted ? CallOutcome{CallOutcome::kFatal, "the consumer does not exist any more"}
                     : CallOutcome{};
  } catch (const CORBA::SystemException& failure) {
    const bool isUnanswered = orb::isUnreachable(failure) || orb::isConnectionClosed(failure) ||
                              isRefusedAddress(failure);
    return isUnanswered ? CallOutcome{CallOutcome::kFatal, orb::describe(failure)} : CallOutcome{};
  }
}

void ConsumerSink::disconnect() {}

}  // namespace agent
