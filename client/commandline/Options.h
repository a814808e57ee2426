// The command line.

#ifndef CLIENT_COMMANDLINE_OPTIONS_H
#define CLIENT_COMMANDLINE_OPTIONS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "client/commandline/Arguments.h"
#include "orb/orb.h"

namespace topoctl {

constexpr const char* kDefaultAgent = "corbaloc::127.0.0.1:2810/TopoManagement";
constexpr std::uint32_t kDefaultHowMany = 1000;
constexpr std::chrono::milliseconds kDefaultTimeout{30000};

// What an iterator is asked for at a time. It answers a batch of 0 with nothing for ever, so that 0
// on the command line is for a view's first call alone.
constexpr std::uint32_t iteratorBatch(std::uint32_t howMany) {
  return howMany == 0 ? kDefaultHowMany : howMany;
}

inline orb::Options orbDefaults() {
  orb::Options options;
  options.callTimeout = kDefaultTimeout;
  return options;
}

enum class Format { kTable, kJson, kCsv };

struct Options {
  std::string agent = kDefaultAgent;   // IOR, corbaloc or corbaname; counts without an iorFile
  std::optional<std::string> iorFile;  // holds the reference instead
  std::uint32_t howMany = kDefaultHowMany;
  Format format = Format::kTable;
  orb::Options orb = orbDefaults();
  std::string command;  // one of commands(), unless there is a notice
  Arguments arguments;  // what that command was given
  std::string notice;   // help or version: to be printed instead of running a command
};

// `arguments` are those after the program's name; `agentOfEnvironment` is the value of TOPO_AGENT,
// empty when there is none. Throws Failure (kUsage).
Options parseOptions(const std::vector<std::string>& arguments,
                     const std::string& agentOfEnvironment);

}  // namespace topoctl

#endif
