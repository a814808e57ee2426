#include "incoming.h"

#include <tao/IIOP_Acceptor.h>
#include <tao/IIOP_Connection_Handler.h>
#include <tao/IIOP_Factory.h>
#include <tao/IIOP_Profile.h>
#include <tao/IIOP_Transport.h>
#include <tao/ORB_Constants.h>
#include <tao/Thread_Lane_Resources.h>

#include <memory>
#include <string>
#include <utility>

#include "acceptance.h"
#include "connector.h"
#include "outgoingcalls.h"
#include "profiles.h"
#include "sync/Mutex.h"
#include "transports.h"

namespace orb {

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

struct Iiop {
  using Handler = TAO_IIOP_Connection_Handler;
  using Transport = TAO_IIOP_Transport;
  using PeerAcceptor = ACE_SOCK_ACCEPTOR;
};

// Listens with the strategies of acceptance.h, with or without TLS. The base class has the
// addresses.
class IncomingAcceptor final : public TAO_IIOP_Acceptor {
 public:
  ~IncomingAcceptor() override { IncomingAcceptor::close(); }

  int close() override { return acceptor_.close(); }

  // The profile of a TLS endpoint has port 0; a component of the profile has the port of TLS.
  int create_profile(const TAO::ObjectKey& key, TAO_MProfile& profiles,
                     CORBA::Short priority) override {
    if (!inReferences_) {
      return 0;
    }
    if (!tls_) {
      return TAO_IIOP_Acceptor::create_profile(key, profiles, priority);
    }
    auto* const made = new TAO_IIOP_Profile(hosts_[0], 0, key, addrs_[0], version_, orb_core_);
    addOrbComponents(*made, *orb_core_);
    addTlsComponent(*made, addrs_[0].get_port_number());
    return giveProfile(profiles, decoded(made, *orb_core_));
  }

 private:
  int open_i(const ACE_INET_Addr& address, ACE_Reactor* reactor) override {
    const std::shared_ptr<Connections> connections = currentConnections();
    creation_ = std::make_unique<Creation<Iiop>>(orb_core_, connections);
    acceptance_ = std::make_unique<Acceptance<Iiop>>(orb_core_, connections);
    concurrency_ = std::make_unique<CONCURRENCY_STRATEGY>(orb_core_);
    ACE_INET_Addr own;
    if (acceptor_.open(address, reactor, creation_.get(), acceptance_.get(), concurrency_.get(),
                       nullptr, nullptr, nullptr, 1, reuse_addr_) == -1 ||
        acceptor_.acceptor().get_local_addr(own) == -1) {
      return -1;
    }
    Endpoint bound = connections->nextEndpoint();
    bound.host = hosts_[0];
    bound.port = own.get_port_number();
    tls_ = bound.transport == Transport::kTls;
    inReferences_ = bound.inReferences;
    publish(connections->addEndpoint(bound));
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

  bool tls_ = false;
  bool inReferences_ = true;
  std::unique_ptr<Creation<Iiop>> creation_;
  std::unique_ptr<Acceptance<Iiop>> acceptance_;
  std::unique_ptr<CONCURRENCY_STRATEGY> concurrency_;
  BASE_ACCEPTOR acceptor_{this};
};

class Protocol final : public TAO_IIOP_Protocol_Factory {
 public:
  TAO_Acceptor* make_acceptor() override { return new IncomingAcceptor; }

  TAO_Connector* make_connector() override {
    std::unique_ptr<TAO_Connector> withTls = makeTlsConnector();
    return withTls ? withTls.release() : new CheckedConnector;
  }
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
