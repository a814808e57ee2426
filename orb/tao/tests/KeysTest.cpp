// Malformed object keys with the prefix of POA keys.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::RawClient;
using orb_tests::requestTo;

TEST(ObjectKeys, OfAPoaNameNoObjectWhenTruncated) {
  const auto server = orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
  manager->activate();
  const PortableServer::ServantBase_var servant = new orb_tests::Answering(7);
  const PortableServer::ObjectId_var id = server->rootPoa()->activate_object(servant.in());
  const CORBA::Object_var reference = server->rootPoa()->id_to_reference(id.in());
  const orb::ObjectKey key = orb::objectKeyOf(reference.in());
  for (std::size_t size = 4; size < key.size(); ++size) {
    const RawClient client(server->endpoint());
    ASSERT_TRUE(client.send(requestTo(key.substr(0, size), "getLength").bytes()));
    const std::string answer = client.receive();
    EXPECT_NE(std::string::npos, answer.find("OBJECT_NOT_EXIST")) << size << answer;
  }
  EXPECT_EQ(7U, orb_tests::lengthOf(reference.in()));
}

TEST(ObjectKeys, OfAPersistentPoaNameNoObject) {
  const auto server = orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  const std::string lengthOfName = "\x7f\xff\xff\xff";
  const std::string key = std::string("\024\001\017\0NUP", 7) + lengthOfName + "name";
  const RawClient client(server->endpoint());
  ASSERT_TRUE(client.send(requestTo(key, "getLength").bytes()));
  EXPECT_NE(std::string::npos, client.receive().find("OBJECT_NOT_EXIST"));
}

}  // namespace
