// The platform's access control for event handling. Published under the name "SecurityIF".
//
// Thread-safety: any thread. Ownership: arguments are borrowed for the call. Errors: every call may
// throw ProcessException.
//
// The host defines the destructor (key function, see framework/ProcessException.h).

#ifndef PLATFORM_SECURITY_SECURITYIF_H
#define PLATFORM_SECURITY_SECURITYIF_H

#include <string>

#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/framework/Export.h"

namespace NS_SECURITY_SERVICE1 {

class PLATFORM_API SecurityIF : public NS_BUNDLEMGR1::ServiceInterface {
 public:
  ~SecurityIF() override;

  // Whether this process may receive platform events.
  virtual bool isEventAccessAllowed() = 0;

  // Set the identity and the access level of the calling thread, until the next call.
  virtual void setAccessIdentity(const std::string& identity) = 0;
  virtual void setAccessLevel(const int& level) = 0;
};

}  // namespace NS_SECURITY_SERVICE1

#endif
