// What can be typed next on a command line, from the parser's tables.

#ifndef CLIENT_COMMANDLINE_COMPLETION_H
#define CLIENT_COMMANDLINE_COMPLETION_H

#include <optional>
#include <string>
#include <vector>

#include "client/base/AgentAccess.h"
#include "client/commandline/CommandSyntax.h"

namespace topoctl {

struct Candidate {
  std::string text;  // the whole word
  std::string help;  // can be empty
};

struct Completion {
  std::string word;                   // the begin of the word, as typed
  std::vector<Candidate> candidates;  // texts that begin with `word`
  Values values = Values::kAny;       // what can be typed beside the candidates
  std::string prefix;                 // of such a value in the word, such as "--parent="
  bool dashIsAllowed = false;         // whether a value can begin with '-'
  std::optional<AgentAccess> access;  // of the agent whose objects are values; empty: not usable
};

// `words` are those after the program's name; the last one is completed. Unknown words are ignored.
// Thread-safety: any thread.
Completion completionOf(const Words& words, const std::string& agentOfEnvironment);

// The words that the kind of values consists of; empty for values that are not a list of words.
std::vector<std::string> choicesOf(Values values);

}  // namespace topoctl

#endif
