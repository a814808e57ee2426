// The command that prints the completion script of a shell.

#ifndef CLIENT_COMMANDS_COMPLETIONSCRIPT_H
#define CLIENT_COMMANDS_COMPLETIONSCRIPT_H

#include <iosfwd>

#include "client/commandline/Options.h"

namespace topoctl {

// The hidden command that the scripts call.
inline constexpr const char* kCompleteCommand = "__complete";

// Errors: those of the stream. Thread-safety: any thread.
void printCompletionScript(const Options& options, std::ostream& out);

}  // namespace topoctl

#endif
