#include "client/base/Failure.h"

#include <array>
#include <cstddef>
#include <new>
#include <ostream>

#include "client/agent/Connection.h"
#include "client/base/Utf8.h"
#include "client/commandline/Options.h"
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

// The ORB delivers no other value than those of the enumeration.
const char* nameOf(globaldefs::ExceptionType_T type) {
  return kExceptionTypes[static_cast<std::size_t>(type)];
}

Failure refusal(const globaldefs::ProcessingFailureException& refused) {
  const std::string reason = refused.errorReason.in();
  return Failure(ExitCode::kRefused, std::string("the agent refused: ") +
                                         nameOf(refused.exceptionType) +
                                         (reason.empty() ? "" : ": " + reason));
}

std::string askForLess(const Options& options) {
  return "ask for less at once with --how-many (now " +
         std::to_string(iteratorBatch(options.howMany)) + ")";
}

Failure tooLarge(const Options& options) {
  return Failure(ExitCode::kCallFailed, "a message is over the size limit: " + askForLess(options) +
                                            ", or raise --max-message of topoctl (now " +
                                            std::to_string(options.orb.maxMessageBytes) +
                                            ") and of the agent, or --max-request of the agent");
}

Failure brokenOff(const Options& options) {
  return Failure(ExitCode::kCallFailed,
                 "an answer of " + describeAgent(options) +
                     " broke off: the agent ended, or the answer is over the agent's size limit; " +
                     askForLess(options) + ", or raise --max-message of the agent");
}

Failure callFailure(const CORBA::SystemException& failure, const Options& options) {
  if (orb::isMessageTooLarge(failure)) {
    return tooLarge(options);
  }
  if (orb::isBrokenOff(failure)) {
    return brokenOff(options);
  }
  const std::string agent = describeAgent(options);
  if (orb::isUnreachable(failure)) {
    return Failure(ExitCode::kUnreachable, agent + " is not reachable: " + orb::describe(failure));
  }
  return Failure(ExitCode::kCallFailed,
                 "a call to " + agent + " failed: " + orb::describe(failure));
}

}  // namespace

Failure currentFailure(const Options& options) {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const globaldefs::ProcessingFailureException& refused) {
    return refusal(refused);
  } catch (const CORBA::SystemException& failure) {
    return callFailure(failure, options);
  } catch (const CORBA::Exception& failure) {
    return Failure(ExitCode::kCallFailed, "a call to " + describeAgent(options) +
                                              " failed: " + std::string(failure._name()));
  } catch (const std::bad_alloc&) {
    return Failure(ExitCode::kLocal, "out of memory");
  } catch (const std::exception& failure) {
    return Failure(ExitCode::kLocal, failure.what());
  } catch (...) {
    return Failure(ExitCode::kLocal, "an unknown failure");
  }
}

int report(const Failure& failure, std::ostream& err) {
  err << "topoctl: " + harmless(failure.what()) + "\n" << std::flush;
  return static_cast<int>(failure.code());
}

}  // namespace topoctl
