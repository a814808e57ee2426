#include "agent/notifications/Notifier.h"

#include <charconv>
#include <cstring>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "agent/base/Log.h"
#include "agent/base/RandomId.h"
#include "agent/base/Text.h"
#include "agent/notifications/ChannelSink.h"
#include "agent/notifications/ConsumerSink.h"
#include "agent/notifications/SubscriptionServant.h"

namespace agent {
namespace {

[[noreturn]] void refuse(globaldefs::ExceptionType_T type, const std::string& reason) {
  throw globaldefs::ProcessingFailureException(type, reason.c_str());
}

// The longest reference of a consumer that is accepted, as bytes of an IOR.
constexpr std::size_t kLongestReference = std::size_t{64} << 10;

// Of the texts that tell operators where a consumer is.
constexpr std::size_t kLongestName = 100;

// The POA has a manager of its own, so that nothing of the rest of the agent waits for
// subscriptions, and random ids, so that a client can end no subscription but its own.
PortableServer::POA_ptr makePoa(PortableServer::POA_ptr root) {
  CORBA::PolicyList policies;
  policies.length(1);
  policies[0] = root->create_id_assignment_policy(PortableServer::USER_ID);
  PortableServer::POA_var poa =
      root->create_POA("subscriptions", PortableServer::POAManager::_nil(), policies);
  policies[0]->destroy();
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  return poa._retn();
}

std::string nameOf(CORBA::Object_ptr consumer) {
  const std::string address = orb::addressOf(consumer);
  return address.empty() ? "at an unknown address" : printable(address, kLongestName);
}

}  // namespace

Notifier::Notifier(orb::Server& server, NotifierOptions options, NotificationIds::Reserve reserve,
                   Clock clock)
    : options_(std::move(options)),
      orb_(CORBA::ORB::_duplicate(server.get())),
      clock_(std::move(clock)),
      ids_(std::move(reserve)),
      poa_(makePoa(server.rootPoa())) {
  if (!options_.channel.empty()) {
    Receiver::Settings settings = receiverSettings();
    settings.isChannel = true;
    settings.name = ChannelSink::nameOf(server.get(), options_.channel);
    channel_ = std::make_unique<Receiver>(
        std::make_unique<ChannelSink>(server.get(), options_.channel, options_.pushTimeout),
        std::move(settings), nullptr);
    channel_->start();
  }
}

Notifier::~Notifier() {
  std::vector<std::shared_ptr<Receiver>> all;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ending_ = true;
    subscriptions_.merge(ended_);
    for (auto& subscription : subscriptions_) {
      all.push_back(subscription.second.receiver);
    }
    subscriptions_.clear();
  }
  if (channel_) {
    all.push_back(channel_);
  }
  for (const auto& receiver : all) {
    receiver->stop();
  }
  try {
    orb::destroyPoa(poa_);
  } catch (const CORBA::Exception&) {
    // The ORB went down first and took the POA with it.
  }
  for (const auto& receiver : all) {
    receiver->join();
  }
}

void Notifier::objectCreated(const globaldefs::NVSList_T& name, const CORBA::Any& object,
                             bool edgePointRelated) {
  publish(objectCreation(name, object, edgePointRelated));
}

void Notifier::objectDeleted(const globaldefs::NVSList_T& name, bool edgePointRelated) {
  publish(objectDeletion(name, edgePointRelated));
}

void Notifier::attributesChanged(const globaldefs::NVSList_T& name,
                                 const notifications::NVList_T& attributes, bool edgePointRelated,
                                 const CORBA::Any* body) {
  publish(attributeValueChange(name, attributes, edgePointRelated, body));
}

// Under one lock, so that the order of ids is that of every queue.
void Notifier::publish(std::unique_ptr<CosNotification::StructuredEvent> event) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const std::optional<std::uint64_t> id = ids_.next();
  if (!id) {
    forEachLocked([this](Receiver& receiver) {
      receiver.reportGap({ids_.last(), ids_.last(), 1});
    });
    return;
  }
  const Notification notification = notificationLocked(*id, std::move(event));
  forEachLocked([&notification](Receiver& receiver) { receiver.offer(notification); });
  ++notifications_;
}

// When it fails, every receiver gets a gap in place of the notification.
Notification Notifier::notificationLocked(std::uint64_t id,
                                          std::unique_ptr<CosNotification::StructuredEvent> event) {
  try {
    stamp(*event, id, clock_());
    const std::size_t bytes = estimatedBytes(*event);
    return {id, std::move(event), bytes};
  } catch (...) {
    forEachLocked([id](Receiver& receiver) { receiver.reportGap({id, id, 1}); });
    throw;
  }
}

void Notifier::reportGap() {
  const std::lock_guard<std::mutex> lock(mutex_);
  const std::uint64_t id = ids_.standIn();
  forEachLocked([id](Receiver& receiver) { receiver.reportGap({id, id, 0}); });
}

void Notifier::forEachLocked(const std::function<void(Receiver&)>& visit) {
  if (channel_) {
    visit(*channel_);
  }
  for (const auto& subscription : subscriptions_) {
    visit(*subscription.second.receiver);
  }
}

Receiver::Settings Notifier::receiverSettings() const {
  Receiver::Settings settings;
  settings.queue = {options_.queueLimit, options_.queueBytes};
  settings.idleCheck = options_.idleCheck;
  settings.firstBackOff = options_.firstBackOff;
  settings.longestBackOff = options_.longestBackOff;
  settings.clock = clock_;
  settings.wait = options_.wait;
  return settings;
}

std::shared_ptr<Receiver> Notifier::makeReceiver(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                                 std::uint64_t number) {
  Receiver::Settings settings = receiverSettings();
  settings.name = nameOf(consumer);
  // Subscribers log at level 1 alone.
  settings.log = [this](int, const std::string& text) { subscriberLog_.refused(text); };
  return std::make_shared<Receiver>(std::make_unique<ConsumerSink>(consumer, options_.pushTimeout),
                                    std::move(settings), [this, number] { end(number, true); });
}

std::uint64_t Notifier::nextNumber() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return ++lastNumber_;
}

TopoAgent::Subscription_I_ptr Notifier::subscribe(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const std::string& lastNotificationId,
    const std::string& peer) {
  checkReference(consumer);
  joinEnded();
  const std::uint64_t number = nextNumber();
  const std::shared_ptr<const PortableServer::ObjectId> object(randomObjectId());
  const PortableServer::ServantBase_var servant = new SubscriptionServant(*this, number);
  const auto receiver = makeReceiver(consumer, number);
  admit(number, {receiver, object, peer}, lastNotificationId);
  try {
    poa_->activate_object_with_id(*object, servant.in());
    const CORBA::Object_var reference = poa_->id_to_reference(*object);
    receiver->start();
    log(kLogEvents, "subscriber " + nameOf(consumer) + " subscribes");
    return TopoAgent::Subscription_I::_narrow(reference);
  } catch (const std::system_error& failure) {
    end(number, false);
    refuse(globaldefs::EXCPT_CAPACITY_EXCEEDED,
           std::string("no thread for another subscriber: ") + failure.what());
  } catch (...) {
    end(number, false);
    throw;
  }
}

void Notifier::checkReference(CORBA::Object_ptr consumer) {
  if (CORBA::is_nil(consumer)) {
    refuse(globaldefs::EXCPT_INVALID_INPUT, "the consumer is nil");
  }
  const CORBA::String_var text = orb_->object_to_string(consumer);
  // "IOR:" and two digits a byte.
  if (std::strlen(text.in()) > 4 + 2 * kLongestReference) {
    refuse(globaldefs::EXCPT_INVALID_INPUT, "the consumer's reference is longer than " +
                                                std::to_string(kLongestReference) + " bytes");
  }
}

// In one step with what the receiver misses: from here on it misses nothing.
void Notifier::admit(std::uint64_t number, Subscription subscription,
                     const std::string& lastNotificationId) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (ending_) {
    throw CORBA::TRANSIENT(0, CORBA::COMPLETED_NO);
  }
  const std::optional<Gap> gap = gapSince(lastNotificationId);
  checkLimitsLocked(subscription.peer);
  if (gap) {
    subscription.receiver->beginWithGap(*gap);
  }
  subscriptions_.emplace(number, std::move(subscription));
}

// Ended subscriptions count until their threads have ended, because they take as much.
void Notifier::checkLimitsLocked(const std::string& peer) {
  std::size_t ofPeer = 0;
  std::size_t unanswered = 0;
  std::size_t unansweredOfPeer = 0;
  for (const Subscriptions* some : {&subscriptions_, &ended_}) {
    for (const auto& [number, subscription] : *some) {
      const std::size_t isOfPeer = subscription.peer == peer ? 1 : 0;
      const std::size_t isUnanswered = subscription.receiver->hasAnswered() ? 0 : 1;
      ofPeer += isOfPeer;
      unanswered += isUnanswered;
      unansweredOfPeer += isOfPeer * isUnanswered;
    }
  }
  const auto check = [](std::size_t present, std::size_t limit, const std::string& what) {
    if (present >= limit) {
      refuse(globaldefs::EXCPT_CAPACITY_EXCEEDED,
             "there are " + std::to_string(limit) + " subscribers " + what);
    }
  };
  check(subscriptions_.size() + ended_.size(), options_.maxSubscribers, "already");
  check(ofPeer, options_.maxSubscribersPerPeer, "of address " + peer + " already");
  check(unanswered, options_.maxUnanswered, "whose consumers have not answered yet");
  check(unansweredOfPeer, options_.maxUnansweredPerPeer,
        "of address " + peer + " whose consumers have not answered yet");
}

// REQUIRES: mutex_ is held.
std::optional<Gap> Notifier::gapSince(const std::string& lastNotificationId) {
  if (lastNotificationId.empty()) {
    return std::nullopt;
  }
  const char* const end = lastNotificationId.data() + lastNotificationId.size();
  std::uint64_t id = 0;
  const auto [rest, error] = std::from_chars(lastNotificationId.data(), end, id);
  if (rest != end || error == std::errc::invalid_argument) {
    refuse(globaldefs::EXCPT_INVALID_INPUT,
           "the last notification id " + inQuotes(lastNotificationId) + " is no number");
  }
  if (error == std::errc::result_out_of_range || id > ids_.last()) {
    refuse(globaldefs::EXCPT_INVALID_INPUT, "the last notification id " +
                                                inQuotes(lastNotificationId) +
                                                " is newer than any notification of this agent");
  }
  if (id == ids_.last()) {
    return std::nullopt;
  }
  return Gap{id + 1, ids_.last(), ids_.countSince(id)};
}

bool Notifier::unsubscribe(std::uint64_t subscription) {
  return end(subscription, false);
}

bool Notifier::isSubscribed(std::uint64_t subscription) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return subscriptions_.count(subscription) != 0;
}

// Does not wait for the receiver's thread, which may be the one that calls, and takes no memory.
bool Notifier::end(std::uint64_t number, bool dropped) {
  std::shared_ptr<const PortableServer::ObjectId> object;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    auto subscription = subscriptions_.extract(number);
    if (subscription.empty()) {
      return false;
    }
    object = subscription.mapped().object;
    subscription.mapped().receiver->stop();
    ended_.insert(std::move(subscription));
    if (dropped) {
      ++dropped_;
    }
  }
  deactivate(*object);
  return true;
}

// An object that stays active answers OBJECT_NOT_EXIST, as one that is not active.
void Notifier::deactivate(const PortableServer::ObjectId& object) {
  try {
    poa_->deactivate_object(object);
  } catch (const CORBA::Exception&) {
    // The POA is being destroyed, and its objects with it.
  } catch (const std::bad_alloc&) {
    // The object stays active until the POA is destroyed.
  }
}

// Destroys receivers whose threads have ended; waits for no thread.
void Notifier::joinEnded() {
  Subscriptions over;
  const std::lock_guard<std::mutex> lock(mutex_);
  for (auto entry = ended_.begin(); entry != ended_.end();) {
    const auto present = entry++;
    if (present->second.receiver->ended()) {
      over.insert(ended_.extract(present));
    }
  }
}

NotifierStatus Notifier::status() {
  NotifierStatus status;
  const std::lock_guard<std::mutex> lock(mutex_);
  status.notifications = notifications_;
  status.subscribersDropped = dropped_;
  status.receivers.length(
      static_cast<CORBA::ULong>(subscriptions_.size() + (channel_ ? std::size_t{1} : 0)));
  CORBA::ULong next = 0;
  forEachLocked([&](Receiver& receiver) { status.receivers[next++] = receiver.status(); });
  return status;
}

bool Notifier::flush(std::chrono::milliseconds longest) {
  const auto deadline = std::chrono::steady_clock::now() + longest;
  std::vector<std::shared_ptr<Receiver>> all;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (channel_) {
      all.push_back(channel_);
    }
    for (const auto& subscription : subscriptions_) {
      all.push_back(subscription.second.receiver);
    }
  }
  bool sent = true;
  for (const auto& receiver : all) {
    sent = receiver->waitUntilDrained(deadline) && sent;
  }
  return sent;
}

}  // namespace agent
