// What topoctl can do: one row a command.

#ifndef CLIENT_COMMANDS_COMMANDS_H
#define CLIENT_COMMANDS_COMMANDS_H

#include <functional>
#include <string>
#include <vector>

#include "client/commandline/Arguments.h"
#include "client/commands/Session.h"

namespace topoctl {

// What a command starts from. Everything is borrowed for the run.
struct Call {
  CORBA::ORB_ptr orb;
  const Options& options;
  const ProgressFunction& progress;
};

// Makes all calls of a command. Exceptions of the calls pass.
using RunFunction = std::function<PrintFunction(const Call&)>;

enum class Formats { kAll, kTableAndJson, kTable };

struct Command {
  const char* name;  // of a group's command with the group before it: "node create"
  const char* help;
  Takes takes;
  Formats formats;
  const char* whyNotOthers;  // null when there is every format
  RunFunction run;           // null for watch, which prints while it runs
};

const std::vector<Command>& commands();

bool isCommand(const std::string& name);

// REQUIRES: isCommand(name).
const Command& commandNamed(const std::string& name);

// The first words of commands that have two.
struct Group {
  const char* name;
  const char* help;
};

const std::vector<Group>& commandGroups();

}  // namespace topoctl

#endif
