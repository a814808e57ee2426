// A whole run of topoctl except the setup of the process. Thread-safety: one run at a time, because
// a process has one ORB.

#ifndef CLIENT_APP_H
#define CLIENT_APP_H

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "client/agent/Reload.h"
#include "client/commandline/Options.h"
#include "orb/orb.h"

namespace topoctl {

struct Streams {
  std::ostream& out;
  std::ostream& err;
  bool errIsTerminal;
  std::size_t outColumns = 0;  // of the terminal at `out`; 0: no terminal
};

// Parses the arguments as parseOptions() does, starts an ORB, runs the command and returns the exit
// code. Never throws: writes a failure as one line to `err`.
int run(const std::vector<std::string>& arguments, const std::string& agentOfEnvironment,
        const Streams& streams);

// Runs a command other than watch on a running ORB. Exceptions pass; `out` is empty then, unless
// `out` itself failed. REQUIRES: the command of the options has a CallFunction.
void execute(const Options& options, CORBA::ORB_ptr orb, const Streams& streams,
             const RetryPolicy& retry);

}  // namespace topoctl

#endif
