// TLS of outgoing calls through TAO_SSLIOP.

#include <ace/Log_Msg.h>
#include <ace/Log_Msg_Backend.h>
#include <ace/Log_Record.h>
#include <ace/SSL/SSL_Context.h>
#include <orbsvcs/SSLIOP/SSLIOP_Endpoint.h>
#include <orbsvcs/SSLIOP/SSLIOP_Factory.h>
#include <tao/Base_Transport_Property.h>
#include <tao/CDR.h>
#include <tao/Profile.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "../tls.h"
#include "connector.h"
#include "orb/orb.h"
#include "profiles.h"
#include "transports.h"

namespace orb {
namespace {

std::atomic<bool> installed{false};

bool hasTlsEndpoint(TAO_Profile& profile) {
  const std::vector<Endpoint> endpoints = endpointsIn(profile);
  return std::any_of(endpoints.begin(), endpoints.end(),
                     [](const Endpoint& each) { return each.transport == Transport::kTls; });
}

// Connects with TLS to the endpoints of profiles with TLS, and without TLS to all others. Only
// profiles with TLS use the classes of SSLIOP, so this class does not slow down calls without TLS.
class TlsConnector final : public CheckedConnector {
 public:
  int open(TAO_ORB_Core* core) override {
    return CheckedConnector::open(core) == -1 ? -1 : secure_->open(core);
  }

  int close() override {
    secure_->close();
    return CheckedConnector::close();
  }

  TAO_Transport* connect(TAO::Profile_Transport_Resolver* resolver,
                         TAO_Transport_Descriptor_Interface* description,
                         ACE_Time_Value* timeout) override {
    const auto* const endpoint = dynamic_cast<TAO_SSLIOP_Endpoint*>(description->endpoint());
    if (endpoint == nullptr) {
      return CheckedConnector::connect(resolver, description, timeout);
    }
    check(endpoint->object_addr());
    expectHost(endpoint->iiop_endpoint()->host());
    return secure_->connect(resolver, description, timeout);
  }

  TAO_Profile* create_profile(TAO_InputCDR& encoded) override {
    TAO_InputCDR again(encoded);
    TAO_Profile* const profile = CheckedConnector::create_profile(encoded);
    if (profile == nullptr || !hasTlsEndpoint(*profile)) {
      return profile;
    }
    profile->_decr_refcnt();
    return secure_->create_profile(again);
  }

  int check_prefix(const char* endpoint) override {
    return CheckedConnector::check_prefix(endpoint) == 0 ? 0 : secure_->check_prefix(endpoint);
  }

  TAO_Profile* corbaloc_scan(const char* text, std::size_t& size) override {
    return secure_->check_prefix(text) == 0 ? secure_->corbaloc_scan(text, size)
                                            : CheckedConnector::corbaloc_scan(text, size);
  }

 private:
  const std::unique_ptr<TAO_Connector> secure_{TAO::SSLIOP::Protocol_Factory().make_connector()};
};

// Writes ACE's diagnostics to standard error, as ACE does, except for the lines about failed TLS
// connections, which takeTlsFailure() describes.
class Diagnostics final : public ACE_Log_Msg_Backend {
 public:
  int open(const ACE_TCHAR* /*key*/) override { return 0; }
  int reset() override { return 0; }
  int close() override { return 0; }

  ssize_t log(ACE_Log_Record& record) override {
    const std::string line = ACE_TEXT_ALWAYS_CHAR(record.msg_data());
    return line.compare(0, 7, "ACE_SSL") == 0 ? 0 : record.print(ACE_TEXT(""), 0, stderr);
  }
};

void filterDiagnostics() {
  static Diagnostics diagnostics;
  ACE_Log_Msg::msg_backend(&diagnostics);
  ACE_LOG_MSG->open(ACE_TEXT(""), ACE_Log_Msg::CUSTOM);
}

// Switches off the protection that SSLIOP requires of incoming requests, because RequestStream, not
// SSLIOP, accepts TLS connections.
void initialiseSsliop() {
  static TAO::SSLIOP::Protocol_Factory factory;  // its initialisers belong to the process
  char protection[] = "-SSLNoProtection";
  char* arguments[] = {protection};
  if (factory.init(1, arguments) != 0) {
    throw CORBA::INITIALIZE(0, CORBA::COMPLETED_NO);
  }
  ACE_SSL_Context& context = *ACE_SSL_Context::instance();
  SSL_CTX_set_cert_store(context.context(), X509_STORE_new());  // trusts no authority
  prepareOutgoing(*context.context());
  context.default_verify_mode(SSL_VERIFY_PEER);
  filterDiagnostics();
}

}  // namespace

bool hasTls() {
  return true;
}

void installTls() {
  static std::once_flag once;
  std::call_once(once, initialiseSsliop);
  installed = true;
}

std::unique_ptr<TAO_Connector> makeTlsConnector() {
  return installed ? std::make_unique<TlsConnector>() : nullptr;
}

std::uint16_t tlsPortOf(TAO_Endpoint& endpoint) {
  const auto* const tls = dynamic_cast<TAO_SSLIOP_Endpoint*>(&endpoint);
  return tls == nullptr ? 0 : tls->ssl_component().port;
}

}  // namespace orb
