#include "transport.h"

#include <omniORB4/CORBA.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/omniServer.h>
#include <omniORB4/giopEndpoint.h>
// clang-format on
#include <omniORB4/omniURI.h>

#include <utility>

#include "listener.h"

namespace orb {
namespace {

constexpr const char* kType = "giop:limited";

// Delegates to the TCP transport of the ORB, except for listening endpoints.
class Transport final : public omni::giopTransportImpl {
 public:
  Transport() : giopTransportImpl(kType) {}

  void limit(ChannelLimits limits) { limits_ = std::move(limits); }

  omni::giopEndpoint* toEndpoint(const char* address) override {
    return isValid(address) ? new Listener(address, limits_) : nullptr;
  }
  omni::giopAddress* toAddress(const char* address) override { return tcp().toAddress(address); }
  _CORBA_Boolean isValid(const char* address) override {
    return omni::omniURI::validHostPortRange(address);
  }
  _CORBA_Boolean addToIOR(const char* address, omni::IORPublish* published) override {
    return tcp().addToIOR(address, published);
  }
  const omnivector<const char*>* getInterfaceAddress() override {
    return tcp().getInterfaceAddress();
  }

 private:
  static omni::giopTransportImpl& tcp() { return *str2Transport("giop:tcp:"); }

  ChannelLimits limits_;
};

}  // namespace

std::string limitedEndpoint(const Options& options, const std::string& listenAt) {
  static Transport transport;
  ChannelLimits limits;
  limits.requests = requestLimits(options);
  limits.connections = options.maxConnections;
  limits.requestTime = options.serveTimeout;
  transport.limit(std::move(limits));
  return std::string(kType) + ":" + listenAt;
}

}  // namespace orb
