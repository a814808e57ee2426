// Requests during the destruction of a POA.

#include <gmock/gmock.h>

#include <future>
#include <string>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::RawClient;
using orb_tests::requestTo;
using testing::HasSubstr;

TEST(PoaDestruction, RejectsNewRequestsWithTransientWhileAnotherRuns) {
  const auto server = orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  const PortableServer::POA_var poa =
      server->rootPoa()->create_POA("poa", PortableServer::POAManager::_nil(), CORBA::PolicyList());
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  std::promise<void> entered;
  std::promise<void> released;
  const PortableServer::ServantBase_var servant = new orb_tests::Answering([&]() -> CORBA::ULong {
    entered.set_value();
    released.get_future().wait();
    return 7;
  });
  const PortableServer::ObjectId_var id = poa->activate_object(servant.in());
  const CORBA::Object_var reference = poa->id_to_reference(id.in());
  const std::string key = orb::objectKeyOf(reference);
  const RawClient running(server->endpoint());
  ASSERT_TRUE(running.send(requestTo(key, "getLength").bytes()));
  entered.get_future().wait();

  auto destroyed = std::async(std::launch::async, [&poa] { orb::destroyPoa(poa.in()); });
  const RawClient other(server->endpoint());
  std::string answer;
  do {  // until the destruction has begun
    static_cast<void>(other.send(requestTo(key, "destroy").bytes()));
    answer = other.receive();
  } while (!answer.empty() && answer.find("IDL:") == std::string::npos);
  EXPECT_THAT(answer, HasSubstr("IDL:omg.org/CORBA/TRANSIENT:1.0"));
  released.set_value();
  destroyed.get();
  EXPECT_TRUE(running.answer());
}

}  // namespace
