// The bundle manager's side of the fakes.

#ifndef TESTS_FAKES_BUNDLES_H
#define TESTS_FAKES_BUNDLES_H

#include <string>

#include "platform/bundlemgr/BundleMgr.h"

namespace fakes {

// A service object that offers a given interface, which it owns, or none.
class Bundle final : public NS_BUNDLEMGR1::ServiceObjectBase {
 public:
  Bundle(const std::string& serviceName, NS_BUNDLEMGR1::ServiceInterface* offered);

  NS_BUNDLEMGR1::ServiceInterface* CreateInterface() override;
};

// Publishes without a line in the journal.
void publish(const std::string& name, NS_BUNDLEMGR1::ServiceInterface* interface);

// The buffer of a name, made empty when there is none.
NS_BUNDLEMGR1::InterfaceBuffer& openBuffer(const std::string& name);

// Publishes the three fakes that the module looks up.
void publishPlatform();

// Replaces the shared mutex by one that the calling thread holds and that refuses to be taken
// twice: on this thread every attempt to lock it fails. Until the reset, which must come from this
// thread.
void makeSharedMutexFail();

// Whether the calling thread still holds that mutex.
bool sharedMutexIsHeld();

// Withdraws everything that is published and puts the mutex right. Service objects are the test's.
void resetBundles();

}  // namespace fakes

#endif
