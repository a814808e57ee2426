// platform/security/: every module may receive events.

#include "Host.h"
#include "platform/security/SecurityIF.h"

NS_SECURITY_SERVICE1::SecurityIF::~SecurityIF() = default;

namespace {

class Security final : public NS_SECURITY_SERVICE1::SecurityIF {
 public:
  bool isEventAccessAllowed() override { return true; }
  void setAccessIdentity(const std::string&) override {}
  void setAccessLevel(const int&) override {}
};

}  // namespace

void host::publishSecurity() {
  static Security security;
  NS_BUNDLEMGR1::SetIFBuf("SecurityIF", &security);
}
