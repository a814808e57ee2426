// Hand-over of requests from the reading thread to serving threads.

#include "orb/omniorb/incoming/channel.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>

#include "tests/unit/orb/RawClient.h"

namespace {

using orb::Channel;
using orb_tests::requestTo;
using State = Channel::State;

constexpr Channel::Time kNow{};

// Counts the calls of the channel.
class FakeWatcher final : public orb::Watcher {
 public:
  void watch(Id /*id*/, int /*socket*/) override { ++watches_; }
  void attend(Id /*id*/) override { ++attends_; }

  std::atomic<int> watches_{0};
  std::atomic<int> attends_{0};
};

class ChannelTest : public testing::Test {
 protected:
  ChannelTest() {
    int sockets[2] = {-1, -1};
    EXPECT_EQ(0, ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets));
    peer_ = sockets[0];
    channel_.emplace(2, std::make_unique<orb::Stream>(orb::Descriptor(sockets[1]), orb::Peer()),
                     watcher_, limits_, budget_);
  }
  ~ChannelTest() override { ::close(peer_); }

  void send(const std::string& bytes) const {
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), ::write(peer_, bytes.data(), bytes.size()));
  }

  State attend() { return channel_->attend(scratch_, sizeof scratch_, kNow); }

  std::string read(std::size_t count) {
    std::string bytes(count, '\0');
    const int taken = channel_->read(bytes.data(), count, std::chrono::system_clock::now());
    return bytes.substr(0, taken > 0 ? static_cast<std::size_t>(taken) : 0);
  }

  const orb::RequestLimits limits_{10000, 1000000, {}};
  const std::string request_ = requestTo("Key", "getLength").bytes();
  FakeWatcher watcher_;
  orb::ReceiveBudget budget_{1000000};
  char scratch_[4096] = {};
  int peer_ = -1;
  std::optional<Channel> channel_;
};

TEST_F(ChannelTest, ReportsEachOfTwoRequestsThatArriveTogether) {
  send(request_ + request_);
  channel_->setSelectable();
  EXPECT_EQ(State::kReady, attend());
  channel_->finishNotification();
  EXPECT_EQ(request_, read(10000));
  channel_->setSelectable();
  EXPECT_EQ(1, watcher_.attends_) << "the second request was received together with the first";
  EXPECT_EQ(State::kReady, attend());
  channel_->finishNotification();
  EXPECT_EQ(request_, read(10000));
}

TEST_F(ChannelTest, ReportsARequestAgainAfterACancelledNotification) {
  send(request_);
  channel_->setSelectable();
  EXPECT_EQ(State::kReady, attend());
  channel_->cancelNotification();
  EXPECT_TRUE(channel_->isSelectable());
  EXPECT_EQ(State::kReady, attend());
  channel_->finishNotification();
  EXPECT_EQ(request_, read(10000));
}

TEST_F(ChannelTest, ReceivesOnlyWhileSelectable) {
  send(request_);
  EXPECT_EQ(State::kWaiting, attend());
  EXPECT_EQ(0, watcher_.watches_);
  channel_->setSelectable();
  EXPECT_EQ(1, watcher_.watches_);
  channel_->setSelectable();
  EXPECT_EQ(1, watcher_.watches_) << "the channel was selectable already";
  EXPECT_EQ(State::kReady, attend());
  EXPECT_FALSE(channel_->isSelectable());
}

TEST_F(ChannelTest, ClearsSelectableAfterTheNotification) {
  for (int i = 0; i < 100; ++i) {
    send(request_);
    channel_->setSelectable();
    ASSERT_EQ(State::kReady, attend());
    std::promise<void> begun;
    std::atomic<bool> finished{false};
    auto finishedBefore = std::async(std::launch::async, [&] {
      begun.set_value();
      channel_->clearSelectable();
      return finished.load();
    });
    begun.get_future().wait();
    std::this_thread::yield();
    finished = true;
    channel_->finishNotification();
    ASSERT_TRUE(finishedBefore.get());
    ASSERT_EQ(request_, read(10000));
  }
}

TEST_F(ChannelTest, SchedulesWorkOnShutDown) {
  channel_->setSelectable();
  channel_->shutDown();
  EXPECT_EQ(1, watcher_.attends_);
  EXPECT_EQ(State::kReady, attend());
  char byte = 0;
  EXPECT_EQ(-1, channel_->read(&byte, 1, std::nullopt));
}

TEST_F(ChannelTest, ReportsTheEndOfTheConnection) {
  ::shutdown(peer_, SHUT_RDWR);
  channel_->setSelectable();
  EXPECT_EQ(State::kReady, attend());
  char byte = 0;
  EXPECT_EQ(-1, channel_->read(&byte, 1, std::nullopt));
}

TEST_F(ChannelTest, ReportsInvalidBytesAsTheEnd) {
  send("this is no request");
  channel_->setSelectable();
  EXPECT_EQ(State::kReady, attend());
  char byte = 0;
  EXPECT_EQ(-1, channel_->read(&byte, 1, std::nullopt));
}

TEST_F(ChannelTest, HasNoIncompleteMessageWhileARequestIsServed) {
  send(request_ + request_.substr(0, 3));
  channel_->setSelectable();
  EXPECT_EQ(State::kReady, attend());
  EXPECT_EQ(std::nullopt, channel_->incompleteSince());
  channel_->finishNotification();
  EXPECT_EQ(request_, read(10000));
  channel_->setSelectable();
  EXPECT_EQ(State::kWaiting, attend());
  EXPECT_EQ(kNow, channel_->incompleteSince());
  channel_->clearSelectable();
  EXPECT_EQ(std::nullopt, channel_->incompleteSince());
}

TEST_F(ChannelTest, ClosesTheSocketInTheDestructor) {
  channel_.reset();
  char byte = 0;
  EXPECT_EQ(0, ::recv(peer_, &byte, 1, MSG_DONTWAIT));
}

}  // namespace
