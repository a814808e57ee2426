// The timeout of replies.

#include <gtest/gtest.h>

#include <future>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::LargeReplies;
using orb_tests::RawClient;
using orb_tests::requestTo;

TEST(ServeTimeout, EndsTheReplyToAClientThatDoesNotRead) {
  orb::Options options;
  options.serveTimeout = std::chrono::milliseconds(300);
  const auto server = orb::startServer(options, {"127.0.0.1", 0}, nullptr);
  const auto object = server->wellKnownObject("Key");
  const PortableServer::Servant_var<LargeReplies> servant = new LargeReplies;
  const CORBA::Object_var published = object->publish(servant.in());
  std::future<void> asked = servant->asked();
  const RawClient client(server->endpoint());
  ASSERT_TRUE(client.send(requestTo("Key", "next_n").number(1).bytes()));
  asked.wait();
  const auto begin = std::chrono::steady_clock::now();
  object->retire();  // returns after the end of the reply
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
