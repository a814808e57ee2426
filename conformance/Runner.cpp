#include "conformance/Runner.h"

namespace conformance {
namespace {

// A dying process may still close its connections before it ends.
constexpr std::chrono::milliseconds kDeath{1000};

void fail(Result& result, const std::string& reason) {
  result.outcome = Outcome::kFail;
  result.reason = reason;
}

}  // namespace

bool Runner::conclude(Result& result, const std::function<void(Context&)>& check, Plugin plugin) {
  bool hasFailedCall = false;
  bool isStuck = false;
  try {
    start(plugin);
    check(context_);
  } catch (const WrongOperator&) {
    throw;
  } catch (const Skipped& reason) {
    result.outcome = Outcome::kSkip;
    result.reason = reason.what();
  } catch (const StartFailed& failure) {
    fail(result, failure.what());
    context_.host.kill();  // the reason has the end of the process
  } catch (const globaldefs::ProcessingFailureException& refusal) {
    fail(result, std::string("the host refuses the call: ") + refusal.errorReason.in());
  } catch (const CORBA::SystemException& failure) {
    fail(result, orb::isTimeout(failure) ? "the host does not answer within the timeout"
                                         : "the call fails with " + orb::describe(failure));
    hasFailedCall = true;
    isStuck = orb::isTimeout(failure);
  } catch (const NoAnswer& failure) {
    context_.host.requireNoConsole();
    fail(result, failure.what());
    hasFailedCall = true;
    isStuck = true;
  } catch (const std::exception& failure) {
    fail(result, failure.what());
  }
  if (isStuck && !context_.host.endsWithin(kDeath)) {
    context_.host.kill();
  }
  return hasFailedCall;
}

// Later checks need the same start: they are skipped after a failure.
void Runner::start(Plugin plugin) {
  bool& startFailed = startFailed_[plugin == Plugin::kProbe ? 1 : 0];
  if (startFailed) {
    throw Skipped("the host does not start");
  }
  startFailed = true;
  context_.host.require(plugin);
  startFailed = false;
}

void Runner::explainEnd(Result& result, bool hasFailedCall) {
  const bool failed = result.outcome == Outcome::kFail;
  if (context_.host.endsWithin(hasFailedCall ? kDeath : std::chrono::milliseconds(0))) {
    fail(result, "the process of the host has ended during the check: " +
                     context_.host.describeEnd() + (failed ? "; " + result.reason : std::string()));
    context_.host.kill();
  }
}

Result Runner::run(const std::string& rule, const std::string& text, Plugin plugin,
                   const std::function<void(Context&)>& check) {
  Result result = {Outcome::kPass, rule, text, ""};
  const bool ran = context_.host.pid() != 0;
  const bool hasFailedCall = conclude(result, check, plugin);
  if (ran || context_.host.pid() != 0) {
    explainEnd(result, hasFailedCall);
  }
  report_.add(result);
  return result;
}

}  // namespace conformance
