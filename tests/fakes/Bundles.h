// The fake bundle manager.

#ifndef TESTS_FAKES_BUNDLES_H
#define TESTS_FAKES_BUNDLES_H

#include <string>

#include "platform/bundlemgr/BundleMgr.h"

namespace fakes {

// A service object with a given interface or null. Owns the interface. Thread-safety and errors: as
// the base.
class Bundle final : public NS_BUNDLEMGR1::ServiceObjectBase {
 public:
  Bundle(const std::string& serviceName, NS_BUNDLEMGR1::ServiceInterface* offered);

  NS_BUNDLEMGR1::ServiceInterface* CreateInterface() override;
};

// Publishes an interface without a line in the journal.
void publish(const std::string& name, NS_BUNDLEMGR1::ServiceInterface* interface);

// The buffer of a name; makes an empty buffer on the first call.
NS_BUNDLEMGR1::InterfaceBuffer& openBuffer(const std::string& name);

// Publishes the three fakes that the module looks up.
void publishPlatform();

// Replaces _g_actualmutex by a mutex that the calling thread has locked. The mutex reports a second
// lock as an error, so every lock on this thread fails. resetBundles, called on this thread, ends
// the replacement.
void makeSharedMutexFail();

// Whether the calling thread has that mutex locked.
bool sharedMutexIsHeld();

// Removes every published interface and restores the mutex. The test owns the service objects.
void resetBundles();

}  // namespace fakes

#endif
