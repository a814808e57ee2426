// The frame of an operation of the console: exceptions and outcomes become the exceptions of the
// IDL. Part of the console.

#ifndef AGENT_CONSOLE_CONSOLEOPERATION_H
#define AGENT_CONSOLE_CONSOLEOPERATION_H

#include <exception>

#include "agent/base/FailureCodes.h"
#include "agent/base/Log.h"
#include "agent/base/OperationResult.h"
#include "agent/base/RequestLog.h"
#include "idl/ObjectKeys.h"
#include "orb/orb.h"
#include "platform/agent/Failures.h"

namespace agent {

// The recipients of the reason in an internal error.
enum class ReasonRecipients { kLogOnly, kLogAndClient };

// Throws the exception of a failed outcome. Returns after success.
inline void throwFailure(const char* operation, const Outcome& outcome,
                         ReasonRecipients recipients) {
  const Outcome answer = logInternalError(operation, outcome);
  if (!outcome.ok() && outcome.code != kInternalError) {
    logRefusal(orb::format(orb::currentPeer()), operation, outcome.reason);
  }
  NS_CORBA::ThrowException(
      answer.code, recipients == ReasonRecipients::kLogAndClient ? outcome.reason : answer.reason);
}

// Runs the work and translates every exception into an outcome.
template <typename Work>
Outcome outcomeOf(Work work) {
  try {
    return work();
  } catch (const std::exception& failure) {
    return {kInternalError, failure.what()};
  } catch (const CORBA::SystemException& failure) {
    return {kInternalError, orb::describe(failure)};
  } catch (const CORBA::Exception& failure) {
    return {kInternalError, failure._name()};
  } catch (...) {
    return {kInternalError, "an exception of an unknown type"};
  }
}

// Runs an operation and raises the exception of a failed outcome.
template <typename Work>
void perform(const char* operation, Work work,
             ReasonRecipients recipients = ReasonRecipients::kLogOnly) {
  throwFailure(operation, outcomeOf(work), recipients);
}

// Records a change by an operation of the console, or the failure of the change.
template <typename Subject>
void recordChange(const char* operation, const Subject& subject, const Outcome& outcome) {
  using Recorded = RequestRecord::Outcome;
  const Recorded recorded = outcome.ok() ? Recorded::kDone : Recorded::kFailed;
  recordWith(recorded, [&] {
    return RequestRecord{orb::currentPeer(), object_key::kConsole, operation, subject(),
                         recorded,           outcome.reason};
  });
}

// Runs an operation that changes the network or the agent, and logs and records the change.
// subject() returns the name of the changed object.
template <typename Subject, typename Work>
void performChange(const char* operation, Subject subject, Work work,
                   ReasonRecipients recipients = ReasonRecipients::kLogOnly) {
  const Outcome outcome = outcomeOf(work);
  if (isRecorded()) {
    recordChange(operation, subject, outcome);
  }
  throwFailure(operation, outcome, recipients);
  afterChange([&] {
    if (isLogged(kLogEvents)) {
      logChange(orb::format(orb::currentPeer()), operation, subject());
    }
  });
}

}  // namespace agent

#endif
