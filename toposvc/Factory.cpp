// The only exported symbol of the module: an ACE service-object factory.

#include <memory>

#include "ace/Assert.h"
#include "platform/framework/Export.h"
#include "toposvc/TopoService.h"

namespace {

[[gnu::used, gnu::section(".topo.version")]] constexpr char kVersion[] = TOPO_VERSION;

// Deletes the service object. The factory passes this function to the loader.
void destroyService(void* _p) {
  if (_p == nullptr) {
    // Not ACE_ASSERT, because a release build removes ACE_ASSERT.
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
  return service.release();  // the loader calls destroyService
}
