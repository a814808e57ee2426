// Concurrent calls to one peer.

#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "tests/unit/orb/Servants.h"
#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb_tests::lengthOf;
using orb_tests::SilentPeer;

// Each call uses a separate connection while other calls wait for their replies.
TEST(OutgoingCalls, DoNotWaitForOtherCallsToThePeer) {
  constexpr int kCalls = 12;
  const auto client = orb::startClient(orb_tests::quickOptions());
  std::vector<std::future<void>> calls;
  {
    SilentPeer peer;
    const CORBA::Object_var object = client->get()->string_to_object(peer.corbaloc().c_str());
    for (int i = 0; i < kCalls; ++i) {
      calls.push_back(std::async(std::launch::async, [object = CORBA::Object_var(object)] {
        EXPECT_THROW(lengthOf(object.in()), CORBA::SystemException);
      }));
    }
    int connections = 0;
    while (connections < kCalls && peer.accept(std::chrono::seconds(10))) {
      ++connections;
    }
    EXPECT_EQ(kCalls, connections);
  }  // the peer closes all connections, which ends the calls
  for (std::future<void>& call : calls) {
    call.get();
  }
}

}  // namespace
