// The functions that run the commands: one row a command.
//
// The rows are in ManagerCommands.cpp, ConsoleCommands.cpp and WatchCommand.cpp, under the names of
// client/commandline/CommandSyntax.h. Thread-safety of all functions: any thread.

#ifndef CLIENT_COMMANDS_COMMANDS_H
#define CLIENT_COMMANDS_COMMANDS_H

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "client/commands/CommandContext.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

// Makes all calls of a command. Exceptions of the calls pass.
using CallFunction = std::function<PrintFunction(const CommandContext&)>;

// Prints while it runs, and starts a separate ORB for its calls. Throws what CallFunction throws.
using StreamFunction = void (*)(const Options&, std::ostream& out);

// Exactly one of the functions is set.
struct Command {
  const char* name;
  CallFunction call;
  StreamFunction stream = nullptr;
};

const std::vector<Command>& commands();

// REQUIRES: findSyntax(name) != nullptr.
const Command& commandNamed(const std::string& name);

// Makes the calls of a command to the console.
using ConsoleFunction = PrintFunction (*)(TopoAgent::Console_I_ptr, const Options&);

// A command that connects to the console and calls `function`.
CallFunction atConsole(ConsoleFunction function);

// ---- the rows

std::vector<Command> managerCommands();
std::vector<Command> consoleCommands();
std::vector<Command> recordCommands();
std::vector<Command> watchCommands();

}  // namespace topoctl

#endif
