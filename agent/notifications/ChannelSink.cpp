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

// Of a channel that is told that the supplier ends, which is a courtesy.
constexpr std::chrono::milliseconds kLongestFarewell{500};

constexpr std::size_t kLongestName = 100;

// The channel cannot be used. One line.
class ChannelError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// No further call once the receiver stops.
void goOn(const NotificationSink::Stopping& stopping) {
  if (stopping.load()) {
    throw ChannelError("the agent ends");
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
    if (!proxyIsThere(stopping)) {
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

// Follows the channel to another address.
bool ChannelSink::proxyIsThere(const Stopping& stopping) {
  if (CORBA::is_nil(proxy_) || !suspect_) {
    return !CORBA::is_nil(proxy_);
  }
  try {
    bool gone = false;
    callWithRetry(stopping, [&] { gone = proxy_->_non_existent(); });
    if (gone) {
      proxy_ = ProxyPushConsumer::_nil();
    }
    return !gone;
  } catch (const CORBA::SystemException& failure) {
    if (!orb::isCorbaname(reference_) || !orb::isUnreachable(failure)) {
      throw;
    }
    const CORBA::Object_var channel = channelElsewhere(stopping);
    if (CORBA::is_nil(channel)) {
      throw;
    }
    obtainProxy(channel, stopping);
    return true;
  }
}

// Where the name leads if that is not where the proxy is; nil if it is, or if nobody knows.
CORBA::Object_ptr ChannelSink::channelElsewhere(const Stopping& stopping) {
  try {
    goOn(stopping);
    CORBA::Object_var object = resolve();
    const std::string address = CORBA::is_nil(object) ? "" : orb::addressOf(object);
    if (!address.empty() && address != orb::addressOf(proxy_)) {
      return object._retn();
    }
  } catch (const ChannelError&) {
    // That the proxy cannot be reached says more.
  } catch (const CORBA::Exception&) {
    // As above.
  }
  return CORBA::Object::_nil();
}

// The proxy so far is kept until there is another.
void ChannelSink::obtainProxy(CORBA::Object_ptr object, const Stopping& stopping) {
  if (CORBA::is_nil(object)) {
    throw ChannelError("the reference is nil");
  }
  goOn(stopping);
  const CosEventChannelAdmin::EventChannel_var channel = EventChannel::_narrow(object);
  if (CORBA::is_nil(channel)) {
    throw ChannelError("the reference is not that of an event channel");
  }
  limit(channel);
  goOn(stopping);
  const CosEventChannelAdmin::SupplierAdmin_var admin = channel->for_suppliers();
  limit(admin);
  goOn(stopping);
  const CosEventChannelAdmin::ProxyPushConsumer_var proxy = admin->obtain_push_consumer();
  limit(proxy);
  goOn(stopping);
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
    return failed(failure);
  }
}

CallOutcome ChannelSink::check(const Stopping& stopping) {
  suspect_ = true;
  return connect(stopping);
}

// What a push that failed says about the channel: nobody there, or nobody who knows us, or somebody
// who does not want this event. One that does not know the operation may have the proxy's key by
// now, but an event that every new proxy answers so must not wait for ever.
CallOutcome ChannelSink::failed(const CORBA::Exception& failure) {
  suspect_ = true;
  const auto* const system = CORBA::SystemException::_downcast(&failure);
  const bool another = CORBA::BAD_OPERATION::_downcast(&failure) != nullptr;
  // Disconnected, or not there.
  const bool gone = system == nullptr || CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr;
  if (another || gone) {
    proxy_ = ProxyPushConsumer::_nil();
  }
  const bool unreachable =
      gone || (orb::isUnreachable(*system) && !orb::isConnectionClosed(*system));
  return {unreachable ? CallOutcome::kUnavailable : CallOutcome::kRejected, reasonOf(failure)};
}

void ChannelSink::disconnect() {
  try {
    orb::setCallTimeout(proxy_.in(), std::min(callTimeout_, kLongestFarewell));
    proxy_->disconnect_push_consumer();
  } catch (const CORBA::Exception&) {
    // It finds out by itself.
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

void ChannelSink::limit(CORBA::Object_ptr reference) const {
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
