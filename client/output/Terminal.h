// The terminal that shows the output.

#ifndef CLIENT_OUTPUT_TERMINAL_H
#define CLIENT_OUTPUT_TERMINAL_H

#include <cstddef>

namespace topoctl {

// Returns the number of columns of the terminal at the descriptor. A number in `columns` overrides
// the number of the terminal. Returns 0 for a descriptor that is no terminal. `columns` is the
// value of COLUMNS in the environment; null: not set. Thread-safety: any thread.
std::size_t terminalWidth(int descriptor, const char* columns);

}  // namespace topoctl

#endif
