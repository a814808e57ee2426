// The terminal that shows the output.

#ifndef CLIENT_OUTPUT_TERMINAL_H
#define CLIENT_OUTPUT_TERMINAL_H

#include <cstddef>

namespace topoctl {

// Returns the columns of the terminal at the descriptor, or `columns` as a number when it is one.
// Returns 0 for a descriptor that is no terminal. `columns` is the value of COLUMNS in the
// environment; null: not set. Thread-safety: any thread.
std::size_t terminalWidth(int descriptor, const char* columns);

}  // namespace topoctl

#endif
