// The checks that need the host to be started, changed or reloaded.

#ifndef CONFORMANCE_CHECKS_OPERATORCHECKS_H
#define CONFORMANCE_CHECKS_OPERATORCHECKS_H

#include "conformance/Check.h"

namespace conformance {

// See Check::run. Thread-safety: none.

// LifeChecks.cpp
void checkBoundSymbols(Context& context);
void checkReloads(Context& context);
void checkReferenceAfterReload(Context& context);
void checkIteratorAfterReload(Context& context);
void checkNothingMapped(Context& context);
void checkEnd(Context& context);

// EventChecks.cpp
void checkCreation(Context& context);
void checkChange(Context& context);
void checkDeletion(Context& context);
void checkLayout(Context& context);
void checkEventsAfterReload(Context& context);
void checkUtf8(Context& context);

// AttributeChecks.cpp
void checkUserLabel(Context& context);
void checkAdditionalInfo(Context& context);

}  // namespace conformance

#endif
