// A module whose init() fails.

#include "ace/Service_Object.h"

namespace {

class RefusingService final : public ACE_Service_Object {
 public:
  int init(int /*argc*/, ACE_TCHAR* /*argv*/[]) override { return -1; }
};

void destroy(void* service) {
  delete static_cast<ACE_Service_Object*>(service);
}

}  // namespace

extern "C" ACE_Service_Object* _make_zu_corba_topo(ACE_Service_Object_Exterminator* exterminator) {
  if (exterminator != nullptr) {
    *exterminator = destroy;
  }
  return new RefusingService;
}
