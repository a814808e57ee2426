#include <chrono>
#include <string>
#include <thread>

#include "conformance/probe/Calls.h"
#include "conformance/probe/ProbeManager.h"
#include "conformance/probe/Rules.h"
#include "platform/agent/AgentConfig.h"

namespace conformance::probe {
namespace {

using NS_CORBA::CorbaAgentConfig;
using NS_CORBA::CorbaBaseAgentConfig;

constexpr const char* kName = "topo-conformance";

// A manager under a name that the module does not use.
class Registration {
 public:
  Registration() {
    platformCall("RegisterMgr",
                 [this] { CorbaBaseAgentConfig::Instance()->RegisterMgr(kName, &factory_); });
  }
  ~Registration() {
    try {
      CorbaBaseAgentConfig::Instance()->UnregisterMgr(kName);
    } catch (...) {
      // The rule has failed already.
    }
  }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

 private:
  ProbeFactory factory_;
};

// Waits for the ORB to delete servants.
bool servantsFallTo(int count) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  while (ProbeManager::count() > count && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return ProbeManager::count() <= count;
}

// Hands a servant to the host. Returns whether the host has accepted the servant.
bool registerServant(POA_common::Common_I* servant) {
  try {
    CorbaAgentConfig::Instance()->RegisterServant(kName, servant);
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

// The first call of the module's init, before any manager is registered.
void unknownManagersAreIgnored() {
  try {
    CorbaBaseAgentConfig::Instance()->UnregisterMgr(kName);
  } catch (...) {
    // The module drops the exception.
  }
}

void managersCannotBeRegisteredTwice() {
  const Registration registration;
  ProbeFactory other;
  requireRefusal("RegisterMgr for a name in use",
                 [&other] { CorbaBaseAgentConfig::Instance()->RegisterMgr(kName, &other); });
}

void nullServantsAreRefused() {
  const Registration registration;
  requireRefusal("RegisterServant with a null servant",
                 [] { CorbaAgentConfig::Instance()->RegisterServant(kName, nullptr); });
}

// The second servant replaces the first servant, or is refused: one of both servants is left.
void servantsBelongToTheHost() {
  const Registration registration;
  const int before = ProbeManager::count();
  const bool first = registerServant(new ProbeManager);
  require(servantsFallTo(before + (first ? 1 : 0)),
          "the host keeps the reference of a refused servant");
  registerServant(new ProbeManager);
  require(servantsFallTo(before + (first ? 1 : 0)),
          "the host keeps the references of two servants for one manager");
}

void testSwitchCanBeRead() {
  quietly("GetTestSwitch", [] { CorbaAgentConfig::Instance()->GetTestSwitch(); });
}

void noServantIsLeft() {
  require(ProbeManager::count() == 0,
          std::to_string(ProbeManager::count()) + " servants of the manager exist");
}

void noIteratorIsLeft() {
  require(ProbeIterator::count() == 0, std::to_string(ProbeIterator::count()) + " iterators exist");
}

}  // namespace conformance::probe
