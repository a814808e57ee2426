// The hidden command that the completion scripts of the shells call.

#ifndef CLIENT_COMPLETE_H
#define CLIENT_COMPLETE_H

#include <iosfwd>
#include <string>
#include <vector>

namespace topoctl {

// Whether the arguments of the program are those of a completion script.
bool isCompletion(const std::vector<std::string>& arguments);

// Writes what can be typed next, as client/commands/CompletionScript.cpp describes. The arguments
// are "__complete bash LINE" or "__complete zsh WORD...". An agent that does not answer within a
// second has no ids, silently. Never throws. Thread-safety: one call at a time, because a process
// has one ORB.
void complete(const std::vector<std::string>& arguments, const std::string& agentOfEnvironment,
              std::ostream& out);

}  // namespace topoctl

#endif
