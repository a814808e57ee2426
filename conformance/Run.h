// A run of topo-conformance from the options to the exit status.

#ifndef CONFORMANCE_RUN_H
#define CONFORMANCE_RUN_H

#include <iosfwd>

#include "conformance/Options.h"

namespace conformance {

// Runs all checks. Prints the results to `out`, and the reason of a run that is not possible to
// `err`. Returns the exit status (Report.h). One run at a time in a process.
int run(const Options& options, std::ostream& out, std::ostream& err);

}  // namespace conformance

#endif
