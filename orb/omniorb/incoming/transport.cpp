#include "transport.h"

#include <omniORB4/CORBA.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/omniServer.h>
#include <omniORB4/giopEndpoint.h>
// clang-format on

#include <cstdlib>
#include <utility>

#include "listener.h"

namespace orb {
namespace {

constexpr const char* kType = "giop:limited";

// Makes the listening endpoints; a parameter is an index in ServerState::endpoints. References
// contain addresses of the ORB's own transports.
class Transports final : public omni::giopTransportImpl {
 public:
  Transports() : giopTransportImpl(kType) {}

  void serve(std::shared_ptr<ServerState> state) { state_ = std::move(state); }

  omni::giopEndpoint* toEndpoint(const char* index) override {
    return isValid(index) ? new Listener(state_, std::stoul(index)) : nullptr;
  }
  omni::giopAddress* toAddress(const char* /*address*/) override { return nullptr; }
  _CORBA_Boolean isValid(const char* index) override {
    return state_ && std::strtoul(index, nullptr, 10) < state_->endpoints.size();
  }
  _CORBA_Boolean addToIOR(const char* /*address*/, omni::IORPublish* /*to*/) override {
    return false;
  }
  const omnivector<const char*>* getInterfaceAddress() override {
    return str2Transport("giop:tcp:")->getInterfaceAddress();
  }

 private:
  std::shared_ptr<ServerState> state_;
};

}  // namespace

std::vector<std::string> limitedEndpoints(const std::shared_ptr<ServerState>& state) {
  static Transports transports;
  transports.serve(state);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < state->endpoints.size(); ++i) {
    names.push_back(std::string(kType) + ":" + std::to_string(i));
  }
  return names;
}

}  // namespace orb
