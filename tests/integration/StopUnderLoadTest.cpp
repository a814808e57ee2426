// Reload and stop while clients call, do not read replies, or stop in the middle of a request.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <list>
#include <thread>
#include <vector>

#include "idl/ObjectKeys.h"
#include "orb/idl/TopoManagementManager.h"
#include "tests/integration/Programs.h"
#include "tests/unit/orb/RawClient.h"

namespace integration {
namespace {

using orb_tests::Message;
using orb_tests::RawClient;
using orb_tests::requestTo;
using TopoManagementManager::TopoMgr_I;
using TopoManagementManager::TopoMgr_I_var;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";

using Clock = std::chrono::steady_clock;

orb::Endpoint endpointOf(const RunningAgent& agent) {
  const std::string text = agent.endpoint();
  const std::size_t colon = text.rfind(':');
  return {text.substr(0, colon), static_cast<std::uint16_t>(std::stoul(text.substr(colon + 1)))};
}

std::string viewRequest() {
  return requestTo(object_key::kManager, "getTopoSubnetworkViewInfo").number(1000000).bytes();
}

// Calls in a loop until the agent ends the connection.
class Asking {
 public:
  explicit Asking(const orb::Endpoint& endpoint) : thread_([endpoint] { ask(endpoint); }) {}
  ~Asking() { thread_.join(); }
  Asking(const Asking&) = delete;
  Asking& operator=(const Asking&) = delete;

 private:
  static void ask(const orb::Endpoint& endpoint) {
    const RawClient client(endpoint);
    while (client.send(requestTo(object_key::kManager, "_non_existent").bytes()) &&
           client.answer()) {
    }
  }

  std::thread thread_;
};

TEST(StopUnderLoad, EndsCleanlyEachTime) {
  constexpr int kStops = kSanitized ? 5 : 15;
  constexpr int kClients = 6;
  for (int stop = 0; stop < kStops; ++stop) {
    RunningAgent agent({});
    std::list<Asking> clients;
    for (int i = 0; i < kClients; ++i) {
      clients.emplace_back(endpointOf(agent));
    }
    const RawClient first(endpointOf(agent));
    ASSERT_TRUE(first.send(viewRequest()));
    ASSERT_TRUE(first.answer());
    const support::Ended ended = agent.stop(SIGTERM);
    ASSERT_EQ(0, ended.status) << ended.err;
  }
}

// Connections of stalled clients, each in the middle of a request to a different object.
class StalledClients {
 public:
  explicit StalledClients(const RunningAgent& agent) : endpoint_(endpointOf(agent)) {
    doNotRead();
    const auto orb = orb::startClient({});
    const CORBA::Object_var object = orb->get()->string_to_object(agent.corbaloc().c_str());
    const TopoMgr_I_var manager = TopoMgr_I::_narrow(object);
    TopoManagementManager::NodeList_T_var nodes;
    TopoManagementManager::NodeIterator_I_var iterator;
    manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    for (const std::string& key :
         {std::string(object_key::kManager), std::string(object_key::kSession),
          std::string(object_key::kConsole), orb::objectKeyOf(iterator)}) {
      stopWithinARequest(key);
    }
  }

 private:
  // The replies are many times larger than the buffers of the connection.
  void doNotRead() {
    constexpr int kReceiveBuffer = 4096;
    constexpr int kRequests = 2000;
    clients_.emplace_back(endpoint_, kReceiveBuffer);
    for (int i = 0; i < kRequests; ++i) {
      clients_.back().send(viewRequest());
    }
    clients_.back().isAnswered();
  }

  void stopWithinARequest(const std::string& key) {
    const std::string request = requestTo(key, "_is_a").text(std::string(100000, 'x')).bytes();
    clients_.emplace_back(endpoint_);
    clients_.back().send(request.substr(0, request.size() - 10));
  }

  const orb::Endpoint endpoint_;
  std::list<RawClient> clients_;
};

TEST(StalledClients, DelayNeitherReloadNorStopBeyondTheGracePeriod) {
  RunningAgent agent({"--network", kBackbone});
  const StalledClients clients(agent);
  const auto reload = Clock::now();
  const support::Ended reloaded = runTopoctl({"--agent", agent.corbaloc(), "module", "reload"});
  EXPECT_EQ(0, reloaded.status) << reloaded.err;
  EXPECT_LT(Clock::now() - reload, std::chrono::seconds(5));
  const StalledClients others(agent);
  const auto stop = Clock::now();
  const support::Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_LT(Clock::now() - stop, std::chrono::seconds(10));
}

}  // namespace
}  // namespace integration
