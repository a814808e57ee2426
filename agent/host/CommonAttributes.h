// Where the setters of the common attributes find what they act on.

#ifndef AGENT_HOST_COMMONATTRIBUTES_H
#define AGENT_HOST_COMMONATTRIBUTES_H

#include "agent/changes/AttributeService.h"

namespace agent {

// The setters of the contract have no context of their own, so they act on the one service that is
// offered; while there is none they are not implemented.
//
// Thread-safety: made and ended while no setter runs.
class OfferedAttributes {
 public:
  // Borrows the service.
  explicit OfferedAttributes(AttributeService& service);
  ~OfferedAttributes();

  OfferedAttributes(const OfferedAttributes&) = delete;
  OfferedAttributes& operator=(const OfferedAttributes&) = delete;
};

}  // namespace agent

#endif
