#include "client/agent/CallFailure.h"

#include <array>
#include <cstddef>
#include <new>
#include <string>

#include "client/agent/Connection.h"
#include "idl/PermissionMinors.h"
#include "orb/idl/globaldefs.h"
#include "orb/orb.h"

namespace topoctl {
namespace {

constexpr std::array<const char*, 16> kExceptionTypes = {
    "EXCPT_NOT_IMPLEMENTED",
    "EXCPT_INTERNAL_ERROR",
    "EXCPT_INVALID_INPUT",
    "EXCPT_OBJECT_IN_USE",
    "EXCPT_TP_INVALID_ENDPOINT",
    "EXCPT_ENTITY_NOT_FOUND",
    "EXCPT_TIMESLOT_IN_USE",
    "EXCPT_PROTECTION_EFFORT_NOT_MET",
    "EXCPT_NOT_IN_VALID_STATE",
    "EXCPT_UNABLE_TO_COMPLY",
    "EXCPT_NE_COMM_LOSS",
    "EXCPT_CAPACITY_EXCEEDED",
    "EXCPT_ACCESS_DENIED",
    "EXCPT_TOO_MANY_OPEN_ITERATORS",
    "EXCPT_UNSUPPORTED_ROUTING_CONSTRAINTS",
    "EXCPT_USERLABEL_IN_USE",
};
static_assert(kExceptionTypes.size() == globaldefs::EXCPT_USERLABEL_IN_USE + 1);

// The ORB delivers only values of the enumeration.
const char* exceptionName(globaldefs::ExceptionType_T type) {
  return kExceptionTypes[static_cast<std::size_t>(type)];
}

Failure agentException(const globaldefs::ProcessingFailureException& refused) {
  const std::string reason = refused.errorReason.in();
  return Failure(ExitCode::kRefused, std::string("the agent refused: ") +
                                         exceptionName(refused.exceptionType) +
                                         (reason.empty() ? "" : ": " + reason));
}

std::string askForLess(const AgentAccess& access) {
  return "ask for less at once with --how-many (now " +
         std::to_string(iteratorBatch(access.howMany)) + ")";
}

Failure messageTooLarge(const AgentAccess& access) {
  return Failure(ExitCode::kCallFailed, "a message is over the size limit: " + askForLess(access) +
                                            ", or raise --max-message of topoctl (now " +
                                            std::to_string(access.maxMessageBytes) +
                                            ") and of the agent, or --max-request of the agent");
}

Failure replyBrokenOff(const AgentAccess& access) {
  return Failure(ExitCode::kCallFailed,
                 "an answer of " + describeAgent(access) +
                     " broke off: the agent ended, or the answer is over the agent's size limit; " +
                     askForLess(access) + ", or raise --max-message of the agent");
}

// A clause about an agent that cannot be reached. Failures to connect do not arrive here:
// callObject() explains them.
std::string whyUnreachable(const CORBA::SystemException& failure, const AgentAccess& access) {
  if (orb::isTimeout(failure)) {
    return "did not answer " + describeTimeout(access);
  }
  if (orb::isRejected(failure)) {
    return "answers, but does not serve the request now: it reloads its module, starts or stops";
  }
  if (orb::isConnectionClosed(failure)) {
    return "closed the connection before it answered, and may have executed the request";
  }
  return "cannot be reached: " + orb::describe(failure);
}

// The reason of a NO_PERMISSION, by its minor code.
std::string reasonOf(const CORBA::NO_PERMISSION& refused) {
  switch (refused.minor()) {
    case permission_minor::kNoRole:
      return "this client does not have the role of the operation (--access of the agent)";
    case permission_minor::kReadOnly:
      return "the agent is read-only (--read-only of the agent)";
    case permission_minor::kOtherEndpoint:
      return "the console and the session have another endpoint (--console-endpoint of the agent)";
    case permission_minor::kPushAddress:
      return "the agent does not push to the address of this consumer (--push-to of the agent)";
    default:
      return "no permission";
  }
}

Failure callFailure(const CORBA::SystemException& failure, const AgentAccess& access) {
  if (const auto* const refused = CORBA::NO_PERMISSION::_downcast(&failure)) {
    return Failure(ExitCode::kRefused, "the agent refused: " + reasonOf(*refused));
  }
  if (orb::isMessageTooLarge(failure)) {
    return messageTooLarge(access);
  }
  if (orb::isBrokenOff(failure)) {
    return replyBrokenOff(access);
  }
  if (orb::isUnreachable(failure)) {
    return Failure(ExitCode::kUnreachable,
                   describeAgent(access) + " " + whyUnreachable(failure, access));
  }
  return Failure(ExitCode::kCallFailed,
                 "a call to " + describeAgent(access) + " failed: " + orb::describe(failure));
}

}  // namespace

Failure currentFailure(const AgentAccess& access) {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const globaldefs::ProcessingFailureException& refused) {
    return agentException(refused);
  } catch (const CORBA::SystemException& failure) {
    return callFailure(failure, access);
  } catch (const CORBA::Exception& failure) {
    return Failure(ExitCode::kCallFailed, "a call to " + describeAgent(access) +
                                              " failed: " + std::string(failure._name()));
  } catch (const std::bad_alloc&) {
    return Failure(ExitCode::kLocal, "out of memory");
  } catch (const std::exception& failure) {
    return Failure(ExitCode::kLocal, failure.what());
  } catch (...) {
    return Failure(ExitCode::kLocal, "an unknown failure");
  }
}

}  // namespace topoctl
