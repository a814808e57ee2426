// The command that prints notifications until it is interrupted.

#include "client/commands/Commands.h"
#include "client/watch/Watch.h"

namespace topoctl {
namespace {

void watchAgent(const Options& options, std::ostream& out) {
  const Arguments& arguments = options.arguments;
  watch(options.access,
        {{arguments.listen.host, arguments.listen.port}, arguments.count, options.format}, out);
}

}  // namespace

std::vector<Command> watchCommands() {
  return {{"watch", nullptr, watchAgent}};
}

}  // namespace topoctl
