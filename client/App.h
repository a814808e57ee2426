// A whole run of topoctl, apart from what belongs to the process.

#ifndef CLIENT_APP_H
#define CLIENT_APP_H

#include <iosfwd>
#include <string>
#include <vector>

#include "client/commandline/Options.h"
#include "orb/orb.h"

namespace topoctl {

struct Streams {
  std::ostream& out;
  std::ostream& err;
  bool errIsTerminal;
};

// Parses, starts an ORB, runs the command; the exit code. Never throws: every failure is one line
// on err. Arguments as for parseOptions.
int run(const std::vector<std::string>& arguments, const std::string& agentOfEnvironment,
        const Streams& streams);

// The command on an ORB that is running; any but watch. Exceptions pass, and nothing is on `out`
// then unless it is `out` that fails.
void execute(const Options& options, CORBA::ORB_ptr orb, const Streams& streams);

}  // namespace topoctl

#endif
