// How a kind of arguments is declared and read; Arguments.cpp has the table of kinds.

#ifndef CLIENT_COMMANDLINE_ARGUMENTKIND_H
#define CLIENT_COMMANDLINE_ARGUMENTKIND_H

#include <string>
#include <vector>

#include "client/commandline/Arguments.h"

namespace topoctl {

using Words = std::vector<std::string>;

struct Place {
  const char* name;  // without dashes
  const char* help;
};

struct ArgumentKind {
  std::vector<Place> places;
  void (*addOptions)(CLI::App&);  // beside the places; null when there are none
  // `words` are what was typed in the places; never too many. Throws Failure (kUsage).
  void (*read)(const CLI::App&, const Words& words, Arguments&);
};

// Throws Failure (kUsage).
[[noreturn]] void usageError(const std::string& text);

// Split at the first '='. Throws Failure (kUsage), with `where` before the text and `form` behind.
TypedPair splitPair(const std::string& where, const std::string& text, const char* form);

// ---- ObjectArguments.cpp
extern const ArgumentKind kSubnetworkArguments;
extern const ArgumentKind kAttributeArguments;

// ---- ConsoleArguments.cpp
extern const ArgumentKind kNewNodeArguments;
extern const ArgumentKind kNodeArguments;
extern const ArgumentKind kNewNameArguments;
extern const ArgumentKind kFileArguments;
extern const ArgumentKind kNewFileArguments;
extern const ArgumentKind kSwitchArguments;

// ---- WatchArguments.cpp
extern const ArgumentKind kWatchArguments;

}  // namespace topoctl

#endif
