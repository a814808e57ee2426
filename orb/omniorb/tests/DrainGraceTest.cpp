// The grace period of blocked connections.

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <vector>

#include "orb/omniorb/drain.h"
#include "tests/unit/orb/LogLines.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb::Drain;
using orb_tests::LargeReplies;
using orb_tests::RawClient;
using orb_tests::requestTo;

constexpr std::size_t kReplyBytes = std::size_t{16}
                                    << 20;  // minimum size of a reply of LargeReplies

class DrainGrace : public testing::Test {
 protected:
  void serve(std::chrono::milliseconds grace) {
    orb::Options options;
    options.drainGrace = grace;
    server_ = orb::startServer(options, {"127.0.0.1", 0}, log_.function());
    object_ = server_->wellKnownObject("Key");
    published_ = object_->publish(servant_.in());
  }

  // Returns when the reply, which exceeds the socket buffers, is in transfer.
  void askWithoutReading(const RawClient& client) {
    ASSERT_TRUE(client.send(requestTo("Key", "next_n").number(1).bytes()));
    servant_->asked().wait();
  }

  static bool isServed(const RawClient& client) {
    return client.send(requestTo("Key", "getLength").bytes()) && client.answer();
  }

  // Whether the whole reply arrives before the end of the connection.
  static bool readsReply(const RawClient& client) {
    std::size_t bytes = 0;
    while (bytes < kReplyBytes) {
      const std::string piece = client.receive();
      if (piece.empty()) {
        return false;
      }
      bytes += piece.size();
    }
    return true;
  }

  orb_tests::LogLines log_;
  const PortableServer::Servant_var<LargeReplies> servant_ = new LargeReplies;
  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<orb::WellKnownObject> object_;
  CORBA::Object_var published_;
};

// A Drain::Matches with a fixed result. Reports the second check of a blocked request: the Drain
// has completed its first pass over all connections then.
class SecondLook {
 public:
  explicit SecondLook(bool matches) : matches_(matches) {}

  bool operator()() {
    if (++looks_ == 2) {
      second_.set_value();
    }
    return matches_;
  }

  void wait() { second_.get_future().wait(); }

 private:
  const bool matches_;
  std::atomic<int> looks_{0};
  std::promise<void> second_;
};

TEST_F(DrainGrace, DelaysTheEndOfAMatchingRequest) {
  serve(std::chrono::hours(1));
  const RawClient client(server_->endpoint());
  askWithoutReading(client);
  SecondLook look(true);
  const Drain drain([&look](omni::GIOP_S&) { return look(); });
  look.wait();
  EXPECT_TRUE(readsReply(client));
  EXPECT_EQ(std::vector<std::string>(), log_.all());
}

TEST_F(DrainGrace, DelaysTheEndOfOtherConnections) {
  serve(std::chrono::hours(1));
  const RawClient idle(server_->endpoint());
  ASSERT_TRUE(isServed(idle));
  const RawClient client(server_->endpoint());
  askWithoutReading(client);
  SecondLook look(false);
  const Drain drain([&look](omni::GIOP_S&) { return look(); }, Drain::Others::kClosed);
  look.wait();
  EXPECT_TRUE(readsReply(client));
  EXPECT_TRUE(isServed(idle));
}

TEST_F(DrainGrace, EndsOtherConnectionsWithoutALogLine) {
  serve(std::chrono::milliseconds(1));
  const RawClient idle(server_->endpoint());
  ASSERT_TRUE(isServed(idle));
  const Drain drain([](omni::GIOP_S&) { return true; }, Drain::Others::kClosed);
  EXPECT_TRUE(idle.isClosedByPeer());
  EXPECT_EQ(std::vector<std::string>(), log_.all());
}

TEST_F(DrainGrace, KeepsRequestsThatDoNotMatch) {
  serve(std::chrono::milliseconds(1));
  const RawClient client(server_->endpoint());
  askWithoutReading(client);
  SecondLook look(false);
  const Drain drain([&look](omni::GIOP_S&) { return look(); });
  look.wait();
  EXPECT_TRUE(readsReply(client));
}

}  // namespace
