#include "agent/notifications/ChannelSink.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "agent/notifications/RetriedCall.h"
#include "orb/resolve.h"

namespace agent {
namespace {

using CosEventChannelAdmin::EventChannel;
using CosEventChannelAdmin::ProxyPushConsumer;

// Timeout of the disconnect call at the end, which the channel does not need.
constexpr std::chrono::milliseconds kDisconnectTimeout{500};

// Limit for the channel's reference in the log and the status: characters.
constexpr std::size_t kLongestName = 100;

// The reason why the channel cannot be used, in one line.
class ChannelError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Prevents further remote calls after the receiver has stopped.
void throwIfStopping(const NotificationSink::Stopping& stopping) {
  if (stopping.load()) {
    throw ChannelError("the agent stops");
  }
}

}  // namespace

ChannelSink::ChannelSink(CORBA::ORB_ptr orb, std::string reference,
                         std::chrono::milliseconds callTimeout)
    : orb_(CORBA::ORB::_duplicate(orb)),
      reference_(std::move(reference)),
      callTimeout_(callTimeout) {}

CallOutcome ChannelSink::connect(const Stopping& stopping) {
  try {
    if (!findProxy(stopping)) {
      obtainProxy(CORBA::Object_var(resolve()), stopping);
    }
    suspect_ = false;
    return {};
  } catch (const ChannelError& failure) {
    return {CallOutcome::kUnavailable, failure.what()};
  } catch (const CORBA::Exception& failure) {
    return {CallOutcome::kUnavailable, reasonOf(failure)};
  }
}

// Checks a suspect proxy. Returns false when the sink needs a new proxy. When the proxy does not
// answer and the naming service has the channel at another address, gets a proxy from there.
bool ChannelSink::findProxy(const Stopping& stopping) {
  if (CORBA::is_nil(proxy_) || !suspect_) {
    return !CORBA::is_nil(proxy_);
  }
  try {
    bool isDeleted = false;
    callWithRetry(stopping, [&] { isDeleted = proxy_->_non_existent(); });
    if (isDeleted) {
      proxy_ = ProxyPushConsumer::_nil();
    }
    return !isDeleted;
  } catch (const CORBA::SystemException& failure) {
    if (!orb::isCorbaname(reference_) || !orb::isUnreachable(failure)) {
      throw;
    }
    const CORBA::Object_var channel = movedChannel(stopping);
    if (CORBA::is_nil(channel)) {
      throw;
    }
    obtainProxy(channel, stopping);
    return true;
  }
}

// The channel in the naming service, if its address differs from the proxy's. Otherwise, and when
// the naming service fails, nil: the failure of the proxy is then the better reason for the log.
CORBA::Object_ptr ChannelSink::movedChannel(const Stopping& stopping) {
  try {
    throwIfStopping(stopping);
    CORBA::Object_var object = resolve();
    const std::string address = CORBA::is_nil(object) ? "" : orb::addressOf(object);
    if (!address.empty() && address != orb::addressOf(proxy_)) {
      return object._retn();
    }
  } catch (const ChannelError&) {
    // Returns nil.
  } catch (const CORBA::Exception&) {
    // Returns nil.
  }
  return CORBA::Object::_nil();
}

// Connects to a channel. On failure, keeps the present proxy.
void ChannelSink::obtainProxy(CORBA::Object_ptr object, const Stopping& stopping) {
  if (CORBA::is_nil(object)) {
    throw ChannelError("the reference is nil");
  }
  throwIfStopping(stopping);
  const CosEventChannelAdmin::EventChannel_var channel = EventChannel::_narrow(object);
  if (CORBA::is_nil(channel)) {
    throw ChannelError("the reference does not refer to an event channel");
  }
  setTimeout(channel);
  throwIfStopping(stopping);
  const CosEventChannelAdmin::SupplierAdmin_var admin = channel->for_suppliers();
  setTimeout(admin);
  throwIfStopping(stopping);
  const CosEventChannelAdmin::ProxyPushConsumer_var proxy = admin->obtain_push_consumer();
  setTimeout(proxy);
  throwIfStopping(stopping);
  proxy->connect_push_supplier(CosEventComm::PushSupplier::_nil());
  proxy_ = proxy;
}

CallOutcome ChannelSink::push(const CosNotification::StructuredEvent& event,
                              const Stopping& stopping) {
  CORBA::Any any;
  any <<= event;
  try {
    callWithRetry(stopping, [&] { proxy_->push(any); });
    return {};
  } catch (const CORBA::Exception& failure) {
    return outcomeOf(failure);
  }
}

CallOutcome ChannelSink::check(const Stopping& stopping) {
  suspect_ = true;
  return connect(stopping);
}

// Classifies the failure of a push:
//   - Disconnected or OBJECT_NOT_EXIST: the proxy is deleted; kUnavailable, with a new proxy next,
//   - BAD_OPERATION: another object may have the proxy's key; a new proxy next, but kRejected,
//     because an event at which every proxy raises BAD_OPERATION must not block the queue,
//   - unreachable: kUnavailable,
//   - any other failure, and a closed connection: kRejected, as the event may be the cause.
CallOutcome ChannelSink::outcomeOf(const CORBA::Exception& failure) {
  suspect_ = true;
  const auto* const system = CORBA::SystemException::_downcast(&failure);
  const bool isOtherObject = CORBA::BAD_OPERATION::_downcast(&failure) != nullptr;
  const bool isDeleted =
      system == nullptr || CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr;
  if (isOtherObject || isDeleted) {
    proxy_ = ProxyPushConsumer::_nil();
  }
  const bool unreachable =
      isDeleted || (orb::isUnreachable(*system) && !orb::isConnectionClosed(*system));
  return {unreachable ? CallOutcome::kUnavailable : CallOutcome::kRejected, reasonOf(failure)};
}

void ChannelSink::disconnect() {
  try {
    orb::setCallTimeout(proxy_.in(), std::min(callTimeout_, kDisconnectTimeout));
    proxy_->disconnect_push_consumer();
  } catch (const CORBA::Exception&) {
    // The channel notices the end of the supplier at its own checks.
  }
}

CORBA::Object_ptr ChannelSink::resolve() {
  try {
    return orb::resolve(orb_.in(), reference_, callTimeout_);
  } catch (const orb::MalformedReference& failure) {
    throw ChannelError(std::string("the reference is malformed: ") + failure.what());
  } catch (const orb::NamingServiceError& failure) {
    throw ChannelError(std::string("the naming service ") + failure.what());
  }
}

void ChannelSink::setTimeout(CORBA::Object_ptr reference) const {
  if (!CORBA::is_nil(reference)) {
    orb::setCallTimeout(reference, callTimeout_);
  }
}

std::string ChannelSink::nameOf(CORBA::ORB_ptr orb, const std::string& reference) {
  if (!orb::isCorbaname(reference)) {
    try {
      const CORBA::Object_var object = orb::resolve(orb, reference, {});
      std::string address = orb::addressOf(object.in());
      if (!address.empty()) {
        return address;
      }
    } catch (const orb::MalformedReference&) {
      // connect() reports the reason.
    }
  }
  return reference.size() <= kLongestName ? reference : reference.substr(0, kLongestName) + "...";
}

}  // namespace agent
