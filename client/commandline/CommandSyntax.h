// The names and the arguments of the commands: a table with one row a command.
//
// ManagerSyntax.cpp, WatchSyntax.cpp and ConsoleSyntax.cpp have the rows and the functions that
// read the arguments. client/commands has the functions that run the commands, under the same
// names. Thread-safety of all functions: any thread.

#ifndef CLIENT_COMMANDLINE_COMMANDSYNTAX_H
#define CLIENT_COMMANDLINE_COMMANDSYNTAX_H

#include <string>
#include <vector>

#include "client/commandline/Arguments.h"

namespace CLI {
class App;
}

namespace topoctl {

using Words = std::vector<std::string>;

// What can be typed in a place or as the value of an option, for the completion. Those from kNode
// on are objects of the agent.
enum class Values {
  kAny,
  kAttribute,
  kFile,
  kFormat,
  kKind,
  kShell,
  kSwitch,
  kNode,
  kSubnetwork,
  kElement,
  kClockPosition,
  kClockLink,
  kObject,  // of any class, as CLASS=VALUE
};

constexpr bool isObject(Values values) {
  return values >= Values::kNode;
}

struct Place {
  const char* name;  // as the help shows it, without dashes
  const char* help;
  Values values = Values::kAny;
};

struct ArgumentSyntax {
  std::vector<Place> places;                // positional arguments
  void (*addOptions)(CLI::App&) = nullptr;  // adds the command's own options; null: no options
  // Reads the command's own options and `words`, which were typed in the places: at most one word a
  // place. Throws Failure (kUsage). Null: no arguments.
  void (*read)(const CLI::App&, const Words& words, Arguments&) = nullptr;
};

enum class Formats { kAll, kTableAndJson, kTable };

struct CommandSyntax {
  const char* name;  // of a command in a group "GROUP COMMAND", such as "node create"
  const char* help;
  ArgumentSyntax arguments;
  Formats formats = Formats::kAll;
  const char* whyNotOthers = nullptr;  // the reason in the usage error; null with kAll
  const char* usage = nullptr;  // the arguments in a usage error; null: derived from the places
};

// In the order in which the help lists the commands.
const std::vector<CommandSyntax>& commandSyntax();

// "usage: topoctl NAME ARGUMENT...", with the options of the command only.
std::string usageOf(const CommandSyntax& command);

// Null when no command has this name.
const CommandSyntax* findSyntax(const std::string& name);

// The first word of the commands that have two words, such as "node".
struct Group {
  const char* name;
  const char* help;
};

const std::vector<Group>& commandGroups();

// Declares the arguments at the subcommand.
void addArguments(CLI::App& command, const ArgumentSyntax& syntax);

// Returns the arguments of a parsed subcommand. Throws Failure (kUsage).
Arguments readArguments(const CLI::App& command, const ArgumentSyntax& syntax);

// ---- for the files with the rows

[[noreturn]] void usageError(const std::string& text);  // throws Failure (kUsage)

// Splits `text` at its first '='. Without a '=' throws Failure (kUsage), whose text begins with
// `where` and ends with `form`, such as "NAME=VALUE".
TypedPair splitPair(const std::string& where, const std::string& text, const char* form);

// The agent's id of a topology node: TopoSubnetwork=x is x, ManagedElement=5 is NE=5, and other
// texts are ids.
std::string nodeId(const std::string& typed);

// The number of ManagedElement=5 or NE=5 as a text; other texts unchanged.
std::string elementNumber(const std::string& typed);

// The agent's id of a clock link: ClockTopoLinkId=e3 is e3, and other texts are ids.
std::string clockLinkId(const std::string& typed);

// The pair of a name that a client sees: NE=5 is ManagedElement=5.
TypedPair objectPair(const TypedPair& typed);

// The attributes that `set` sets.
std::vector<std::string> attributeNames();

std::vector<CommandSyntax> managerSyntax();  // views, attributes, capabilities
std::vector<CommandSyntax> watchSyntax();
std::vector<CommandSyntax> consoleSyntax();
std::vector<CommandSyntax> recordSyntax();

}  // namespace topoctl

#endif
