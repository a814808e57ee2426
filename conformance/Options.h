// The command line of topo-conformance.

#ifndef CONFORMANCE_OPTIONS_H
#define CONFORMANCE_OPTIONS_H

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace conformance {

// The command line is wrong; what() is for the user. As std::runtime_error.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Options {
  std::string module;                // path of libzu_corba_topo.so
  std::string probe;                 // path of libtopo_conformance_probe.so
  std::vector<std::string> command;  // of the host, empty with an agent
  bool usesConsole = false;          // the host is operated through its console
  std::string agent;                 // reference of a running host's manager, or ""
  std::chrono::seconds timeout{20};  // of each step of a check
  std::vector<std::string> rules;    // the rules to check, empty for all rules
  std::string notice;                // help or version: print it and end
};

// Where the module and the probe are when the command line does not say.
struct DefaultPaths {
  std::string module;
  std::string probe;
};

// Throws UsageError.
Options parseOptions(int argc, const char* const argv[], const DefaultPaths& defaults);

}  // namespace conformance

#endif
