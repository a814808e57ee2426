// The fake agent: its answers, and the objects that the module passed to the agent.
//
// Thread-safety: any thread, except that a test writes agent() before the calls that read it.

#ifndef TESTS_FAKES_AGENT_H
#define TESTS_FAKES_AGENT_H

#include <atomic>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "orb/idl/common.h"
#include "orb/idl/notifications.h"
#include "orb/orb.h"
#include "platform/agent/AgentConfig.h"

namespace fakes {

// The answers of the agent. Calls of "CorbaBaseAgentConfig::Instance" and
// "CorbaAgentConfig::Instance" run planned steps but write no line in the journal.
struct Agent {
  std::atomic<bool> testSwitch{false};
  std::deque<bool> testSwitchAnswers;  // the next answers, before testSwitch; for one thread
  std::string emsName = "EMS-1";

  std::string attributeErrorText;              // the error text of onSetAdditionalInfo
  globaldefs::NVSList_T storedAdditionalInfo;  // the in-place result of onSetAdditionalInfo,
  bool returnStoredAdditionalInfo = false;     // when this is set
};

Agent& agent();

// --- Managers and servants. RegisterServant takes over the servant, also when the call throws.

// The factory registered under a name, or null.
NS_CORBA::MgrFactory* registeredFactory(const std::string& name);

// The servants in the order of their registration; borrowed.
std::vector<POA_common::Common_I*> registeredServants();

// Drops the agent's references to servants.
void releaseServants();

// --- Iterators. A successful add_Iterator takes over the servant, then runs the steps planned for
// --- "add_Iterator late".

// Sets the result of getIteratorPoa; nil initially.
void useIteratorPoa(PortableServer::POA_ptr poa);

// The registered servants, oldest first; the caller owns a reference to each servant.
std::vector<PortableServer::ServantBase_var> registeredIterators();

// The argument of the last add_Iterator call, for steps of that call; borrowed.
PortableServer::ServantBase* offeredIterator();

// Deactivates every registered iterator, as the agent's idle timeout does.
void endIterators();

// --- Failures.

// The exception of an NbiException call.
struct ReportedFailure {
  std::int32_t errorCode = 0;
  std::int32_t line = 0;
  std::string file;
  std::string function;
  std::string context;
  std::string detail;
};

std::vector<ReportedFailure> reportedFailures();

// --- Notifications.

struct Notification {
  std::string kind;  // "created", "deleted", "changed"
  globaldefs::NVSList_T objectName;
  CORBA::Any object;
  notifications::NVList_T attributes;
  bool edgePointRelated = false;
  CORBA::Any additional;
  bool hasAdditional = false;
};

std::vector<Notification> notificationsSent();

void resetAgent();

}  // namespace fakes

#endif
