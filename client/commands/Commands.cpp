#include "client/commands/Commands.h"

#include <algorithm>

namespace topoctl {

const std::vector<Command>& commands() {
  static const std::vector<Command> table = [] {
    std::vector<Command> all;
    for (const std::vector<Command>& part :
         {managerCommands(), consoleCommands(), recordCommands(), watchCommands()}) {
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }();
  return table;
}

const Command& commandNamed(const std::string& name) {
  return *std::find_if(commands().begin(), commands().end(),
                       [&name](const Command& command) { return command.name == name; });
}

}  // namespace topoctl
