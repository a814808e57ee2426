#include "agent/host/HostServices.h"

#include "agent/base/Log.h"

namespace agent {

HostServices::HostServices(const std::string& emsName, const NetworkModel& model,
                           EventAccess access)
    : domain_(model),
      publishedDomain_("DomainInterface", domain_),
      naming_(emsName, model, [](const std::string& line) { log(kLogTraces, line); }),
      publishedNaming_("CorbaUtilInterface", naming_),
      security_(access == EventAccess::kAllowed) {
  if (access != EventAccess::kUnknown) {
    publishedSecurity_.emplace("SecurityIF", security_);
  }
}

}  // namespace agent
