// The module's one exported symbol, in the form of an ACE service-object factory.

#include <memory>

#include "ace/Assert.h"
#include "platform/framework/Export.h"
#include "toposvc/TopoService.h"

namespace {

// Destroys the service object; the loader gets this together with the object.
void destroyService(void* _p) {
  if (_p == nullptr) {
    // Holds in every build; ACE_ASSERT vanishes from optimised ones.
    ACE_VERSIONED_NAMESPACE_NAME::__ace_assert("toposvc", 33, ACE_TEXT("_p != 0"));
  }
  delete static_cast<ACE_Service_Object*>(_p);
}

}  // namespace

extern "C" PLATFORM_API ACE_Service_Object* _make_zu_corba_topo(
    ACE_Service_Object_Exterminator* gobbler);

ACE_Service_Object* _make_zu_corba_topo(ACE_Service_Object_Exterminator* gobbler) {
  if (gobbler != nullptr) {
    *gobbler = destroyService;
  }
  auto service = std::make_unique<zu_corba_topo>();
  NS_BUNDLEMGR1::SetIFBuf("NULLServiceInterface", service->CreateInterface());
  return service.release();  // the loader destroys it through the gobbler
}
