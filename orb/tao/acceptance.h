// Acceptance of connections, for every transport.

#ifndef ORB_TAO_ACCEPTANCE_H
#define ORB_TAO_ACCEPTANCE_H

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <tao/Acceptor_Impl.h>
#include <tao/ORB_Core.h>
#include <tao/Transport.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <new>
#include <utility>

#include "connections.h"
#include "requeststream.h"

namespace orb {

// Kind: a struct that names the ORB's classes of a transport: Handler, Transport and PeerAcceptor.

// The transport of an incoming connection, used by the thread of the connection.
template <typename Kind>
class IncomingTransport final : public Kind::Transport {
 public:
  IncomingTransport(typename Kind::Handler* handler, TAO_ORB_Core* core,
                    std::shared_ptr<Connections> connections)
      : Kind::Transport(handler, core), stream_(std::move(connections)) {}

  RequestStream& stream() { return stream_; }

 private:
  ssize_t recv(char* to, std::size_t count, const ACE_Time_Value* /*timeout*/) override {
    return stream_.recv(to, count);
  }

  ssize_t send(iovec* pieces, int count, std::size_t& sent,
               const ACE_Time_Value* /*timeout*/) override {
    return stream_.send(pieces, count, sent);
  }

  RequestStream stream_;
};

// The ORB's handler of an incoming connection, with an IncomingTransport in place of the ORB's.
template <typename Kind>
class IncomingHandler final : public Kind::Handler {
 public:
  IncomingHandler(TAO_ORB_Core* core, std::shared_ptr<Connections> connections)
      : Kind::Handler(core) {
    const std::unique_ptr<TAO_Transport> ofTheOrb(this->transport());
    incoming_ = new IncomingTransport<Kind>(this, core, std::move(connections));
    this->transport(incoming_);  // the base deletes it
  }

  RequestStream& stream() { return incoming_->stream(); }

 private:
  IncomingTransport<Kind>* incoming_ = nullptr;
};

// Creates the handlers of accepted connections.
template <typename Kind>
class Creation final : public TAO_Creation_Strategy<typename Kind::Handler> {
 public:
  Creation(TAO_ORB_Core* core, std::shared_ptr<Connections> connections)
      : TAO_Creation_Strategy<typename Kind::Handler>(core), connections_(std::move(connections)) {}

  int make_svc_handler(typename Kind::Handler*& handler) override {
    try {
      handler = new IncomingHandler<Kind>(this->orb_core_, connections_);
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

// Accepts connections and closes connections beyond the limits. When the process has no descriptor
// left, a reserved descriptor is used to accept and close a connection.
template <typename Kind>
class Acceptance : public TAO_Accept_Strategy<typename Kind::Handler, typename Kind::PeerAcceptor> {
  using Base = TAO_Accept_Strategy<typename Kind::Handler, typename Kind::PeerAcceptor>;

 public:
  Acceptance(TAO_ORB_Core* core, std::shared_ptr<Connections> connections)
      : Base(core), connections_(std::move(connections)), reserve_(openReserve()) {}

  ~Acceptance() override { ::close(reserve_); }

  int accept_svc_handler(typename Kind::Handler* handler) override {
    if (Base::accept_svc_handler(handler) == -1) {  // has destroyed the handler
      if (errno == EMFILE || errno == ENFILE) {
        refuseOne();
      }
      return -1;
    }
    if (static_cast<IncomingHandler<Kind>*>(handler)->stream().admit(handler->get_handle())) {
      return 0;
    }
    handler->transport()->remove_reference();
    errno = 0;  // the ORB continues to accept
    return -1;
  }

 protected:
  Connections& connections() { return *connections_; }

 private:
  static int openReserve() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

  void refuseOne() {
    connections_->logNoDescriptor();
    if (reserve_ >= 0) {
      ::close(reserve_);
      ::close(::accept(this->get_handle(), nullptr, nullptr));
      errno = 0;  // with an error the ORB would pause accepting
    }
    reserve_ = openReserve();
  }

  const std::shared_ptr<Connections> connections_;
  int reserve_;
};

}  // namespace orb

#endif
