// Calls to one peer.

#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "tests/unit/orb/Servants.h"
#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb_tests::lengthOf;
using orb_tests::SilentPeer;

// Each call has a connection of its own while the others wait for their answers.
TEST(Calls, ToOnePeerDoNotWaitForEachOther) {
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
  }  // the peer ends all connections, and the calls with them
  for (std::future<void>& call : calls) {
    call.get();
  }
}

}  // namespace
