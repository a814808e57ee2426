// Delivery of notifications to watchers, subscribers and event channels.

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <ostream>
#include <thread>

#include "idl/NotificationLayout.h"
#include "orb/naming.h"
#include "tests/integration/Listeners.h"
#include "tests/unit/orb/RawClient.h"

namespace integration {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace layout = notification_layout;

constexpr const char* kCreated = layout::kObjectCreation;
constexpr const char* kDeleted = layout::kObjectDeletion;
constexpr const char* kChanged = layout::kAttributeValueChange;

void run(const RunningAgent& agent, const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"--ior-file", agent.iorFile()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const support::Ended ended = runTopoctl(all);
  ASSERT_EQ(0, ended.status) << ended.err;
}

json nameOf(const std::string& id) {
  return {{{"name", "EMS"}, {"value", "E"}}, {{"name", "TopoSubnetwork"}, {"value", id}}};
}

// A node as topoctl prints the node in a creation: the fields of the view.
json createdNode(const std::string& id, const std::string& name, const json& parent,
                 const json& info) {
  return {{"name", nameOf(id)}, {"nativeEMSName", name}, {"nodeType", 1},         {"nodeParam1", 3},
          {"nodeParam2", -4},   {"relatedName", parent}, {"additionalInfo", info}};
}

// The fields of a notification that most tests compare.
struct Change {
  std::string type;    // one of the constants above
  std::string object;  // as Heard::object
  std::string name;    // as Heard::name; "" in a deletion
};

bool operator==(const Change& left, const Change& right) {
  return left.type == right.type && left.object == right.object && left.name == right.name;
}

void PrintTo(const Change& change, std::ostream* out) {
  *out << change.type << " of " << change.object << ", name \"" << change.name << '"';
}

std::vector<Change> changesIn(const std::vector<Heard>& heard) {
  std::vector<Change> changes;
  for (const Heard& event : heard) {
    changes.push_back({event.type, event.object, event.name});
  }
  return changes;
}

// Creates two nodes, one below the other, renames one and deletes both.
void makeChanges(const RunningAgent& agent) {
  run(agent, {"node", "create", "top", "--name", "Top", "--params", "3,-4"});
  run(agent, {"node", "create", "core", "--parent", "top", "--name", "Core", "--params", "3,-4"});
  run(agent, {"node", "rename", "core", "Kern"});
  run(agent, {"node", "delete", "top"});
}

std::vector<Change> expectedChanges() {
  return {{kCreated, "TopoSubnetwork=top", "Top"},
          {kCreated, "TopoSubnetwork=core", "Core"},
          {kChanged, "TopoSubnetwork=core", "Kern"},
          {kDeleted, "TopoSubnetwork=core", ""},
          {kDeleted, "TopoSubnetwork=top", ""}};
}

void expectRisingIds(const std::vector<Heard>& heard) {
  for (std::size_t i = 1; i < heard.size(); ++i) {
    EXPECT_LT(heard[i - 1].id, heard[i].id) << i;
  }
}

void expectWatched(const std::vector<json>& lines, const std::vector<Heard>& heard,
                   const json& info) {
  ASSERT_EQ(5U, lines.size());
  const std::vector<std::string> events = {"creation", "creation", "change", "deletion",
                                           "deletion"};
  const std::vector<std::string> ids = {"top", "core", "core", "core", "top"};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    SCOPED_TRACE(lines[i].dump());
    EXPECT_EQ(events[i], lines[i]["event"]);
    EXPECT_EQ(heard[i].type, lines[i]["type"]);
    EXPECT_EQ(std::to_string(heard[i].id), lines[i]["notificationId"]);
    EXPECT_EQ(nameOf(ids[i]), lines[i]["objectName"]);
    EXPECT_EQ("OT_MULTILAYER_SUBNETWORK", lines[i]["objectType"]);
    EXPECT_THAT(lines[i]["emsTime"].get<std::string>(),
                testing::MatchesRegex("20[0-9]{12}\\.[0-9]Z"));
    EXPECT_EQ("", lines[i]["neTime"]);
    EXPECT_EQ(true, lines[i]["edgePointRelated"]);
  }
  EXPECT_EQ(createdNode("top", "Top", json::array(), info), lines[0]["object"]);
  EXPECT_EQ(createdNode("core", "Core", nameOf("top"), info), lines[1]["object"]);
  EXPECT_EQ(json({{{"name", "nativeEMSName"}, {"value", "Kern"}}}), lines[2]["attributes"]);
}

// Starts an agent that publishes to the event channel at `reference`, changes the network, and
// expects the same notifications at two watchers and at the consumer of the channel.
void expectDeliveryToAll(ChannelListener& channel, const std::string& reference,
                         const std::vector<std::string>& options, const json& info) {
  std::vector<std::string> arguments = {"--ems-name", "E", "--event-channel", reference};
  arguments.insert(arguments.end(), options.begin(), options.end());
  RunningAgent agent(arguments);
  Watcher first(agent);
  Watcher second(agent);
  EXPECT_EQ("watching", first.first()["event"]);

  makeChanges(agent);

  const std::vector<Heard> heard = channel.inbox().waitForCount(5);
  EXPECT_EQ(expectedChanges(), changesIn(heard));
  expectRisingIds(heard);
  expectWatched(first.next(5), heard, info);
  expectWatched(second.next(5), heard, info);
  // A duplicate would arrive before the next notification.
  run(agent, {"node", "create", "last", "--name", "Last"});
  EXPECT_EQ("last", first.next()["objectName"][1]["value"]);
  EXPECT_EQ("last", second.next()["objectName"][1]["value"]);
  EXPECT_EQ("TopoSubnetwork=last", channel.inbox().waitForCount(6)[5].object);
  EXPECT_EQ(0, first.stop().status);
  EXPECT_EQ(0, second.stop().status);
  const support::Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
}

// The additional information of a subnetwork in test mode.
json vendorInfo() {
  return {{{"name", "Vendor"}, {"value", "KORVANE TECHNOLOGIES CO., LTD"}}};
}

TEST(Notification, ReachesTwoWatchersAndAnEventChannelInOrderAndOnce) {
  Client client;
  const EventService events;
  ChannelListener listener(client, events.channel(client));
  expectDeliveryToAll(listener, events.reference(), {}, json::array());
}

TEST(Notification, HasTheVendorInTestMode) {
  Client client;
  const EventService events;
  ChannelListener listener(client, events.channel(client));
  expectDeliveryToAll(listener, events.reference(), {"--test-switch"}, vendorInfo());
}

TEST(Notification, IsLeftOutInTestModeForTheLabelOfThePreviousOne) {
  Client client;
  RunningAgent agent({"--ems-name", "E", "--test-switch"});
  const TopoAgent::Console_I_var console = client.console(agent);
  DirectListener listener(client, client.session(agent));
  for (const char* id : {"a", "b", "c"}) {
    console->createNode(subnetworkNode(id, "", id));
  }
  console->renameNode("a", "same");
  console->renameNode("b", "same");
  console->renameNode("c", "");
  console->renameNode("c", "other");
  const std::vector<Heard> heard = listener.inbox().waitForCount(5);
  EXPECT_THAT(changesIn({heard.begin() + 3, heard.end()}),
              ElementsAre(Change{kChanged, "TopoSubnetwork=a", "same"},
                          Change{kChanged, "TopoSubnetwork=c", "other"}));
}

std::vector<std::string> fieldNames(const CosNotification::StructuredEvent& event) {
  std::vector<std::string> names;
  for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
    names.emplace_back(event.filterable_data[i].name);
  }
  return names;
}

TEST(Notification, HasTheLayoutOfTheInterface) {
  Client client;
  RunningAgent agent({"--ems-name", "E"});
  DirectListener listener(client, client.session(agent));
  const TopoAgent::Console_I_var console = client.console(agent);
  console->createNode(subnetworkNode("core", "", "Core"));
  console->deleteNode("core");
  console->createNode(subnetworkNode("core", "", "Core"));
  console->renameNode("core", "Kern");
  listener.inbox().waitForCount(4);
  const std::vector<std::string> common = {"notificationId", "objectName", "objectType",
                                           "emsTime",        "neTime",     "edgePointRelated"};
  std::vector<std::string> ofChanges = common;
  ofChanges.emplace_back("attributeList");
  const std::vector<CosNotification::StructuredEvent> events = listener.inbox().events();
  for (std::size_t i = 0; i < events.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_STREQ("tmf_mtnm", events[i].header.fixed_header.event_type.domain_name);
    EXPECT_STREQ("", events[i].header.fixed_header.event_name);
    EXPECT_EQ(i < 3 ? common : ofChanges, fieldNames(events[i]));
  }
}

TEST(Notification, IsLeftOutInTestModeForACachedLabel) {
  Client client;
  const support::TemporaryDirectory directory;
  {
    RunningAgent agent({"--ems-name", "E"}, directory.file("store.db"));
    client.console(agent)->createNode(subnetworkNode("core", "", "known"));
    agent.stop(SIGTERM);
  }
  RunningAgent agent({"--ems-name", "E", "--test-switch"}, directory.file("store.db"));
  DirectListener listener(client, client.session(agent));
  run(agent, {"test-switch", "off"});
  run(agent, {"node", "rename", "core", "other"});
  listener.inbox().waitForCount(1);
  run(agent, {"test-switch", "on"});
  run(agent, {"node", "rename", "core", "known"});
  run(agent, {"node", "rename", "core", "new"});
  EXPECT_THAT(changesIn(listener.inbox().waitForCount(2)),
              ElementsAre(Change{kChanged, "TopoSubnetwork=core", "other"},
                          Change{kChanged, "TopoSubnetwork=core", "new"}));
}

TEST(Notification, IsSentForASetterOfTheManager) {
  Client client;
  RunningAgent agent({"--ems-name", "E"});
  const TopoAgent::Console_I_var console = client.console(agent);
  console->createNode(subnetworkNode("core", "", "Core"));
  waitForNotifications(console, 1);
  DirectListener listener(client, client.session(agent));
  run(agent, {"set", "native-name", "TopoSubnetwork=core", "Kern"});
  run(agent, {"set", "native-name", "TopoSubnetwork=core", "Kern"});
  run(agent, {"set", "native-name", "TopoSubnetwork=core", "Nucleus"});
  EXPECT_THAT(changesIn(listener.inbox().waitForCount(2)),
              ElementsAre(Change{kChanged, "TopoSubnetwork=core", "Kern"},
                          Change{kChanged, "TopoSubnetwork=core", "Nucleus"}));
}

TEST(Notification, IsSentForEveryImportedNodeInTheOrderOfTheFile) {
  Client client;
  RunningAgent agent({"--ems-name", "E"});
  DirectListener listener(client, client.session(agent));
  const std::string file = std::string(TOPO_NETWORKS) + "/backbone.json";
  run(agent, {"import", file});
  const json nodes = json::parse(support::readFile(file))["topoNodes"];
  const std::vector<Heard> heard = listener.inbox().waitForCount(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    EXPECT_EQ(kCreated, heard[i].type);
    EXPECT_EQ(nodes[i]["name"], heard[i].name) << i;
  }
  const support::Ended again = runTopoctl({"--ior-file", agent.iorFile(), "import", file});
  EXPECT_EQ(3, again.status);
  EXPECT_THAT(again.err, HasSubstr("EXCPT_OBJECT_IN_USE"));
}

TEST(Notification, IsReportedAsLostToAReturningSubscriber) {
  Client client;
  RunningAgent agent({"--ems-name", "E"});
  const TopoAgent::Console_I_var console = client.console(agent);
  std::uint64_t last = 0;
  {
    DirectListener listener(client, client.session(agent));
    console->createNode(subnetworkNode("a", "", ""));
    last = listener.inbox().waitForCount(1)[0].id;
  }
  console->createNode(subnetworkNode("b", "", ""));
  console->createNode(subnetworkNode("c", "", ""));
  waitForNotifications(console, 3);
  DirectListener other(client, client.session(agent));
  console->createNode(subnetworkNode("d", "", ""));
  const std::uint64_t next = other.inbox()
                                 .waitUntil([](const std::vector<Heard>& all) {
                                   return all.back().object == "TopoSubnetwork=d";
                                 })
                                 .back()
                                 .id;
  DirectListener listener(client, client.session(agent), std::to_string(last));
  const std::vector<Heard> heard = listener.inbox().waitForCount(1);
  EXPECT_EQ(layout::kEventsLost, heard[0].type);
  EXPECT_EQ(last + 1, heard[0].firstLost);
  EXPECT_EQ(next, heard[0].lastLost);
  EXPECT_EQ(3U, heard[0].lostCount);
}

TEST(Notification, IdsRiseAcrossRestarts) {
  Client client;
  const support::TemporaryDirectory directory;
  std::uint64_t last = 0;
  for (int i = 0; i < 3; ++i) {
    RunningAgent agent({"--ems-name", "E"}, directory.file("store.db"));
    DirectListener listener(client, client.session(agent));
    client.console(agent)->createNode(subnetworkNode("n" + std::to_string(i), "", ""));
    const std::uint64_t id = listener.inbox().waitForCount(1)[0].id;
    EXPECT_LT(last, id);
    last = id;
    agent.stop(i == 1 ? SIGKILL : SIGTERM);
  }
}

TEST(Notification, IsSentFromTheQueueWhenTheAgentStops) {
  Client client;
  RunningAgent agent({"--ems-name", "E"});
  const TopoAgent::Console_I_var console = client.console(agent);
  DirectListener listener(client, client.session(agent));
  listener.inbox().hold();
  for (int i = 0; i < 20; ++i) {
    console->createNode(subnetworkNode("n" + std::to_string(i), "", ""));
  }
  std::thread release([&] {
    try {
      while (!console->_non_existent()) {
      }
    } catch (const CORBA::SystemException&) {
      // The agent rejects requests before it ends.
    }
    listener.inbox().release();
  });
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
  release.join();
  EXPECT_EQ(20U, listener.inbox().all().size());
}

// --- The console commands of topoctl.

TEST(TopoctlConsole, ChangesTheNetworkReloadsTheModuleAndShowsTheStatus) {
  const RunningAgent agent({"--ems-name", "E"});
  const Watcher watcher(agent);
  const auto run = [&](std::vector<std::string> command) {
    command.insert(command.begin(), {"--ior-file", agent.iorFile()});
    const support::Ended ended = runTopoctl(command);
    EXPECT_EQ(0, ended.status) << ended.err;
  };
  run({"node", "create", "core", "--name", "Core"});
  run({"node", "rename", "core", "Kern"});
  run({"test-switch", "on"});
  run({"module", "reload"});
  run({"node", "create", "edge", "--name", "Edge", "--parent", "core"});
  const json status = records(agent, {"status"});
  EXPECT_EQ("MS_LOADED", status["moduleState"]);
  EXPECT_EQ(2, status["moduleLoads"]);
  EXPECT_EQ(true, status["testSwitch"]);
  EXPECT_EQ(2, status["topoNodes"]);
  EXPECT_EQ(0, status["iterators"]);
  EXPECT_EQ(3, status["subscriptions"]);
  EXPECT_EQ(0, status["eventsDropped"]);
  EXPECT_EQ(0, status["subscribersDropped"]);
  ASSERT_EQ(1U, status["receivers"].size());
  EXPECT_EQ(false, status["receivers"][0]["isChannel"]);
  EXPECT_EQ(0, status["receivers"][0]["lost"]);
  run({"node", "delete", "core"});
  EXPECT_EQ(0, records(agent, {"status"})["topoNodes"]);
}

// --- Delivery through an event channel.

// The fields of an event as NAME=VALUE, or NAME= for values of other types than text.
std::vector<std::string> fieldTexts(const CosNotification::StructuredEvent& event) {
  std::vector<std::string> texts;
  for (const std::string& name : fieldNames(event)) {
    const char* text = nullptr;
    const bool isText = *field(event, name) >>= text;
    texts.push_back(name + "=" + (isText ? text : ""));
  }
  return texts;
}

void expectSameFields(const CosNotification::StructuredEvent& expected,
                      const CosNotification::StructuredEvent& event) {
  EXPECT_STREQ(expected.header.fixed_header.event_type.domain_name,
               event.header.fixed_header.event_type.domain_name);
  EXPECT_STREQ(expected.header.fixed_header.event_name, event.header.fixed_header.event_name);
  ASSERT_EQ(fieldTexts(expected), fieldTexts(event));
  for (const std::string& name : fieldNames(event)) {
    const CORBA::TypeCode_var type = field(event, name)->type();
    const CORBA::TypeCode_var expectedType = field(expected, name)->type();
    EXPECT_TRUE(type->equivalent(expectedType.in())) << name;
  }
  const CORBA::TypeCode_var body = event.remainder_of_body.type();
  const CORBA::TypeCode_var expectedBody = expected.remainder_of_body.type();
  EXPECT_TRUE(body->equivalent(expectedBody.in()));
}

// Expects that a consumer of the channel and a subscriber receive the same events.
void expectSameEvents(Client& client, ChannelListener& listener, const std::string& channel) {
  RunningAgent agent({"--ems-name", "E", "--event-channel", channel});
  DirectListener direct(client, client.session(agent));
  makeChanges(agent);
  EXPECT_EQ(expectedChanges(), changesIn(direct.inbox().waitForCount(5)));
  EXPECT_EQ(expectedChanges(), changesIn(listener.inbox().waitForCount(5)));
  for (std::size_t i = 0; i < 5; ++i) {
    SCOPED_TRACE(i);
    expectSameFields(direct.inbox().events()[i], listener.inbox().events()[i]);
    EXPECT_EQ(direct.inbox().all()[i].name, listener.inbox().all()[i].name);
  }
}

TEST(EventChannel, DeliversTheFieldsOfASubscription) {
  Client client;
  EventService events;
  ChannelListener listener(client, events.channel(client));
  expectSameEvents(client, listener, events.reference());
}

TEST(EventChannel, IsClosedToOtherAddressesWithTheDocumentedOptions) {
  const EventService events;
  const std::string port = events.endpoint().substr(events.endpoint().find(':') + 1);
  const orb::Endpoint endpoint{"127.0.0.1", static_cast<std::uint16_t>(std::stoi(port))};
  const std::string request = orb_tests::requestTo("TopoEvents", "_non_existent").bytes();
  const orb_tests::RawClient local(endpoint);
  local.send(request);
  EXPECT_TRUE(local.answer());
  const orb_tests::RawClient other(endpoint, 0, INADDR_LOOPBACK + 1);  // 127.0.0.2
  other.send(request);
  EXPECT_TRUE(other.isClosedByPeer());
}

// --- Outages of an event channel.

TEST(EventChannel, GetsAGapAfterAnOutage) {
  constexpr std::size_t kQueue = 10;
  constexpr int kMissed = 25;
  Client client;
  EventService events;
  ChannelListener listener(client, events.channel(client));
  ChannelListener second(client, events.channel(client));
  RunningAgent agent({"--ems-name", "E", "--queue", std::to_string(kQueue), "--event-channel",
                      events.reference()});
  const TopoAgent::Console_I_var console = client.console(agent);
  console->createNode(subnetworkNode("core", "", "0"));
  const std::uint64_t before = listener.inbox().waitForCount(1)[0].id;
  second.inbox().waitForCount(1);

  events.kill();
  for (int i = 1; i <= kMissed; ++i) {
    console->renameNode("core", std::to_string(i).c_str());
  }
  events.restart();
  console->renameNode("core", "last");

  for (ChannelListener* each : {&listener, &second}) {
    const std::vector<Heard> heard = each->inbox().waitUntil(
        [](const std::vector<Heard>& all) { return all.back().name == "last"; });
    IdAccount account(before);
    for (auto event = heard.begin() + 1; event != heard.end(); ++event) {
      if (event->id != account.last()) {  // a broken push may be repeated
        account.add(*event);
      }
    }
    EXPECT_EQ(kMissed + 1U, account.total());
    EXPECT_LE(kMissed + 1 - kQueue - 1, account.lost());
  }
}

TEST(EventChannel, DoesNotBlockTheAgentWhenUnreachable) {
  Client client;
  RunningAgent agent(
      {"--ems-name", "E", "--event-channel", "corbaloc::" + quietEndpoint() + "/TopoEvents"});
  DirectListener listener(client, client.session(agent));
  client.console(agent)->createNode(subnetworkNode("core", "", "Core"));
  EXPECT_EQ("Core", listener.inbox().waitForCount(1)[0].name);
  const TopoAgent::Status_T_var status = client.console(agent)->getStatus();
  ASSERT_EQ(2U, status->receivers.length());
  EXPECT_TRUE(status->receivers[0].isChannel);
  EXPECT_FALSE(status->receivers[0].isConnected);
  EXPECT_EQ(0, agent.stop(SIGTERM).status);
}

// --- Delivery through a notification service.

// The entry of an event channel in a naming service. The agent resolves the entry again after a
// failure.
class ChannelName {
 public:
  explicit ChannelName(Client& client) {
    const CORBA::Object_var root = client.object(naming_.endpoint(), "NameService");
    names_ = CosNaming::NamingContext::_narrow(root.in());
    name_.length(1);
    name_[0].id = CORBA::string_dup("TopoEvents");
  }

  std::string reference() const { return "corbaname::" + naming_.endpoint() + "#TopoEvents"; }
  void bind(const CosEventChannelAdmin::EventChannel_var& channel) {
    names_->bind(name_, channel.in());
  }
  void unbind() { names_->unbind(name_); }

 private:
  const NamingService naming_;
  CosNaming::NamingContext_var names_;
  CosNaming::Name name_;
};

// Waits until the channel has replied to this number of pushes. The agent does not repeat a push
// that has a reply.
void waitUntilSentToTheChannel(const TopoAgent::Console_I_var& console, std::uint64_t count) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(4);
  while (TopoAgent::Status_T_var(console->getStatus())->receivers[0].sent < count) {
    ASSERT_LT(std::chrono::steady_clock::now(), end);
  }
}

class NotificationService : public testing::Test {
 protected:
  void SetUp() override {
    if (!NotifyService::isInstalled()) {
      GTEST_SKIP() << "this machine has no notification service";
    }
    service_.emplace(client_);
  }

  Client client_;
  std::optional<NotifyService> service_;
};

TEST_F(NotificationService, DeliversEventsInOrderAndOnce) {
  ChannelListener listener(client_, service_->channel());
  expectDeliveryToAll(listener, service_->reference(), {}, json::array());
}

TEST_F(NotificationService, DeliversTheVendorInTestMode) {
  ChannelListener listener(client_, service_->channel());
  expectDeliveryToAll(listener, service_->reference(), {"--test-switch"}, vendorInfo());
}

TEST_F(NotificationService, DeliversTheFieldsOfASubscription) {
  ChannelListener listener(client_, service_->channel());
  expectSameEvents(client_, listener, service_->reference());
}

TEST_F(NotificationService, DeliversQueuedEventsToARecreatedChannel) {
  ChannelName name(client_);
  name.bind(service_->channel());
  ChannelListener before(client_, service_->channel());
  RunningAgent agent({"--ems-name", "E", "--event-channel", name.reference()});
  const TopoAgent::Console_I_var console = client_.console(agent);
  console->createNode(subnetworkNode("core", "", "Core"));
  before.inbox().waitForCount(1);
  waitUntilSentToTheChannel(console, 1);

  name.unbind();
  service_->kill();
  for (const char* text : {"a", "b", "c"}) {
    console->renameNode("core", text);
  }
  waitForNotifications(console, 4);
  service_->restart();
  ChannelListener after(client_, service_->channel());
  name.bind(service_->channel());

  EXPECT_THAT(changesIn(after.inbox().waitForCount(3)),
              ElementsAre(Change{kChanged, "TopoSubnetwork=core", "a"},
                          Change{kChanged, "TopoSubnetwork=core", "b"},
                          Change{kChanged, "TopoSubnetwork=core", "c"}));
  EXPECT_EQ(1U, before.inbox().all().size());
}

// --- Watching an agent that ends.

// Reads lines up to the next "watching" line. Returns the lines of the resync by event.
std::map<std::string, json> readResync(support::Process& watch) {
  std::map<std::string, json> resync;
  for (std::string event; event != "watching";) {
    const json line = json::parse(watch.readLine());
    event = line["event"];
    if (line.value("resync", false)) {
      resync[event] = line;
    }
  }
  return resync;
}

TEST(TopoctlWatch, ReconnectsAndPrintsMissedChanges) {
  Client client;
  const support::TemporaryDirectory directory;
  const std::string endpoint = quietEndpoint();
  const std::string store = directory.file("store.db");
  auto agent =
      std::make_unique<RunningAgent>(std::vector<std::string>{"--ems-name", "E"}, store, endpoint);
  client.console(*agent)->createNode(subnetworkNode("kept", "", "Old"));
  client.console(*agent)->createNode(subnetworkNode("gone", "", "Gone"));
  support::Process watch(TOPOCTL, {"--agent", agent->corbaloc(), "--format", "json", "watch"});
  EXPECT_EQ("watching", json::parse(watch.readLine())["event"]);
  agent->stop(SIGKILL);
  EXPECT_EQ("disconnected", json::parse(watch.readLine())["event"]);
  // Changes the network at another endpoint, which topoctl does not call.
  {
    RunningAgent elsewhere({"--ems-name", "E"}, store);
    client.console(elsewhere)->deleteNode("gone");
    client.console(elsewhere)->renameNode("kept", "New");
    client.console(elsewhere)->createNode(subnetworkNode("fresh", "", "Fresh"));
    elsewhere.stop(SIGTERM);
  }
  agent =
      std::make_unique<RunningAgent>(std::vector<std::string>{"--ems-name", "E"}, store, endpoint);
  std::map<std::string, json> resync = readResync(watch);
  ASSERT_EQ(3U, resync.size());
  EXPECT_EQ(nameOf("gone"), resync["deletion"]["objectName"]);
  EXPECT_EQ(nameOf("fresh"), resync["creation"]["objectName"]);
  EXPECT_EQ(nameOf("kept"), resync["change"]["objectName"]);
  EXPECT_EQ("New", resync["change"]["attributes"][0]["value"]);
  client.console(*agent)->renameNode("kept", "Newest");
  const json live = json::parse(watch.readLine());
  EXPECT_EQ("Newest", live["attributes"][0]["value"]);
  EXPECT_FALSE(live.value("resync", false));
  watch.send(SIGINT);
  EXPECT_EQ(0, watch.wait().status);
}

// topoctl has received no notification, so it subscribes again without an id.
TEST(TopoctlWatch, DetectsARestartOfTheAgentWhileIdle) {
  Client client;
  const std::string endpoint = quietEndpoint();
  const support::TemporaryDirectory directory;
  const std::string store = directory.file("store.db");
  auto agent =
      std::make_unique<RunningAgent>(std::vector<std::string>{"--ems-name", "E"}, store, endpoint);
  support::Process watch(TOPOCTL, {"--agent", agent->corbaloc(), "--format", "json", "watch"});
  EXPECT_EQ("watching", json::parse(watch.readLine())["event"]);
  agent->stop(SIGKILL);
  agent =
      std::make_unique<RunningAgent>(std::vector<std::string>{"--ems-name", "E"}, store, endpoint);
  client.console(*agent)->createNode(subnetworkNode("fresh", "", "Fresh"));
  json line;
  do {
    line = json::parse(watch.readLine());
  } while (line["event"] != "creation");
  EXPECT_EQ(nameOf("fresh"), line["objectName"]);
  EXPECT_EQ(true, line["resync"]);
}

TEST(TopoctlWatch, ReconnectsToAnAgentWithLowerIds) {
  Client client;
  const std::string endpoint = quietEndpoint();
  const support::TemporaryDirectory directory;
  const std::vector<std::string> arguments = {"--ems-name", "E"};
  { RunningAgent ahead(arguments, directory.file("newer.db")); }
  SQLite::Database(directory.file("newer.db"), SQLite::OPEN_READWRITE)
      .exec("UPDATE last_change SET number = number + 1000000000");
  auto agent = std::make_unique<RunningAgent>(arguments, directory.file("newer.db"), endpoint);
  support::Process watch(TOPOCTL, {"--agent", agent->corbaloc(), "--format", "json", "watch"});
  EXPECT_EQ("watching", json::parse(watch.readLine())["event"]);
  client.console(*agent)->createNode(subnetworkNode("core", "", "Core"));
  EXPECT_EQ("creation", json::parse(watch.readLine())["event"]);
  agent->stop(SIGTERM);
  agent = std::make_unique<RunningAgent>(arguments, directory.file("older.db"), endpoint);
  json line;
  do {
    line = json::parse(watch.readLine());
  } while (line["event"] != "deletion");
  EXPECT_EQ(nameOf("core"), line["objectName"]);
  EXPECT_EQ(true, line["resync"]);
}

TEST(TopoctlWatch, EndsWithCodeTwoWhenTheAgentIsUnreachable) {
  const support::Ended ended =
      runTopoctl({"--agent", "corbaloc::" + quietEndpoint() + "/TopoManagement", "watch"});
  EXPECT_EQ(2, ended.status);
}

// --- Access to events.

TEST(EventAccess, ServesViewsWithoutEventsWhenDenied) {
  Client client;
  for (const char* access : {"denied", "unknown"}) {
    SCOPED_TRACE(access);
    RunningAgent agent({"--ems-name", "E", "--event-access", access});
    DirectListener listener(client, client.session(agent));
    client.console(agent)->createNode(subnetworkNode("core", "", "Core"));
    const TopoAgent::Status_T_var status = client.console(agent)->getStatus();
    EXPECT_EQ(0U, status->subscriptions);
    EXPECT_EQ(access == std::string("denied") ? TopoAgent::EA_DENIED : TopoAgent::EA_UNKNOWN,
              status->eventAccess);
    EXPECT_EQ(status->eventAccess, client.session(agent)->getEventAccess());
    EXPECT_EQ(0U, status->notifications);
    EXPECT_EQ("Core", records(agent, {"topo"})[0]["nativeEMSName"]);
    EXPECT_TRUE(listener.inbox().all().empty());
    const support::Ended ended = agent.stop(SIGTERM);
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
  }
}

TEST(EventAccess, HasThreeSubscriptionsWhenAllowed) {
  Client client;
  RunningAgent agent({});
  const TopoAgent::Status_T_var status = client.console(agent)->getStatus();
  EXPECT_EQ(3U, status->subscriptions);
  EXPECT_EQ(TopoAgent::EA_ALLOWED, status->eventAccess);
}

// --- Status.

// The network has elements without a node, elements with a node, and no node without a name.
TEST(AgentStatus, CountsTheRecordsOfTheTopologyView) {
  Client client;
  const RunningAgent agent({"--network", std::string(TOPO_NETWORKS) + "/backbone.json"});
  const TopoAgent::Console_I_var console = client.console(agent);
  for (const bool testSwitch : {false, true}) {
    console->setTestSwitch(testSwitch);
    const TopoAgent::Status_T_var status = console->getStatus();
    EXPECT_EQ(records(agent, {"topo"}).size(), status->viewNodes) << testSwitch;
  }
}

TEST(AgentStatus, NamesVersionsStoreAndLastReloadError) {
  Client client;
  const support::TemporaryDirectory directory;
  const std::string module = directory.file("module.so");
  std::filesystem::copy_file(TOPO_MODULE, module);
  const std::string store = directory.file("network.db");
  const RunningAgent agent({"--ems-name", "E", "--module", module}, store);
  const TopoAgent::Console_I_var console = client.console(agent);
  TopoAgent::Status_T_var status = console->getStatus();
  EXPECT_STRNE("", status->agentVersion);
  EXPECT_STREQ(status->agentVersion, status->moduleVersion);
  EXPECT_EQ(store, status->store.in());
  EXPECT_STREQ("E", status->emsName);
  EXPECT_STREQ("", status->lastReloadError);
  std::filesystem::rename(module, module + ".away");
  EXPECT_THROW(console->reloadModule(), globaldefs::ProcessingFailureException);
  status = console->getStatus();
  EXPECT_EQ("module " + module + ": no such file", status->lastReloadError.in());
  std::filesystem::rename(module + ".away", module);
  console->reloadModule();
  status = console->getStatus();
  EXPECT_STREQ("", status->lastReloadError);
}

}  // namespace
}  // namespace integration
