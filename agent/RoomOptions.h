// Translates the options of the program to the options of the rooms. Thread-safety: any thread.

#ifndef AGENT_ROOMOPTIONS_H
#define AGENT_ROOMOPTIONS_H

#include <vector>

#include "agent/Options.h"
#include "agent/access/AccessControl.h"
#include "agent/northbound/IteratorRegistry.h"
#include "agent/northbound/ViewAdmission.h"
#include "agent/notifications/Notifier.h"
#include "agent/process/MemoryBudget.h"
#include "orb/orb.h"

namespace agent {

// Lowers the number of connections to the limit of open files, and logs a lowered number.
orb::Options orbOptions(const Options& options);

AccessSettings accessSettings(const Options& options);

// REQUIRES: the texts are ranges, as parseOptions() checks.
std::vector<AddressRange> pushRanges(const Options& options);

NotifierOptions notifierOptions(const Options& options);

// The memory that iterators and views may take is at most a quarter of the memory of the process.
IteratorLimits iteratorLimits(const Options& options, const MemoryUse& memory);
ViewLimits viewLimits(const Options& options, const MemoryUse& memory);

}  // namespace agent

#endif
