// What topoctl can do: one row a command.

#ifndef CLIENT_COMMANDS_H
#define CLIENT_COMMANDS_H

#include <functional>
#include <string>
#include <vector>

#include "client/Arguments.h"
#include "client/Session.h"

namespace topoctl {

// Makes all calls of a command. Exceptions of the calls pass.
using RunFunction = std::function<PrintFunction(const Session&)>;

struct Command {
  const char* name;
  const char* help;
  Takes takes;
  const char* tableAlone;  // why there is no other format; null when there is every one
  RunFunction run;
};

const std::vector<Command>& commands();

// REQUIRES: there is a command of that name.
const Command& commandNamed(const std::string& name);

}  // namespace topoctl

#endif
