#include "conformance/probe/ProbeService.h"

#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "conformance/probe/ProbeManager.h"
#include "conformance/probe/Rules.h"
#include "conformance/shared/ProbeProtocol.h"
#include "platform/agent/AgentConfig.h"
#include "platform/framework/ProcessException.h"

namespace conformance::probe {
namespace {

using NS_CORBA::CorbaAgentConfig;
using NS_CORBA::CorbaBaseAgentConfig;

constexpr const char* kManager = "TopoManagement";
constexpr std::int32_t kFailure = 7;

const ProbeService* currentService = nullptr;

// The state belongs to the library, as in the module: after a failed init, fini of a second service
// object releases the state.
ProbeFactory factory;

void unregisterQuietly() {
  try {
    CorbaBaseAgentConfig::Instance()->UnregisterMgr(kManager);
  } catch (...) {
    // The manager is not registered.
  }
}

bool mustFail() {
  const char* const file = std::getenv(kFailVariable);
  return file != nullptr && access(file, F_OK) == 0;
}

void destroy(void* service) {
  delete static_cast<ACE_Service_Object*>(service);
}

}  // namespace

ProbeService::ProbeService() : ServiceObjectBase("zu_corbaagent_bundle", "zu_corba_topo") {}

const ProbeService* ProbeService::current() {
  return currentService;
}

RecordingHandler& ProbeService::handler() {
  static RecordingHandler instance;
  return instance;
}

NS_BUNDLEMGR1::ServiceInterface* ProbeService::CreateInterface() {
  interface_ = new NS_BUNDLEMGR1::NULLServiceInterface;  // owned by the base
  return interface_;
}

int ProbeService::init(int, ACE_TCHAR*[]) {
  currentService = this;
  checkIntoReport(initRules());
  unregisterQuietly();
  CorbaBaseAgentConfig::Instance()->RegisterMgr(kManager, &factory);
  CorbaAgentConfig::Instance()->RegisterServant(kManager, factory.create());
  subscribe(handler());
  if (mustFail()) {
    ProcessException failure;
    failure.errorCode = kFailure;
    failure.detail << "topo-conformance wants this init to fail";
    throw failure;
  }
  return 0;
}

int ProbeService::fini() {
  ServiceObjectBase::fini();
  checkIntoReport(finiRules());
  unregisterQuietly();
  unsubscribe(handler());
  return 0;
}

}  // namespace conformance::probe

extern "C" PLATFORM_API ACE_Service_Object* _make_zu_corba_topo(
    ACE_Service_Object_Exterminator* gobbler);

ACE_Service_Object* _make_zu_corba_topo(ACE_Service_Object_Exterminator* gobbler) {
  if (gobbler != nullptr) {
    *gobbler = conformance::probe::destroy;
  }
  auto service = std::make_unique<conformance::probe::ProbeService>();
  NS_BUNDLEMGR1::SetIFBuf("NULLServiceInterface", service->CreateInterface());
  return service.release();  // the loader calls destroy
}
