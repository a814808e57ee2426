#include "tests/integration/Listeners.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <stdexcept>

#include "idl/NotificationLayout.h"
#include "idl/ObjectKeys.h"
#include "orb/notifychannel.h"

namespace integration {
namespace {

namespace layout = notification_layout;

std::string textField(const CosNotification::StructuredEvent& event, const char* name) {
  const char* text = nullptr;
  const CORBA::Any* value = field(event, name);
  return value != nullptr && (*value >>= text) ? text : "";
}

std::uint64_t numberField(const CosNotification::StructuredEvent& event, const char* name) {
  const std::string text = textField(event, name);
  return text.empty() ? 0 : std::stoull(text);
}

std::uint64_t countField(const CosNotification::StructuredEvent& event) {
  CORBA::ULongLong count = 0;
  const CORBA::Any* value = field(event, layout::kLostCount);
  return value != nullptr && (*value >>= count) ? count : 0;
}

std::string objectOf(const CosNotification::StructuredEvent& event) {
  const globaldefs::NVSList_T* name = nullptr;
  const CORBA::Any* value = field(event, layout::kObjectName);
  if (value == nullptr || !(*value >>= name) || name->length() == 0) {
    return "";
  }
  const auto& last = (*name)[name->length() - 1];
  return std::string(last.name.in()) + "=" + last.value.in();
}

std::string nativeNameOf(const CosNotification::StructuredEvent& event) {
  const TopoManagementManager::Node_T* node = nullptr;
  if (event.remainder_of_body >>= node) {
    return node->nativeEMSName.in();
  }
  const notifications::NVList_T* attributes = nullptr;
  const CORBA::Any* value = field(event, layout::kAttributeList);
  const char* text = nullptr;
  if (value != nullptr && (*value >>= attributes) && attributes->length() == 1 &&
      std::string((*attributes)[0].name.in()) == "nativeEMSName" &&
      ((*attributes)[0].value >>= text)) {
    return text;
  }
  return "";
}

class DirectConsumer final : public POA_CosNotifyComm::StructuredPushConsumer {
 public:
  explicit DirectConsumer(Inbox& inbox) : inbox_(inbox) {}
  void push_structured_event(const CosNotification::StructuredEvent& event) override {
    inbox_.put(event);
  }
  void disconnect_structured_push_consumer() override {}
  void offer_change(const CosNotification::EventTypeSeq&,
                    const CosNotification::EventTypeSeq&) override {}

 private:
  Inbox& inbox_;
};

class ChannelConsumer final : public POA_CosEventComm::PushConsumer {
 public:
  explicit ChannelConsumer(Inbox& inbox) : inbox_(inbox) {}
  void push(const CORBA::Any& data) override {
    const CosNotification::StructuredEvent* event = nullptr;
    if (data >>= event) {
      inbox_.put(*event);
    }
  }
  void disconnect_push_consumer() override {}

 private:
  Inbox& inbox_;
};

// Retries until the call succeeds; throws the last failure after 30 seconds.
template <typename Work>
auto eventually(Work work) -> decltype(work()) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (true) {
    try {
      return work();
    } catch (const CORBA::SystemException&) {
      if (std::chrono::steady_clock::now() > end) {
        throw;
      }
    }
  }
}

// A connection to a previous agent may still be open.
template <typename Interface>
typename Interface::_var_type narrow(const CORBA::Object_var& object) {
  return eventually([&] { return typename Interface::_var_type(Interface::_narrow(object)); });
}

}  // namespace

const CORBA::Any* field(const CosNotification::StructuredEvent& event, const std::string& name) {
  for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
    if (name == event.filterable_data[i].name.in()) {
      return &event.filterable_data[i].value;
    }
  }
  return nullptr;
}

void IdAccount::add(const Heard& event) {
  const bool isGap = event.type == layout::kEventsLost;
  EXPECT_LT(last_, isGap ? event.firstLost : event.id);
  EXPECT_LE(event.firstLost, event.lastLost);
  last_ = isGap ? event.lastLost : event.id;
  received_ += isGap ? 0 : 1;
  lost_ += event.lostCount;
}

Heard readEvent(const CosNotification::StructuredEvent& event) {
  Heard heard;
  heard.type = event.header.fixed_header.event_type.type_name.in();
  heard.id = numberField(event, layout::kNotificationId);
  heard.object = objectOf(event);
  heard.name = nativeNameOf(event);
  heard.firstLost = numberField(event, layout::kFirstLostId);
  heard.lastLost = numberField(event, layout::kLastLostId);
  heard.lostCount = countField(event);
  return heard;
}

void Inbox::put(const CosNotification::StructuredEvent& event) {
  std::unique_lock<std::mutex> lock(mutex_);
  released_.wait(lock, [this] { return !held_; });
  heard_.push_back(readEvent(event));
  events_.push_back(event);
  arrived_.notify_all();
}

void Inbox::hold() {
  const std::lock_guard<std::mutex> lock(mutex_);
  held_ = true;
}

void Inbox::release() {
  const std::lock_guard<std::mutex> lock(mutex_);
  held_ = false;
  released_.notify_all();
}

std::vector<Heard> Inbox::all() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return heard_;
}

std::vector<CosNotification::StructuredEvent> Inbox::events() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return events_;
}

std::vector<Heard> Inbox::waitUntil(const std::function<bool(const std::vector<Heard>&)>& holds) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (!arrived_.wait_for(lock, std::chrono::minutes(4),
                         [&] { return !heard_.empty() && holds(heard_); })) {
    throw std::runtime_error("what was waited for has not arrived, but " +
                             std::to_string(heard_.size()) + " others");
  }
  return heard_;
}

std::vector<Heard> Inbox::waitForCount(std::size_t count) {
  return waitUntil([count](const std::vector<Heard>& heard) { return heard.size() >= count; });
}

void waitForNotifications(const TopoAgent::Console_I_var& console, std::uint64_t count) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(4);
  while (TopoAgent::Status_T_var(console->getStatus())->notifications < count) {
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error("the agent does not make " + std::to_string(count) +
                               " notifications");
    }
  }
}

Client::Client() : server_(orb::startServer({}, {"127.0.0.1", 0}, nullptr)) {
  const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
  manager->activate();
}

CORBA::Object_var Client::object(const std::string& endpoint, const std::string& key) {
  return server_->get()->string_to_object(("corbaloc:iiop:1.2@" + endpoint + "/" + key).c_str());
}

TopoAgent::Console_I_var Client::console(const RunningAgent& agent) {
  return narrow<TopoAgent::Console_I>(object(agent.endpoint(), object_key::kConsole));
}

TopoAgent::Session_I_var Client::session(const RunningAgent& agent) {
  return narrow<TopoAgent::Session_I>(object(agent.endpoint(), object_key::kSession));
}

TopoManagementManager::TopoMgr_I_var Client::manager(const RunningAgent& agent) {
  return narrow<TopoManagementManager::TopoMgr_I>(object(agent.endpoint(), object_key::kManager));
}

Consumer::Consumer(Client& client)
    : servant_(new DirectConsumer(inbox_)),
      poa_(PortableServer::POA::_duplicate(client.server().rootPoa())),
      id_(poa_->activate_object(servant_.in())) {}

Consumer::~Consumer() {
  poa_->deactivate_object(id_.in());
}

CosNotifyComm::StructuredPushConsumer_var Consumer::reference() const {
  const CORBA::Object_var object = poa_->id_to_reference(id_.in());
  return CosNotifyComm::StructuredPushConsumer::_narrow(object.in());
}

DirectListener::DirectListener(Client& client, const TopoAgent::Session_I_var& session,
                               const std::string& lastId)
    : consumer_(client), subscription_(session->subscribe(consumer_.reference(), lastId.c_str())) {}

DirectListener::~DirectListener() {
  try {
    subscription_->unsubscribe();
  } catch (const CORBA::SystemException&) {
    // The agent has ended or has dropped the subscription.
  }
}

ChannelListener::ChannelListener(Client& client,
                                 const CosEventChannelAdmin::EventChannel_var& channel)
    : servant_(new ChannelConsumer(inbox_)),
      poa_(PortableServer::POA::_duplicate(client.server().rootPoa())),
      id_(poa_->activate_object(servant_.in())) {
  const CORBA::Object_var object = poa_->id_to_reference(id_);
  const CosEventComm::PushConsumer_var consumer = CosEventComm::PushConsumer::_narrow(object);
  const CosEventChannelAdmin::ConsumerAdmin_var admin = channel->for_consumers();
  const CosEventChannelAdmin::ProxyPushSupplier_var proxy = admin->obtain_push_supplier();
  proxy->connect_push_consumer(consumer);
}

ChannelListener::~ChannelListener() {
  poa_->deactivate_object(id_);
}

EventService::EventService() : endpoint_(quietEndpoint()) {
  start(true);
  const std::vector<std::string> arguments = {
      "-i", "TopoEvents", "-c", "1000000", "corbaloc::" + endpoint_ + "/" TOPO_EVENT_SERVICE_KEY};
  support::Ended made;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  do {
    made = support::run(TOPO_EVENT_CHANNEL_FACTORY, arguments);
  } while (made.status != 0 && std::chrono::steady_clock::now() < end);
  if (made.status != 0) {
    throw std::runtime_error("no channel: " + made.out + made.err);
  }
}

// The service stores its port in its data at the first start.
void EventService::start(bool first) {
  std::vector<std::string> arguments = {"-f",
                                        "-l",
                                        directory_.path().string(),
                                        "-t",
                                        directory_.file("trace"),
                                        "-ORBserverTransportRule",
                                        "127.0.0.1 tcp",
                                        "-ORBendPointPublish",
                                        "giop:tcp:127.0.0.1:"};
  if (first) {
    arguments.emplace_back("-p");
    arguments.push_back(endpoint_.substr(endpoint_.rfind(':') + 1));
  }
  process_ = std::make_unique<support::Process>(TOPO_EVENT_SERVICE, arguments);
}

CosEventChannelAdmin::EventChannel_var EventService::channel(Client& client) const {
  const CORBA::Object_var object = client.object(endpoint_, "TopoEvents");
  return narrow<CosEventChannelAdmin::EventChannel>(object);
}

void EventService::kill() {
  process_->send(SIGKILL);
  process_->wait();
}

void EventService::restart() {
  start(false);
}

bool NotifyService::isInstalled() {
  return !std::string(TOPO_NOTIFY_SERVICE).empty();
}

NotifyService::NotifyService(Client& client) : client_(client), endpoint_(quietEndpoint()) {
  start();
}

void NotifyService::start() {
  using CosNotifyChannelAdmin::EventChannelFactory;
  process_ = std::make_unique<support::Process>(
      TOPO_NOTIFY_SERVICE, std::vector<std::string>{"-Boot", "-NoNameSvc", "-RunThreads", "0",
                                                    "-ORBListenEndpoints", "iiop://" + endpoint_});
  const CosNotifyChannelAdmin::EventChannelFactory_var factory =
      narrow<EventChannelFactory>(client_.object(endpoint_, "NotifyEventChannelFactory"));
  const CosNotification::QoSProperties qualities;
  const CosNotification::AdminProperties limits;
  CosNotifyChannelAdmin::ChannelID id = 0;
  const CosNotifyChannelAdmin::EventChannel_var made =
      factory->create_channel(qualities, limits, id);
  channel_ = CosEventChannelAdmin::EventChannel::_duplicate(made.in());
}

std::string NotifyService::reference() const {
  const CORBA::String_var text = client_.server().get()->object_to_string(channel_.in());
  return text.in();
}

void NotifyService::kill() {
  process_->send(SIGKILL);
  process_->wait();
}

void NotifyService::restart() {
  start();
}

TopoAgent::NewNode_T subnetworkNode(const std::string& id, const std::string& parent,
                                    const std::string& name) {
  TopoAgent::NewNode_T node;
  node.id = id.c_str();
  node.parent = parent.c_str();
  node.parentKind = TopoAgent::NK_SUBNETWORK;
  node.name = name.c_str();
  node.kind = TopoAgent::NK_SUBNETWORK;
  node.nodeParam1 = 0;
  node.nodeParam2 = 0;
  return node;
}

}  // namespace integration
