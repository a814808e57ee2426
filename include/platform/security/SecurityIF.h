// The platform's access control for event handling. Published under the name "SecurityIF".
//
// Thread-safety: any thread. Ownership: arguments are borrowed for the call. Texts are UTF-8.
// Errors: every call may raise anything; no exception ends the process or reaches a client.
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

  // Whether this process may receive platform events. The module asks once, in init. May raise:
  // anything; the module drops the exception and has no events, as for false.
  virtual bool isEventAccessAllowed() = 0;

  // Set the identity and the access level of the calling thread, until the next call. The module
  // sets "NT" and 1 at the beginning of each event. May raise: anything; the module logs the
  // exception and drops the event.
  virtual void setAccessIdentity(const std::string& identity) = 0;
  virtual void setAccessLevel(const int& level) = 0;
};

}  // namespace NS_SECURITY_SERVICE1

#endif
