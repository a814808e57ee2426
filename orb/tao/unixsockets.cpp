// Unix sockets through UIOP.

#include <ace/LSOCK_Acceptor.h>
#include <ace/UNIX_Addr.h>
#include <tao/MProfile.h>
#include <tao/ORB_Core.h>
#include <tao/Strategies/UIOP_Acceptor.h>
#include <tao/Strategies/UIOP_Connection_Handler.h>
#include <tao/Strategies/UIOP_Connector.h>
#include <tao/Strategies/UIOP_Endpoint.h>
#include <tao/Strategies/UIOP_Factory.h>
#include <tao/Strategies/UIOP_Profile.h>
#include <tao/Strategies/UIOP_Transport.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "acceptance.h"
#include "incoming.h"
#include "profiles.h"
#include "transports.h"

namespace orb {
namespace {

struct Uiop {
  using Handler = TAO_UIOP_Connection_Handler;
  using Transport = TAO_UIOP_Transport;
  using PeerAcceptor = ACE_LSOCK_ACCEPTOR;
};

// Accepts on the socket on which Connections already listens.
class UnixAcceptance final : public Acceptance<Uiop> {
 public:
  using Acceptance<Uiop>::Acceptance;

  int open(const ACE_UNIX_Addr& address, bool /*restart*/) override {
    const int socket = connections().takeUnixSocket(address.get_path_name());
    peer_acceptor_.set_handle(socket);
    return socket < 0 ? -1 : 0;
  }
};

class UnixAcceptor final : public TAO_Acceptor {
  using Base = TAO_UIOP_Acceptor::TAO_UIOP_BASE_ACCEPTOR;
  using Concurrency = TAO_UIOP_Acceptor::TAO_UIOP_CONCURRENCY_STRATEGY;

 public:
  UnixAcceptor() : TAO_Acceptor(TAO_TAG_UIOP_PROFILE) {}
  ~UnixAcceptor() override { UnixAcceptor::close(); }

  int open(TAO_ORB_Core* core, ACE_Reactor* reactor, int /*major*/, int /*minor*/, const char* path,
           const char* /*options*/) override {
    core_ = core;
    address_.set(path);
    const std::shared_ptr<Connections> connections = currentConnections();
    creation_ = std::make_unique<Creation<Uiop>>(core, connections);
    acceptance_ = std::make_unique<UnixAcceptance>(core, connections);
    concurrency_ = std::make_unique<Concurrency>(core);
    if (acceptor_.open(address_, reactor, creation_.get(), acceptance_.get(), concurrency_.get()) ==
        -1) {
      return -1;
    }
    inReferences_ = connections->addEndpoint(connections->nextEndpoint()).inReferences;
    return 0;
  }

  // Fails: every Unix endpoint has a configured path.
  int open_default(TAO_ORB_Core*, ACE_Reactor*, int, int, const char*) override { return -1; }

  // Keeps the file, which Connections removes.
  int close() override { return acceptor_.close(); }

  int create_profile(const TAO::ObjectKey& key, TAO_MProfile& profiles,
                     CORBA::Short /*priority*/) override {
    if (!inReferences_) {
      return 0;
    }
    const TAO_GIOP_Message_Version version(TAO_DEF_GIOP_MAJOR, TAO_DEF_GIOP_MINOR);
    auto* const profile = new TAO_UIOP_Profile(address_, key, version, core_);
    addOrbComponents(*profile, *core_);
    return giveProfile(profiles, profile);
  }

  int is_collocated(const TAO_Endpoint* endpoint) override {
    const auto* const other = dynamic_cast<const TAO_UIOP_Endpoint*>(endpoint);
    return other != nullptr && other->object_addr() == address_ ? 1 : 0;
  }

  CORBA::ULong endpoint_count() override { return 1; }

  int object_key(IOP::TaggedProfile& encoded, TAO::ObjectKey& key) override {
    TAO_InputCDR data(reinterpret_cast<const char*>(encoded.profile_data.get_buffer()),
                      encoded.profile_data.length());
    TAO_UIOP_Profile profile(core_);
    if (profile.decode(data) != 1) {
      return -1;
    }
    key = profile.object_key();
    return 1;
  }

 private:
  TAO_ORB_Core* core_ = nullptr;
  bool inReferences_ = true;
  ACE_UNIX_Addr address_;
  std::unique_ptr<Creation<Uiop>> creation_;
  std::unique_ptr<UnixAcceptance> acceptance_;
  std::unique_ptr<Concurrency> concurrency_;
  Base acceptor_{this};
};

// Corrects the ORB, which takes the "|" of a corbaloc "uiop:PATH|/KEY" for a part of the path and
// adds another "|" before the key.
class UnixProfile final : public TAO_UIOP_Profile {
 public:
  using TAO_UIOP_Profile::TAO_UIOP_Profile;

  void parse_string(const char* text) override {
    std::string address = text;
    const std::size_t doubled = address.find("||");
    if (doubled != std::string::npos) {
      address.erase(doubled, 1);
    }
    TAO_UIOP_Profile::parse_string(address.c_str());
  }
};

class UnixConnector final : public TAO_UIOP_Connector {
 private:
  TAO_Profile* make_profile() override { return new UnixProfile(orb_core()); }
};

class UnixProtocol final : public TAO_UIOP_Protocol_Factory {
 public:
  TAO_Acceptor* make_acceptor() override { return new UnixAcceptor; }
  TAO_Connector* make_connector() override { return new UnixConnector; }
};

}  // namespace

std::unique_ptr<TAO_Protocol_Factory> makeUnixProtocol() {
  return std::make_unique<UnixProtocol>();
}

}  // namespace orb
