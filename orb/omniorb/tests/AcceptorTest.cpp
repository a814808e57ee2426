// Accepting connections with and without free file descriptors.

#include "orb/omniorb/incoming/acceptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tests/unit/orb/RawClient.h"

namespace {

using orb::Acceptor;
using orb_tests::RawClient;

// Lowers the limit of open files to the present number, for the lifetime of the object.
class NoDescriptors {
 public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &before_);
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(next);
    const rlimit low{static_cast<rlim_t>(next), before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &low);
  }
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;

 private:
  rlimit before_{};
};

class AcceptorTest : public testing::Test {
 protected:
  static int listen() {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(0, ::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address));
    ::listen(socket, 8);
    return socket;
  }

  orb::Endpoint endpoint() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(acceptor_.socket(), reinterpret_cast<sockaddr*>(&address), &size);
    return {"127.0.0.1", ntohs(address.sin_port)};
  }

  Acceptor acceptor_{listen()};
  int accepted_ = -1;
};

TEST_F(AcceptorTest, AcceptsAPendingConnection) {
  EXPECT_EQ(Acceptor::Outcome::kNone, acceptor_.accept(accepted_));
  const RawClient client(endpoint());
  EXPECT_EQ(Acceptor::Outcome::kAccepted, acceptor_.accept(accepted_));
  ::close(accepted_);
  EXPECT_TRUE(client.isClosedByPeer());
}

TEST_F(AcceptorTest, RefusesConnectionsWithoutFreeDescriptors) {
  const RawClient first(endpoint());
  const RawClient second(endpoint());
  {
    const NoDescriptors none;
    EXPECT_EQ(Acceptor::Outcome::kRefused, acceptor_.accept(accepted_));
    EXPECT_TRUE(first.isClosedByPeer());
    EXPECT_EQ(Acceptor::Outcome::kRefused, acceptor_.accept(accepted_));
    EXPECT_TRUE(second.isClosedByPeer());
  }
  const RawClient third(endpoint());
  EXPECT_EQ(Acceptor::Outcome::kAccepted, acceptor_.accept(accepted_));
  ::close(accepted_);
}

}  // namespace
