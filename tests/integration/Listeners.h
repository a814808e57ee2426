// Clients in the test process, for the agent's console and session and for an event channel.

#ifndef TESTS_INTEGRATION_LISTENERS_H
#define TESTS_INTEGRATION_LISTENERS_H

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orb/eventchannel.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/notifications.h"
#include "orb/notification.h"
#include "orb/orb.h"
#include "tests/integration/Programs.h"

namespace integration {

// The parts of a notification that tests compare.
struct Heard {
  std::string type;      // "NT_..."
  std::uint64_t id = 0;  // 0 without an id
  std::string object;    // the last pair of its name, as "TopoSubnetwork=core"
  std::string name;      // the native name of the created node, or the new native name
  std::uint64_t firstLost = 0;
  std::uint64_t lastLost = 0;
  std::uint64_t lostCount = 0;
};

// Adds up the notifications and gaps of one receiver. Their ids must rise.
class IdAccount {
 public:
  // last: the id of the notification before the first one that is added.
  explicit IdAccount(std::uint64_t last) : last_(last) {}

  void add(const Heard& event);

  std::uint64_t last() const { return last_; }
  std::uint64_t lost() const { return lost_; }
  std::uint64_t total() const { return received_ + lost_; }

 private:
  std::uint64_t last_;
  std::uint64_t received_ = 0;
  std::uint64_t lost_ = 0;
};

Heard readEvent(const CosNotification::StructuredEvent& event);

// A filterable field; null when the event does not have the field.
const CORBA::Any* field(const CosNotification::StructuredEvent& event, const std::string& name);

// Received notifications. Thread-safety: any thread.
class Inbox {
 public:
  void put(const CosNotification::StructuredEvent& event);

  // Blocks and unblocks the threads that add notifications.
  void hold();
  void release();

  std::vector<Heard> all();
  std::vector<CosNotification::StructuredEvent> events();

  // Waits until at least one notification has arrived and the condition is true for all of them.
  // Throws an exception after minutes.
  std::vector<Heard> waitUntil(const std::function<bool(const std::vector<Heard>&)>& holds);
  std::vector<Heard> waitForCount(std::size_t count);

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::condition_variable released_;
  bool held_ = false;                                     // guarded by mutex_
  std::vector<Heard> heard_;                              // guarded by mutex_
  std::vector<CosNotification::StructuredEvent> events_;  // guarded by mutex_
};

// The client ORB of a test. One at a time in a process.
class Client {
 public:
  Client();

  orb::Server& server() { return *server_; }

  CORBA::Object_var object(const std::string& endpoint, const std::string& key);
  TopoAgent::Console_I_var console(const RunningAgent& agent);
  TopoAgent::Session_I_var session(const RunningAgent& agent);
  TopoManagementManager::TopoMgr_I_var manager(const RunningAgent& agent);

 private:
  std::unique_ptr<orb::Server> server_;
};

// Waits until the agent has made this number of notifications, which happens after the changes.
void waitForNotifications(const TopoAgent::Console_I_var& console, std::uint64_t count);

// An object of the client that receives structured events. REQUIRES: the client outlives it.
class Consumer {
 public:
  explicit Consumer(Client& client);
  ~Consumer();
  Consumer(const Consumer&) = delete;
  Consumer& operator=(const Consumer&) = delete;

  CosNotifyComm::StructuredPushConsumer_var reference() const;
  Inbox& inbox() { return inbox_; }

 private:
  Inbox inbox_;
  PortableServer::ServantBase_var servant_;
  PortableServer::POA_var poa_;
  PortableServer::ObjectId_var id_;
};

// A subscription at an agent's session that ends with the agent.
class DirectListener {
 public:
  DirectListener(Client& client, const TopoAgent::Session_I_var& session,
                 const std::string& lastId = "");
  ~DirectListener();
  DirectListener(const DirectListener&) = delete;
  DirectListener& operator=(const DirectListener&) = delete;

  Inbox& inbox() { return consumer_.inbox(); }
  const TopoAgent::Subscription_I_var& subscription() const { return subscription_; }

 private:
  Consumer consumer_;
  TopoAgent::Subscription_I_var subscription_;
};

// A consumer at an event channel.
class ChannelListener {
 public:
  ChannelListener(Client& client, const CosEventChannelAdmin::EventChannel_var& channel);
  ~ChannelListener();
  ChannelListener(const ChannelListener&) = delete;
  ChannelListener& operator=(const ChannelListener&) = delete;

  Inbox& inbox() { return inbox_; }

 private:
  Inbox inbox_;
  PortableServer::ServantBase_var servant_;
  PortableServer::POA_var poa_;
  PortableServer::ObjectId_var id_;
};

// A running event service with one channel, which survives a kill and a restart. The service has
// the options of docs/operations.md and serves clients of the address 127.0.0.1 only.
class EventService {
 public:
  EventService();

  const std::string& endpoint() const { return endpoint_; }
  std::string reference() const { return "corbaloc::" + endpoint_ + "/TopoEvents"; }
  CosEventChannelAdmin::EventChannel_var channel(Client& client) const;

  void kill();
  void restart();

 private:
  void start(bool first);

  support::TemporaryDirectory directory_;
  const std::string endpoint_;
  std::unique_ptr<support::Process> process_;
};

// A running notification service with one channel, which does not survive a kill.
class NotifyService {
 public:
  // Whether this machine has a notification service.
  static bool isInstalled();

  explicit NotifyService(Client& client);

  // The channel as an event channel: its reference as text, and as an object.
  std::string reference() const;
  const CosEventChannelAdmin::EventChannel_var& channel() const { return channel_; }

  void kill();
  void restart();  // creates a new channel

 private:
  void start();

  Client& client_;
  const std::string endpoint_;
  std::unique_ptr<support::Process> process_;
  CosEventChannelAdmin::EventChannel_var channel_;
};

// A subnetwork as an argument of the console's createNode.
TopoAgent::NewNode_T subnetworkNode(const std::string& id, const std::string& parent,
                                    const std::string& name);

}  // namespace integration

#endif
