// The platform's access control, as far as event handling asks it. Published as "SecurityIF".
//
// Thread-safety: any thread. Every call may raise ProcessException.
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

  // Whether this process may receive platform events at all.
  virtual bool isEventAccessAllowed() = 0;

  // Who the calling thread acts as from now on, and with which level.
  virtual void setAccessIdentity(const std::string& identity) = 0;
  virtual void setAccessLevel(const int& level) = 0;
};

}  // namespace NS_SECURITY_SERVICE1

#endif
