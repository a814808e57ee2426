#include "agent/notifications/Notifier.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "agent/base/Log.h"
#include "agent/base/PrintableText.h"
#include "agent/base/RandomId.h"
#include "agent/notifications/ChannelSink.h"
#include "agent/notifications/ConsumerSink.h"
#include "agent/notifications/SubscriptionServant.h"

namespace agent {
namespace {

// Limit for a consumer's reference: bytes of the IOR.
constexpr std::size_t kLongestReference = std::size_t{64} << 10;

// Limit for a consumer's address in the log and the status: bytes.
constexpr std::size_t kLongestName = 100;

// The POA has its own manager, so that the rest of the agent does not wait for subscriptions, and
// random object ids, so that a client cannot end the subscriptions of other clients.
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

Notifier::Notifier(orb::Server& server, NotifierOptions options, ChangeNumbers changes, Clock clock)
    : options_(std::move(options)),
      orb_(CORBA::ORB::_duplicate(server.get())),
      changeInProgress_(std::move(changes.inProgress)),
      clock_(std::move(clock)),
      ids_(changes.last, options_.ids),
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
    const MutexLock lock(mutex_);
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
    // The ORB was shut down before and has destroyed the POA.
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

// One lock for the id and the queues: every queue has the order of the ids.
void Notifier::publish(std::unique_ptr<CosNotification::StructuredEvent> event) {
  const std::uint64_t change = changeInProgress_();
  const MutexLock lock(mutex_);
  const std::optional<std::uint64_t> id = ids_.next(change);
  if (!id) {
    reportExhaustionLocked();
    return;
  }
  const Notification notification = notificationLocked(*id, std::move(event));
  forEachLocked([&notification](Receiver& receiver) { receiver.offer(notification); });
  ++notifications_;
}

// Reports a notification for which its change has no id left. Logs one line a change.
void Notifier::reportExhaustionLocked() {
  const std::uint64_t id = ids_.last();
  reportGapLocked({id, id, 1});
  if (std::exchange(exhaustedId_, id) != id) {
    log(kLogErrors, "a change has more than " + std::to_string(options_.ids.lastPosition - 1) +
                        " notifications, the others are lost");
  }
}

// On failure, reports a gap in place of the notification and throws.
Notification Notifier::notificationLocked(std::uint64_t id,
                                          std::unique_ptr<CosNotification::StructuredEvent> event) {
  try {
    stamp(*event, id, clock_());
    const std::size_t bytes = estimatedBytes(*event);
    return {id, std::move(event), bytes};
  } catch (...) {
    reportGapLocked({id, id, 1});
    throw;
  }
}

void Notifier::reportGap() {
  const MutexLock lock(mutex_);
  const std::uint64_t id = ids_.nextForGap();
  reportGapLocked({id, id, 0});
}

void Notifier::reportGapLocked(const Gap& gap) {
  ++gaps_;
  forEachLocked([&gap](Receiver& receiver) { receiver.reportGap(gap); });
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

std::shared_ptr<Receiver> Notifier::makeReceiver(std::unique_ptr<NotificationSink> sink,
                                                 std::string name, std::uint64_t number) {
  Receiver::Settings settings = receiverSettings();
  settings.name = std::move(name);
  // A subscriber logs at level 1 only.
  settings.log = [this](int, const std::string& text) { subscriberLog_.refused(text); };
  return std::make_shared<Receiver>(std::move(sink), std::move(settings),
                                    [this, number] { end(number, true); });
}

std::uint64_t Notifier::nextNumber() {
  const MutexLock lock(mutex_);
  return ++lastNumber_;
}

Result<TopoAgent::Subscription_I_var> Notifier::subscribe(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const std::string& lastNotificationId,
    const std::string& peer, orb::DestinationCheck destinations) {
  Outcome outcome = checkReference(consumer);
  if (!outcome.ok()) {
    return outcome;
  }
  destroyEnded();
  const std::uint64_t number = nextNumber();
  const std::shared_ptr<const PortableServer::ObjectId> object(randomObjectId());
  auto sink =
      std::make_unique<ConsumerSink>(consumer, options_.pushTimeout, std::move(destinations));
  const Subscription subscription{makeReceiver(std::move(sink), nameOf(consumer), number), object,
                                  peer};
  outcome = admit(number, subscription, lastNotificationId);
  if (!outcome.ok()) {
    return outcome;
  }
  Result<TopoAgent::Subscription_I_var> result = activate(number, subscription);
  if (result.ok()) {
    log(kLogEvents, "subscriber " + nameOf(consumer) + " subscribes");
  }
  return result;
}

// Serves the subscription's object and starts the receiver's thread. On failure, ends the
// subscription.
Result<TopoAgent::Subscription_I_var> Notifier::activate(std::uint64_t number,
                                                         const Subscription& subscription) {
  try {
    const PortableServer::ServantBase_var servant = new SubscriptionServant(*this, number);
    poa_->activate_object_with_id(*subscription.object, servant.in());
    const CORBA::Object_var reference = poa_->id_to_reference(*subscription.object);
    subscription.receiver->start();
    return TopoAgent::Subscription_I_var(TopoAgent::Subscription_I::_narrow(reference));
  } catch (const std::system_error& failure) {
    end(number, false);
    return Outcome{kTooMuch, std::string("no thread for another subscriber: ") + failure.what()};
  } catch (...) {
    end(number, false);
    throw;
  }
}

Outcome Notifier::checkReference(CORBA::Object_ptr consumer) {
  if (CORBA::is_nil(consumer)) {
    return {kInvalidInput, "the consumer is nil"};
  }
  const CORBA::String_var text = orb_->object_to_string(consumer);
  // "IOR:" and two digits a byte.
  if (std::strlen(text.in()) > 4 + 2 * kLongestReference) {
    return {kInvalidInput, "the consumer's reference is longer than " +
                               std::to_string(kLongestReference) + " bytes"};
  }
  return {};
}

// One lock for the gap and the subscription: every later notification reaches the receiver.
Outcome Notifier::admit(std::uint64_t number, Subscription subscription,
                        const std::string& lastNotificationId) {
  const MutexLock lock(mutex_);
  if (ending_) {
    throw CORBA::TRANSIENT(0, CORBA::COMPLETED_NO);
  }
  const auto gap = gapSinceLocked(lastNotificationId);
  Outcome outcome = gap.ok() ? checkLimitsLocked(subscription.peer) : gap.outcome();
  if (!outcome.ok()) {
    return outcome;
  }
  if (gap.value()) {
    subscription.receiver->beginWithGap(*gap.value());
  }
  subscriptions_.emplace(number, std::move(subscription));
  return {};
}

// A subscription counts until the thread of its receiver has ended.
Outcome Notifier::checkLimitsLocked(const std::string& peer) {
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
  struct Check {
    std::size_t present;
    std::size_t limit;
    std::string subject;
  };
  const Check checks[] = {
      {subscriptions_.size() + ended_.size(), options_.maxSubscribers, "already"},
      {ofPeer, options_.maxSubscribersPerPeer, "of address " + peer + " already"},
      {unanswered, options_.maxUnanswered, "whose consumers have not answered yet"},
      {unansweredOfPeer, options_.maxUnansweredPerPeer,
       "of address " + peer + " whose consumers have not answered yet"}};
  for (const Check& check : checks) {
    if (check.present >= check.limit) {
      return {kTooMuch,
              "there are " + std::to_string(check.limit) + " subscribers " + check.subject};
    }
  }
  return {};
}

Result<std::optional<Gap>> Notifier::gapSinceLocked(const std::string& lastNotificationId) {
  if (lastNotificationId.empty()) {
    return std::optional<Gap>();
  }
  const char* const end = lastNotificationId.data() + lastNotificationId.size();
  std::uint64_t id = 0;
  const auto [rest, error] = std::from_chars(lastNotificationId.data(), end, id);
  const std::string subject = "the last notification id " + inQuotes(lastNotificationId);
  if (rest != end || error == std::errc::invalid_argument) {
    return Outcome{kInvalidInput, subject + " is no number"};
  }
  if (error == std::errc::result_out_of_range || id > ids_.last()) {
    return Outcome{kInvalidInput, subject + " is newer than any notification of this agent"};
  }
  return ids_.gapSince(id);
}

bool Notifier::unsubscribe(std::uint64_t subscription) {
  return end(subscription, false);
}

bool Notifier::isSubscribed(std::uint64_t subscription) {
  const MutexLock lock(mutex_);
  return subscriptions_.count(subscription) != 0;
}

// Allocates no memory and does not wait for the receiver's thread, which may be the caller.
bool Notifier::end(std::uint64_t number, bool dropped) {
  std::shared_ptr<const PortableServer::ObjectId> object;
  {
    const MutexLock lock(mutex_);
    auto subscription = subscriptions_.extract(number);
    if (subscription.empty()) {
      return false;
    }
    object = subscription.mapped().object;
    const Receiver::Load load = subscription.mapped().receiver->load();
    sentToEnded_ += load.sent;
    lostByEnded_ += load.lost;
    subscription.mapped().receiver->stop();
    ended_.insert(std::move(subscription));
    if (dropped) {
      ++dropped_;
    }
  }
  deactivate(*object);
  return true;
}

// Failures are harmless: an object that stays active answers OBJECT_NOT_EXIST, too.
void Notifier::deactivate(const PortableServer::ObjectId& object) {
  try {
    poa_->deactivate_object(object);
  } catch (const CORBA::Exception&) {
    // The POA is being destroyed together with its objects.
  } catch (const std::bad_alloc&) {
    // The object stays active until the POA is destroyed.
  }
}

// Destroys the receivers whose threads have ended, without waiting for a thread.
void Notifier::destroyEnded() {
  Subscriptions destroyed;  // after the lock is released
  const MutexLock lock(mutex_);
  for (auto entry = ended_.begin(); entry != ended_.end();) {
    const auto present = entry++;
    if (present->second.receiver->ended()) {
      destroyed.insert(ended_.extract(present));
    }
  }
}

NotifierStatus Notifier::status() {
  NotifierStatus status;
  const MutexLock lock(mutex_);
  status.notifications = notifications_;
  status.subscribersDropped = dropped_;
  status.receivers.length(
      static_cast<CORBA::ULong>(subscriptions_.size() + (channel_ ? std::size_t{1} : 0)));
  CORBA::ULong next = 0;
  forEachLocked([&](Receiver& receiver) { status.receivers[next++] = receiver.status(); });
  return status;
}

void ReceiversLoad::add(const Receiver::Load& receiver) {
  ++receivers;
  connected += receiver.isConnected ? 1 : 0;
  queued += receiver.queued;
  bytes += receiver.bytes;
  longest = std::max(longest, receiver.queued);
  sent += receiver.sent;
  lost += receiver.lost;
}

NotifierLoad Notifier::load() {
  NotifierLoad load;
  const MutexLock lock(mutex_);
  load.notifications = notifications_;
  load.gaps = gaps_;
  load.subscribersDropped = dropped_;
  load.subscribers.sent = sentToEnded_;
  load.subscribers.lost = lostByEnded_;
  for (const auto& subscription : subscriptions_) {
    load.subscribers.add(subscription.second.receiver->load());
  }
  if (channel_) {
    load.channel.add(channel_->load());
  }
  return load;
}

bool Notifier::flush(std::chrono::milliseconds longest) {
  const auto deadline = std::chrono::steady_clock::now() + longest;
  std::vector<std::shared_ptr<Receiver>> all;
  {
    const MutexLock lock(mutex_);
    if (channel_) {
      all.push_back(channel_);
    }
    for (const auto& subscription : subscriptions_) {
      all.push_back(subscription.second.receiver);
    }
  }
  bool drained = true;
  for (const auto& receiver : all) {
    drained = receiver->waitUntilDrained(deadline) && drained;
  }
  return drained;
}

}  // namespace agent
