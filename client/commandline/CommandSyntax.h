// The commands and their arguments as the command line spells them: one row a command.
//
// The rows are in ManagerSyntax.cpp, WatchSyntax.cpp and ConsoleSyntax.cpp, each with the functions
// that read its arguments. The functions that run the commands are in client/commands, under the
// same names. Thread-safety of all functions: any thread.

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

struct Place {
  const char* name;  // as the help shows it, without dashes
  const char* help;
};

struct ArgumentSyntax {
  std::vector<Place> places;                // positional arguments
  void (*addOptions)(CLI::App&) = nullptr;  // adds the command's own options; null: there are none
  // Reads `words`, which were typed in the places (never more than there are places), and the
  // command's own options. Throws Failure (kUsage). Null: there are no arguments.
  void (*read)(const CLI::App&, const Words& words, Arguments&) = nullptr;
};

enum class Formats { kAll, kTableAndJson, kTable };

struct CommandSyntax {
  const char* name;  // of a command in a group "GROUP COMMAND", such as "node create"
  const char* help;
  ArgumentSyntax arguments;
  Formats formats = Formats::kAll;
  const char* whyNotOthers = nullptr;  // the reason in the usage error; null with kAll
};

// In the order in which the help lists the commands.
const std::vector<CommandSyntax>& commandSyntax();

// Null when no command has this name.
const CommandSyntax* findSyntax(const std::string& name);

// The first words of commands that have two.
struct Group {
  const char* name;
  const char* help;
};

const std::vector<Group>& commandGroups();

// Makes the subcommand understand these arguments.
void addArguments(CLI::App& command, const ArgumentSyntax& syntax);

// The arguments of a subcommand that has been parsed. Throws Failure (kUsage).
Arguments readArguments(const CLI::App& command, const ArgumentSyntax& syntax);

// ---- for the files with the rows

[[noreturn]] void usageError(const std::string& text);  // throws Failure (kUsage)

// Splits `text` at its first '='. Without a '=' throws Failure (kUsage), whose text begins with
// `where` and ends with `form`, such as "NAME=VALUE".
TypedPair splitPair(const std::string& where, const std::string& text, const char* form);

std::vector<CommandSyntax> managerSyntax();  // views, attributes, capabilities
std::vector<CommandSyntax> watchSyntax();
std::vector<CommandSyntax> consoleSyntax();

}  // namespace topoctl

#endif
