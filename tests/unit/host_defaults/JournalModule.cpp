// A module that calls functions of the test program.

#include "tests/unit/host_defaults/JournalModule.h"

#include "ace/Service_Object.h"

namespace {

class JournalService final : public ACE_Service_Object {
 public:
  ~JournalService() override { moduleDeleted(); }

  int init(int /*argc*/, ACE_TCHAR* /*argv*/[]) override {
    moduleInit();
    return 0;
  }

  int fini() override {
    moduleFini();
    return 0;
  }
};

void destroy(void* service) {
  delete static_cast<ACE_Service_Object*>(service);
}

}  // namespace

extern "C" PLATFORM_API ACE_Service_Object* _make_zu_corba_topo(
    ACE_Service_Object_Exterminator* exterminator) {
  *exterminator = destroy;
  return new JournalService;
}
