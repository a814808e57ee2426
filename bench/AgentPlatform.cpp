#include <string>
#include <utility>

#include "agent/host/DomainService.h"
#include "agent/host/ObjectNaming.h"
#include "agent/host/Publication.h"
#include "agent/host/RunningAgent.h"
#include "agent/model/NetworkModel.h"
#include "agent/northbound/Northbound.h"
#include "bench/Networks.h"
#include "bench/Platform.h"
#include "orb/orb.h"

namespace bench {

class Platform::Parts {
 public:
  explicit Parts(agent::Network network) : model_(std::move(network)) {}

 private:
  const std::unique_ptr<orb::Server> server_ =
      orb::startServer({}, {"127.0.0.1", 0}, [](const std::string&) {});
  agent::NetworkModel model_;
  agent::DomainService domain_{model_};
  const agent::Publication publishedDomain_{"DomainInterface", domain_};
  agent::ObjectNaming naming_{kEms, model_};
  const agent::Publication publishedNaming_{"CorbaUtilInterface", naming_};
  agent::Northbound northbound_{*server_, kEms, false};
  const agent::AgentRegistration registration_{{&northbound_}};
};

Platform::Platform(agent::Network network) : parts_(std::make_unique<Parts>(std::move(network))) {}

Platform::~Platform() = default;

void Platform::tidy() {}

}  // namespace bench
