// The options of the rooms, as the options of the program give them. Thread-safety: any thread.

#ifndef AGENT_ROOMOPTIONS_H
#define AGENT_ROOMOPTIONS_H

#include "agent/Options.h"
#include "agent/northbound/IteratorRegistry.h"
#include "agent/northbound/ViewAdmission.h"
#include "agent/notifications/Notifier.h"
#include "agent/process/MemoryBudget.h"
#include "orb/orb.h"

namespace agent {

// Lowers the number of connections to what the limit of open files allows, and logs that.
orb::Options orbOptions(const Options& options);

NotifierOptions notifierOptions(const Options& options);

// The memory that iterators and views may take is at most a quarter of the memory of the process.
IteratorLimits iteratorLimits(const Options& options, const MemoryUse& memory);
ViewLimits viewLimits(const Options& options, const MemoryUse& memory);

}  // namespace agent

#endif
