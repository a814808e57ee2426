#include "incoming.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <tao/Acceptor_Impl.h>
#include <tao/IIOP_Acceptor.h>
#include <tao/IIOP_Connection_Handler.h>
#include <tao/IIOP_Factory.h>
#include <tao/IIOP_Transport.h>
#include <tao/ORB_Core.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <optional>
#include <utility>

#include "outgoingcalls.h"
#include "sync/Mutex.h"

namespace orb {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct LatestConnections {
  Mutex mutex;
  std::shared_ptr<Connections> connections GUARDED_BY(mutex);
};

ORB_ONE_PER_PROCESS LatestConnections& latestConnections();

LatestConnections& latestConnections() {
  static LatestConnections latest;
  return latest;
}

namespace {

// Returns the milliseconds until the time, for poll(); -1 without a value.
int millisecondsUntil(std::optional<Clock::time_point> until) {
  if (!until) {
    return -1;
  }
  const auto left = std::chrono::ceil<milliseconds>(*until - Clock::now());
  return static_cast<int>(std::clamp<milliseconds::rep>(left.count(), 0, 1 << 30));
}

std::optional<Clock::time_point> after(Clock::time_point begin, milliseconds time) {
  return time.count() == 0 ? std::nullopt : std::optional(begin + time);
}

// The transport of an incoming connection, used by the thread of the connection. Assembles requests
// before the ORB reads them, so that the ORB never waits for the rest of a message.
class IncomingTransport final : public TAO_IIOP_Transport {
 public:
  IncomingTransport(TAO_IIOP_Connection_Handler* handler, TAO_ORB_Core* core,
                    std::shared_ptr<Connections> connections)
      : TAO_IIOP_Transport(handler, core),
        connections_(std::move(connections)),
        assembler_(connections_->limits(), connections_->budget()) {}

  ~IncomingTransport() override {
    if (connection_) {
      connections_->remove(connection_);
    }
  }

  // Registers the accepted connection. Returns false if the connection is refused.
  bool admit(int socket) {
    try {
      connection_ = connections_->admit(socket);
    } catch (const std::bad_alloc&) {
      connections_->logNoMemory();
    }
    return connection_ != nullptr;
  }

 private:
  // Ends the connection when a request is incomplete after serveTimeout, or after idleTimeout.
  ssize_t recv(char* to, std::size_t count, const ACE_Time_Value* /*timeout*/) override {
    replyBegun_.reset();
    std::size_t taken = request_ ? request_->bytes.take(to, count) : 0;
    if (taken == 0 && receiveRequest()) {
      taken = request_->bytes.take(to, count);
    }
    if (taken > 0) {
      return static_cast<ssize_t>(taken);
    }
    errno = ECONNRESET;  // after ETIME the ORB would retry
    return -1;
  }

  // Ends the connection when the reply is not sent within serveTimeout, or within drainGrace.
  ssize_t send(iovec* pieces, int count, std::size_t& sent, const ACE_Time_Value*) override {
    if (!replyBegun_) {
      replyBegun_ = Clock::now();
    }
    msghdr message{};
    message.msg_iov = pieces;
    message.msg_iovlen = static_cast<std::size_t>(count);
    for (;;) {
      const ssize_t written =
          ::sendmsg(connection_->socket(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
      if (written >= 0) {
        sent = static_cast<std::size_t>(written);
        return written;
      }
      if (errno != EINTR && (errno != EAGAIN || !awaitWritable())) {
        connection_->reset();
        errno = ECONNRESET;
        return -1;
      }
    }
  }

  // Polls isDraining(), because drain may begin while the thread waits.
  bool awaitWritable() const {
    constexpr milliseconds kPollInterval{100};
    const auto isLate = [](std::optional<Clock::time_point> until) {
      return until && *until <= Clock::now();
    };
    while (!isLate(after(*replyBegun_, connections_->options().serveTimeout))) {
      if (awaitSocket(POLLOUT, Clock::now() + kPollInterval)) {
        return true;
      }
      if (connection_->isDraining() && isLate(*replyBegun_ + connections_->options().drainGrace)) {
        connections_->logUnread(*connection_);
        return false;
      }
    }
    return false;
  }

  // Waits for the next complete request. Returns false at the end of the connection and after a
  // failed allocation.
  bool receiveRequest() {
    try {
      return assembleRequest();
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  bool assembleRequest() {
    request_.reset();
    idleUntil_ = after(Clock::now(), connections_->options().idleTimeout);
    while (!connections_->isClosing()) {
      const Assembler::Progress taken =
          assembler_.take(buffer_.data() + begin_, end_ - begin_, Clock::now());
      begin_ += taken.bytes;
      if (assembler_.isComplete()) {
        request_ = assembler_.release();
        recordRequest();
        return true;
      }
      if (!taken.valid || !(taken.starved ? awaitBudget() : receiveBytes())) {
        return false;
      }
    }
    return false;
  }

  void recordRequest() {
    servedRequest() = {connection_, request_->declaredBytes, request_->refused.has_value()};
    if (request_->refused) {
      connections_->logTooLarge(*connection_, *request_);
    }
  }

  // Receives the available bytes, or waits for the first byte.
  bool receiveBytes() {
    if (!awaitSocket(POLLIN, deadline())) {
      return timedOut();
    }
    const ssize_t count =
        ::recv(connection_->socket(), buffer_.data(), buffer_.size(), MSG_DONTWAIT);
    begin_ = 0;
    end_ = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
  }

  // Pauses until other connections may have released receive memory.
  bool awaitBudget() {
    constexpr int kPauseMilliseconds = 20;
    ::poll(nullptr, 0, kPauseMilliseconds);
    return millisecondsUntil(deadline()) != 0 || timedOut();
  }

  // Logs an incomplete request. Returns false, for the end of the connection.
  bool timedOut() const {
    if (assembler_.incompleteSince()) {
      connections_->logIncomplete();
    }
    return false;
  }

  std::optional<Clock::time_point> deadline() const {
    const std::optional<Assembler::Time> since = assembler_.incompleteSince();
    return since ? after(*since, connections_->options().serveTimeout) : idleUntil_;
  }

  // Whether the socket became ready, or failed, before `until`.
  bool awaitSocket(short event, std::optional<Clock::time_point> until) const {
    pollfd wait{connection_->socket(), event, 0};
    int ready = 0;
    do {
      ready = ::poll(&wait, 1, millisecondsUntil(until));
    } while ((ready < 0 && errno == EINTR) || (ready == 0 && millisecondsUntil(until) != 0));
    return ready > 0;
  }

  const std::shared_ptr<Connections> connections_;
  std::shared_ptr<Connection> connection_;
  Assembler assembler_;
  std::optional<Assembler::Request> request_;  // the request that the ORB reads
  std::array<char, 16384> buffer_;             // received bytes
  std::size_t begin_ = 0;                      // [begin_, end_): bytes that are not assembled yet
  std::size_t end_ = 0;
  std::optional<Clock::time_point> idleUntil_;
  std::optional<Clock::time_point> replyBegun_;
};

// The ORB's handler of an incoming connection, with an IncomingTransport in place of the ORB's.
class IncomingHandler final : public TAO_IIOP_Connection_Handler {
 public:
  IncomingHandler(TAO_ORB_Core* core, std::shared_ptr<Connections> connections)
      : TAO_IIOP_Connection_Handler(core) {
    const std::unique_ptr<TAO_Transport> ofTheOrb(transport());
    incoming_ = new IncomingTransport(this, core, std::move(connections));  // the base deletes it
    transport(incoming_);
  }

  IncomingTransport& incoming() { return *incoming_; }

 private:
  IncomingTransport* incoming_ = nullptr;
};

// Creates the handlers of accepted connections.
class Creation final : public TAO_Creation_Strategy<TAO_IIOP_Connection_Handler> {
 public:
  Creation(TAO_ORB_Core* core, std::shared_ptr<Connections> connections)
      : TAO_Creation_Strategy(core), connections_(std::move(connections)) {}

  int make_svc_handler(TAO_IIOP_Connection_Handler*& handler) override {
    try {
      handler = new IncomingHandler(orb_core_, connections_);
      return 0;
    } catch (const std::bad_alloc&) {
      constexpr int kPauseMilliseconds = 20;  // the ORB retries immediately
      connections_->logNoMemory();
      ::poll(nullptr, 0, kPauseMilliseconds);
      return -1;
    }
  }

 private:
  const std::shared_ptr<Connections> connections_;
};

using AcceptStrategy = TAO_Accept_Strategy<TAO_IIOP_Connection_Handler, ACE_SOCK_ACCEPTOR>;

// Accepts connections and closes connections beyond the limits. When the process has no descriptor
// left, a reserved descriptor is used to accept and close a connection.
class Acceptance final : public AcceptStrategy {
 public:
  Acceptance(TAO_ORB_Core* core, std::shared_ptr<Connections> connections)
      : AcceptStrategy(core), connections_(std::move(connections)), reserve_(openReserve()) {}

  ~Acceptance() override { ::close(reserve_); }

  int accept_svc_handler(TAO_IIOP_Connection_Handler* handler) override {
    if (AcceptStrategy::accept_svc_handler(handler) == -1) {  // has destroyed the handler
      if (errno == EMFILE || errno == ENFILE) {
        refuseOne();
      }
      return -1;
    }
    auto* const incoming = static_cast<IncomingHandler*>(handler);
    if (incoming->incoming().admit(handler->get_handle())) {
      return 0;
    }
    handler->transport()->remove_reference();
    errno = 0;  // the ORB continues to accept
    return -1;
  }

 private:
  static int openReserve() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

  void refuseOne() {
    connections_->logNoDescriptor();
    if (reserve_ >= 0) {
      ::close(reserve_);
      ::close(::accept(get_handle(), nullptr, nullptr));
      errno = 0;  // with an error the ORB would pause accepting
    }
    reserve_ = openReserve();
  }

  const std::shared_ptr<Connections> connections_;
  int reserve_;
};

// Listens with the strategies above; the base class keeps the addresses.
class IncomingAcceptor final : public TAO_IIOP_Acceptor {
 public:
  ~IncomingAcceptor() override { IncomingAcceptor::close(); }

  int close() override { return acceptor_.close(); }

 private:
  int open_i(const ACE_INET_Addr& address, ACE_Reactor* reactor) override {
    const std::shared_ptr<Connections> connections = currentConnections();
    creation_ = std::make_unique<Creation>(orb_core_, connections);
    acceptance_ = std::make_unique<Acceptance>(orb_core_, connections);
    concurrency_ = std::make_unique<CONCURRENCY_STRATEGY>(orb_core_);
    ACE_INET_Addr own;
    if (acceptor_.open(address, reactor, creation_.get(), acceptance_.get(), concurrency_.get(),
                       nullptr, nullptr, nullptr, 1, reuse_addr_) == -1 ||
        acceptor_.acceptor().get_local_addr(own) == -1) {
      return -1;
    }
    publish(connections->addEndpoint({hosts_[0], own.get_port_number()}));
    default_address_.set_port_number(own.get_port_number());
    static_cast<void>(acceptor_.acceptor().enable(ACE_CLOEXEC));
    static_cast<void>(::listen(acceptor_.acceptor().get_handle(), SOMAXCONN));  // instead of 5
    return 0;
  }

  // Sets the address in references; drops the addresses of further interfaces if it is another one.
  void publish(const Endpoint& address) {
    if (address.host != hosts_[0]) {
      for (; endpoint_count_ > 1; --endpoint_count_) {
        CORBA::string_free(hosts_[endpoint_count_ - 1]);
      }
      CORBA::string_free(hosts_[0]);
      hosts_[0] = CORBA::string_dup(address.host.c_str());
    }
    for (CORBA::ULong i = 0; i < endpoint_count_; ++i) {
      addrs_[i].set_port_number(address.port, 1);
    }
  }

  std::unique_ptr<Creation> creation_;
  std::unique_ptr<Acceptance> acceptance_;
  std::unique_ptr<CONCURRENCY_STRATEGY> concurrency_;
  BASE_ACCEPTOR acceptor_{this};
};

class Protocol final : public TAO_IIOP_Protocol_Factory {
 public:
  TAO_Acceptor* make_acceptor() override { return new IncomingAcceptor; }
};

}  // namespace

void setConnections(std::shared_ptr<Connections> connections) {
  LatestConnections& latest = latestConnections();
  const MutexLock lock(latest.mutex);
  latest.connections = std::move(connections);
}

std::shared_ptr<Connections> currentConnections() {
  LatestConnections& latest = latestConnections();
  const MutexLock lock(latest.mutex);
  return latest.connections;
}

std::unique_ptr<TAO_Protocol_Factory> makeProtocol() {
  return std::make_unique<Protocol>();
}

}  // namespace orb
