// Writing to a descriptor whose reader may have stopped reading.

#ifndef AGENT_PROCESS_WRITEWITHIN_H
#define AGENT_PROCESS_WRITEWITHIN_H

#include <chrono>
#include <string_view>

namespace agent {

// Waits without a limit.
constexpr std::chrono::milliseconds kNoLimit{-1};

// Writes a text to a file, pipe, socket or terminal, blocking or not, and returns whether all of it
// was written. Gives up after waiting for the reader for so long without writing a byte, and at the
// first error; part of the text may be written then. A text of at most PIPE_BUF bytes is never held
// up by a pipe that has become full. REQUIRES: SIGPIPE is ignored. Thread-safety: any thread.
bool writeWithin(int descriptor, std::string_view text, std::chrono::milliseconds patience);

}  // namespace agent

#endif
