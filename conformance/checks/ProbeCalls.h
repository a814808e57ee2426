// Calls to the probe module, and the checks that need the probe and this program.

#ifndef CONFORMANCE_CHECKS_PROBECALLS_H
#define CONFORMANCE_CHECKS_PROBECALLS_H

#include <string>
#include <utility>
#include <vector>

#include "conformance/Check.h"

namespace conformance {

using Pairs = std::vector<std::pair<std::string, std::string>>;

// Runs a command of the probe (ProbeProtocol.h). The exceptions of the call pass. Thread-safety:
// none.
Pairs callProbe(Context& context, const std::string& command);

// Checks a rule in the probe: throws Broken or Skipped with the probe's reason.
void checkInProbe(Context& context, const std::string& rule);

// Whether the host refuses events to the module: restarts the host with the probe. False when the
// probe cannot be asked.
bool refusesEvents(Context& context);

// See Check::run.
void checkEventContents(Context& context);
void checkEventConcurrency(Context& context);
void checkUnsubscription(Context& context);
void checkNoEventAfterUnsubscription(Context& context);
void checkIteratorLife(Context& context);
void checkFailedInit(Context& context);
void checkUnmappedAfterFailedInit(Context& context);

}  // namespace conformance

#endif
