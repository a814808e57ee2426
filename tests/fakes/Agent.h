// The agent's side of the fakes: what it answers, and what it was handed.

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

// What the agent answers. Set by the test before calls are made, read by the fakes. Steps of
// "CorbaBaseAgentConfig::Instance" and "CorbaAgentConfig::Instance" run without a line in the
// journal.
struct Agent {
  std::atomic<bool> testSwitch{false};
  std::deque<bool> testSwitchAnswers;  // of the next calls, one thread only; then testSwitch
  std::string emsName = "EMS-1";

  std::string attributeErrorText;              // what onSetAdditionalInfo reports
  globaldefs::NVSList_T storedAdditionalInfo;  // what it gives back, when not empty
  bool returnStoredAdditionalInfo = false;
};

Agent& agent();

// --- Managers and servants. The fake agent owns servants from RegisterServant on, also when that
// --- raises something.

// The factory registered under a name, or null.
NS_CORBA::MgrFactory* registeredFactory(const std::string& name);

// The servants in the order of their registration; borrowed.
std::vector<POA_common::Common_I*> registeredServants();

// Drops the agent's references to servants.
void releaseServants();

// --- Iterators. The fake agent owns an iterator servant from a successful add_Iterator on. Steps
// planned for "add_Iterator late" run when the servant is registered.

// The POA that getIteratorPoa gives, nil at first.
void useIteratorPoa(PortableServer::POA_ptr poa);

// The servants that are registered now, oldest first; each with a reference of its own.
std::vector<PortableServer::ServantBase_var> registeredIterators();

// The servant that add_Iterator was last called with, for steps of that call; borrowed.
PortableServer::ServantBase* offeredIterator();

// Ends every registered iterator as the agent's idle time-out does.
void endIterators();

// --- Failures.

// What NbiException was told about a failure.
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
