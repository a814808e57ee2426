// A whole command line.

#ifndef CLIENT_COMMANDLINE_OPTIONS_H
#define CLIENT_COMMANDLINE_OPTIONS_H

#include <functional>
#include <string>
#include <vector>

#include "client/base/AgentAccess.h"
#include "client/commandline/Arguments.h"
#include "client/output/Format.h"

namespace CLI {
class App;
}

namespace topoctl {

struct Options {
  AgentAccess access;
  Format format = Format::kTable;
  TableStyle table;
  bool wide = false;    // the width of the terminal has no effect
  std::string command;  // the name of a row of commandSyntax(); empty with a notice
  Arguments arguments;  // of that command
  std::string notice;   // the text of --help or --version, printed instead of running a command

  OutputStyle style() const { return {format, table}; }
};

// `arguments` are those after the program's name; `agentOfEnvironment` is the value of TOPO_AGENT,
// empty when the variable is not set. Throws Failure (kUsage). Thread-safety: any thread.
Options parseOptions(const std::vector<std::string>& arguments,
                     const std::string& agentOfEnvironment);

// Calls `use` with the parser of command lines, which has parsed nothing. Thread-safety: any
// thread.
void withParser(const std::function<void(const CLI::App& parser)>& use);

}  // namespace topoctl

#endif
