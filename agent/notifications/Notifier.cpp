#include "agent/notifications/Notifier.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <optional>
#include <system_error>
#include <utility>

#include "agent/domain/Text.h"
#include "agent/northbound/Log.h"
#include "agent/notifications/ChannelSink.h"
#include "agent/notifications/ConsumerSink.h"
#include "agent/notifications/SubscriptionServant.h"
#include "platform/agent/TANotification.h"

namespace agent {
namespace {

std::atomic<Notifier*> theInstance{nullptr};

[[noreturn]] void refuse(globaldefs::ExceptionType_T type, const std::string& reason) {
  throw globaldefs::ProcessingFailureException(type, reason.c_str());
}

PortableServer::POA_ptr makePoa(PortableServer::POA_ptr root) {
  // A POA manager of its own: nothing of the rest of the agent waits for subscriptions.
  PortableServer::POA_var poa =
      root->create_POA("subscriptions", PortableServer::POAManager::_nil(), CORBA::PolicyList());
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  return poa._retn();
}

std::string nameOf(CORBA::Object_ptr consumer) {
  const std::string address = orb::addressOf(consumer);
  return address.empty() ? "at an unknown address" : address;
}

}  // namespace

Notifier::Notifier(orb::Server& server, NotifierOptions options, NotificationIds::Reserve reserve,
                   Clock clock)
    : options_(std::move(options)),
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
  theInstance.store(this);
}

Notifier::~Notifier() {
  theInstance.store(nullptr);
  std::vector<std::shared_ptr<Receiver>> all;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ending_ = true;
    all.swap(ended_);
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

Notifier* Notifier::instance() {
  return theInstance.load();
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
    forEachLocked([this](Receiver& receiver) { receiver.miss(ids_.last()); });
    return;
  }
  try {
    stamp(*event, *id, clock_());
    const Notification notification{*id, std::move(event)};
    forEachLocked([&notification](Receiver& receiver) { receiver.offer(notification); });
  } catch (...) {
    forEachLocked([&id](Receiver& receiver) { receiver.miss(*id); });
    throw;
  }
  ++notifications_;
}

void Notifier::missed() {
  const std::lock_guard<std::mutex> lock(mutex_);
  const std::uint64_t id = ids_.standIn();
  forEachLocked([id](Receiver& receiver) { receiver.offerLost({id, id, 0}); });
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
  settings.queueLimit = options_.queueLimit;
  settings.idleCheck = options_.idleCheck;
  settings.firstBackOff = options_.firstBackOff;
  settings.longestBackOff = options_.longestBackOff;
  settings.clock = clock_;
  return settings;
}

std::shared_ptr<Receiver> Notifier::makeReceiver(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                                 std::uint64_t number) {
  Receiver::Settings settings = receiverSettings();
  settings.name = nameOf(consumer);
  return std::make_shared<Receiver>(std::make_unique<ConsumerSink>(consumer, options_.pushTimeout),
                                    std::move(settings), [this, number] { end(number, true); });
}

std::uint64_t Notifier::nextNumber() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return ++lastNumber_;
}

TopoAgent::Subscription_I_ptr Notifier::subscribe(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const std::string& lastNotificationId) {
  if (CORBA::is_nil(consumer)) {
    refuse(globaldefs::EXCPT_INVALID_INPUT, "the consumer is nil");
  }
  joinEnded();
  const std::uint64_t number = nextNumber();
  const PortableServer::ServantBase_var servant = new SubscriptionServant(*this, number);
  const PortableServer::ObjectId_var object = poa_->activate_object(servant.in());
  try {
    const CORBA::Object_var reference = poa_->id_to_reference(object.in());
    const auto receiver = makeReceiver(consumer, number);
    admit(number, {receiver, object.in()}, lastNotificationId);
    receiver->start();
    log(kLogEvents, "subscriber " + nameOf(consumer) + " subscribes");
    return TopoAgent::Subscription_I::_narrow(reference);
  } catch (const std::system_error& failure) {
    abandon(number, object.in());
    refuse(globaldefs::EXCPT_CAPACITY_EXCEEDED,
           std::string("no thread for another subscriber: ") + failure.what());
  } catch (...) {
    abandon(number, object.in());
    throw;
  }
}

// Of a subscription that its client does not get.
void Notifier::abandon(std::uint64_t number, const PortableServer::ObjectId& object) {
  if (!end(number, false)) {
    deactivate(object);
  }
}

// In one step with what the receiver misses: from here on it misses nothing.
void Notifier::admit(std::uint64_t number, Subscription subscription,
                     const std::string& lastNotificationId) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (ending_) {
    throw CORBA::TRANSIENT(0, CORBA::COMPLETED_NO);
  }
  const std::optional<LostEvents> lost = lostSince(lastNotificationId);
  if (subscriptions_.size() + ended_.size() >= options_.maxSubscribers) {
    refuse(globaldefs::EXCPT_CAPACITY_EXCEEDED,
           "there are " + std::to_string(options_.maxSubscribers) + " subscribers already");
  }
  if (lost) {
    subscription.receiver->offerLost(*lost);
  }
  subscriptions_.emplace(number, std::move(subscription));
}

// REQUIRES: mutex_ is held.
std::optional<LostEvents> Notifier::lostSince(const std::string& lastNotificationId) {
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
  return LostEvents{id + 1, ids_.last(), ids_.countSince(id)};
}

bool Notifier::unsubscribe(std::uint64_t subscription) {
  return end(subscription, false);
}

bool Notifier::isSubscribed(std::uint64_t subscription) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return subscriptions_.count(subscription) != 0;
}

// Does not wait for the receiver's thread, which may be the one that calls.
bool Notifier::end(std::uint64_t number, bool dropped) {
  PortableServer::ObjectId object;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto entry = subscriptions_.find(number);
    if (entry == subscriptions_.end()) {
      return false;
    }
    object = entry->second.object;
    entry->second.receiver->stop();
    ended_.push_back(std::move(entry->second.receiver));
    subscriptions_.erase(entry);
    if (dropped) {
      ++dropped_;
    }
  }
  deactivate(object);
  return true;
}

void Notifier::deactivate(const PortableServer::ObjectId& object) {
  try {
    poa_->deactivate_object(object);
  } catch (const CORBA::Exception&) {
    // The POA is going, and its objects with it.
  }
}

// Lets go of receivers whose threads have ended; nothing is waited for.
void Notifier::joinEnded() {
  std::vector<std::shared_ptr<Receiver>> over;
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto running = std::partition(ended_.begin(), ended_.end(),
                                      [](const auto& receiver) { return !receiver->ended(); });
  over.assign(running, ended_.end());
  ended_.erase(running, ended_.end());
}

NotifierStatus Notifier::status() {
  NotifierStatus status;
  const std::lock_guard<std::mutex> lock(mutex_);
  status.notifications = notifications_;
  status.subscribersDropped = dropped_;
  forEachLocked([&status](Receiver& receiver) {
    const CORBA::ULong last = status.receivers.length();
    status.receivers.length(last + 1);
    status.receivers[last] = receiver.status();
  });
  return status;
}

bool Notifier::flush(std::chrono::milliseconds longest) {
  const auto end = std::chrono::steady_clock::now() + longest;
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
    sent = receiver->waitUntilSent(end) && sent;
  }
  return sent;
}

}  // namespace agent

namespace NS_CORBA {

using agent::Notifier;

void TANotification::OnObjectCreated(const globaldefs::NVSList_T& objectName,
                                     const CORBA::Any& object, bool edgePointRelated) {
  if (Notifier* const notifier = Notifier::instance()) {
    notifier->objectCreated(objectName, object, edgePointRelated);
  }
}

void TANotification::OnObjectDeleted(const globaldefs::NVSList_T& objectName,
                                     bool edgePointRelated) {
  if (Notifier* const notifier = Notifier::instance()) {
    notifier->objectDeleted(objectName, edgePointRelated);
  }
}

// What the caller adds is the body of the event.
void TANotification::OnObjectAVC(const globaldefs::NVSList_T& objectName,
                                 const notifications::NVList_T& attributes, bool edgePointRelated,
                                 const CORBA::Any& additional, bool hasAdditional) {
  if (Notifier* const notifier = Notifier::instance()) {
    notifier->attributesChanged(objectName, attributes, edgePointRelated,
                                hasAdditional ? &additional : nullptr);
  }
}

}  // namespace NS_CORBA
