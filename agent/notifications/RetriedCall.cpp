#include "agent/notifications/RetriedCall.h"

namespace agent {

std::string reasonOf(const CORBA::Exception& failure) {
  const auto* const system = CORBA::SystemException::_downcast(&failure);
  return system != nullptr ? orb::describe(*system) : failure._name();
}

}  // namespace agent
