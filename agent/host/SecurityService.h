// The access control of the agent for event handling. Published as "SecurityIF".

#ifndef AGENT_HOST_SECURITYSERVICE_H
#define AGENT_HOST_SECURITYSERVICE_H

#include <string>

#include "platform/security/SecurityIF.h"

namespace agent {

// Grants or denies events to the whole process, so the identity and the level of a thread are
// ignored.
//
// Thread-safety: any thread. Ownership: owns one constant only. Errors: none.
class SecurityService final : public NS_SECURITY_SERVICE1::SecurityIF {
 public:
  explicit SecurityService(bool eventAccessAllowed) : eventAccessAllowed_(eventAccessAllowed) {}

  bool isEventAccessAllowed() override { return eventAccessAllowed_; }
  void setAccessIdentity(const std::string& /*identity*/) override {}
  void setAccessLevel(const int& /*level*/) override {}

 private:
  const bool eventAccessAllowed_;
};

}  // namespace agent

#endif
