// The cost of idle connections.

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <list>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::RawClient;

TEST(ManyConnections, UseNoThreadsWhileIdle) {
  const auto server = orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  const auto object = server->wellKnownObject("Key");
  const PortableServer::ServantBase_var servant = new orb_tests::Answering(7);
  const CORBA::Object_var published = object->publish(servant.in());
  std::list<RawClient> clients;
  for (int i = 0; i < 200; ++i) {
    clients.emplace_back(server->endpoint());
    ASSERT_TRUE(clients.back().send(orb_tests::requestTo("Key", "getLength").bytes()));
    ASSERT_TRUE(clients.back().answer());
  }
  const std::filesystem::directory_iterator threads("/proc/self/task");
  EXPECT_LT(std::distance(begin(threads), end(threads)), 30);
}

}  // namespace
