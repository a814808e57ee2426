// The service object of the probe: performs the steps of the module in init and fini, and checks
// rules there.

#ifndef CONFORMANCE_PROBE_PROBESERVICE_H
#define CONFORMANCE_PROBE_PROBESERVICE_H

#include "conformance/probe/RecordingHandler.h"
#include "platform/bundlemgr/BundleMgr.h"

namespace conformance::probe {

// Thread-safety and ownership: as the service object of the module. Errors: init throws
// ProcessException while the file of kFailVariable exists, after it has registered and subscribed.
class ProbeService final : public NS_BUNDLEMGR1::ServiceObjectBase {
 public:
  ProbeService();

  // The object whose init is running.
  static const ProbeService* current();

  // The handler that init subscribes. Lives as long as the library.
  static RecordingHandler& handler();

  void RegistSvc() override {}  // as the module
  NS_BUNDLEMGR1::ServiceInterface* CreateInterface() override;
  int init(int argc, ACE_TCHAR* argv[]) override;
  int fini() override;
};

}  // namespace conformance::probe

#endif
