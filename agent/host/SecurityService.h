// The agent's access control, as far as event handling asks it. Published as "SecurityIF".

#ifndef AGENT_HOST_SECURITYSERVICE_H
#define AGENT_HOST_SECURITYSERVICE_H

#include <atomic>
#include <string>

#include "platform/security/SecurityIF.h"

namespace agent {

// Who a thread acts as. At first nobody, with level 0.
struct AccessContext {
  std::string identity;
  int level = 0;
};

// Thread-safety: any thread; each thread has an access context of its own, the same in every
// service of the process.
class SecurityService final : public NS_SECURITY_SERVICE1::SecurityIF {
 public:
  explicit SecurityService(bool eventAccessAllowed) : eventAccessAllowed_(eventAccessAllowed) {}

  bool isEventAccessAllowed() override {
    return eventAccessAllowed_.load(std::memory_order_relaxed);
  }

  // Says what is answered from now on; whoever has subscribed already stays subscribed.
  void allowEventAccess(bool allowed) {
    eventAccessAllowed_.store(allowed, std::memory_order_relaxed);
  }

  void setAccessIdentity(const std::string& identity) override;
  void setAccessLevel(const int& level) override;

  // The calling thread's.
  static AccessContext currentAccess();

 private:
  std::atomic<bool> eventAccessAllowed_;
};

}  // namespace agent

#endif
