// The service interfaces that the agent publishes for modules.

#ifndef AGENT_HOST_HOSTSERVICES_H
#define AGENT_HOST_HOSTSERVICES_H

#include <optional>
#include <string>

#include "agent/host/DomainService.h"
#include "agent/host/EventAccess.h"
#include "agent/host/ObjectNaming.h"
#include "agent/host/Publication.h"
#include "agent/host/SecurityService.h"
#include "agent/model/NetworkModel.h"

namespace agent {

// Publishes "DomainInterface", "CorbaUtilInterface" and "SecurityIF" for as long as this object
// lives.
//
// Thread-safety: constructed and destroyed while no module is loaded; the services take calls from
// any thread. Ownership: owns the services, borrows the model. Errors: std::bad_alloc.
class HostServices {
 public:
  // emsName: the value of the "EMS" pair of every TMF name.
  HostServices(const std::string& emsName, const NetworkModel& model, EventAccess access);

 private:
  DomainService domain_;
  const Publication publishedDomain_;
  ObjectNaming naming_;
  const Publication publishedNaming_;
  SecurityService security_;
  std::optional<Publication> publishedSecurity_;
};

}  // namespace agent

#endif
