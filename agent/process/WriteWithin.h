// Writing to a descriptor whose reader may have stopped reading.

#ifndef AGENT_PROCESS_WRITEWITHIN_H
#define AGENT_PROCESS_WRITEWITHIN_H

#include <chrono>
#include <string_view>

namespace agent {

// No limit for the wait.
constexpr std::chrono::milliseconds kNoLimit{-1};

// Writes a text to a file, pipe, socket or terminal, blocking or not. Returns whether the whole
// text was written. Fails at the first error, and when the descriptor is not writable for
// `patience`; part of the text may be written then. A text of at most PIPE_BUF bytes never blocks
// on a full pipe. REQUIRES: SIGPIPE is ignored. Thread-safety: any thread.
bool writeWithin(int descriptor, std::string_view text, std::chrono::milliseconds patience);

}  // namespace agent

#endif
