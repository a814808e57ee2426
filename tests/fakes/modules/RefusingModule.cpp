// A module whose init() fails: with -1, or with an exception that the environment variable
// TOPO_INIT_EXCEPTION selects, "ProcessException" or the text of a std::runtime_error.

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "ace/Service_Object.h"
#include "platform/framework/ProcessException.h"

namespace {

class RefusingService final : public ACE_Service_Object {
 public:
  int init(int /*argc*/, ACE_TCHAR* /*argv*/[]) override {
    const char* const exception = std::getenv("TOPO_INIT_EXCEPTION");
    if (exception == nullptr) {
      return -1;
    }
    if (std::string(exception) == "ProcessException") {
      ProcessException failure;
      failure.errorCode = 77;
      failure.detail << "no network";
      throw failure;
    }
    throw std::runtime_error(exception);
  }
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
