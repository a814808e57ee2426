// The checks that any client can make: views, iterators, names, attributes.

#ifndef CONFORMANCE_CHECKS_CLIENTCHECKS_H
#define CONFORMANCE_CHECKS_CLIENTCHECKS_H

#include "conformance/Check.h"

namespace conformance {

// See Check::run. Thread-safety: none.

// ViewChecks.cpp
void checkInterfaces(Context& context);
void checkWellFormedRecords(Context& context);
void checkUniqueNames(Context& context);
void checkBatches(Context& context);
void checkProtectionView(Context& context);
void checkViewBelow(Context& context);

// IteratorChecks.cpp
void checkIteratorLength(Context& context);
void checkIteratorAfterLastBatch(Context& context);
void checkIteratorAfterDestroy(Context& context);
void checkIteratorKeys(Context& context);

// NameChecks.cpp
void checkKnownNames(Context& context);
void checkUnknownNames(Context& context);
void checkMalformedNames(Context& context);
void checkSettersOfBadNames(Context& context);
void checkCapabilities(Context& context);

}  // namespace conformance

#endif
