#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>

#include "client/App.h"
#include "client/output/OutputStream.h"
#include "client/output/Terminal.h"

int main(int argc, char* argv[]) {
  topoctl::occupyStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is reported as a failed write
  topoctl::OutputStream out(STDOUT_FILENO);
  const char* const agent = std::getenv("TOPO_AGENT");
  return topoctl::run({argv + 1, argv + argc}, agent == nullptr ? "" : agent,
                      {out, std::cerr, isatty(STDERR_FILENO) == 1,
                       topoctl::terminalWidth(STDOUT_FILENO, std::getenv("COLUMNS"))});
}
