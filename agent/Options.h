// The command line of topo-agentd.

#ifndef AGENT_OPTIONS_H
#define AGENT_OPTIONS_H

#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

#include "agent/host/EventAccess.h"
#include "orb/orb.h"

namespace agent {

struct Options {
  std::filesystem::path network;  // empty: none
  std::string store = "./topo-agentd.db";
  bool createStore = false;  // an empty store may be made
  bool checkStore = true;    // for damage, before it is used
  orb::Endpoint endpoint{"127.0.0.1", 2810};
  std::filesystem::path iorFile;  // empty: none
  std::string emsName;            // empty: the network's own
  bool testSwitch = false;
  bool console = true;
  EventAccess eventAccess = EventAccess::kAllowed;
  std::string eventChannel;                        // empty: none
  std::size_t queueLimit = 10000;                  // notifications that wait for one receiver
  std::size_t queueBytes = std::size_t{64} << 20;  // memory of the notifications that wait for one
  std::size_t maxSubscribers = 1000;
  std::size_t maxSubscribersPerPeer = 100;
  std::filesystem::path module;
  std::string naming;  // empty: none
  int logLevel = 1;
  std::size_t maxMessageBytes = orb::kDefaultMaxMessageBytes;
  std::size_t maxRequestBytes = orb::kDefaultMaxRequestBytes;
  std::size_t maxConnections = orb::kDefaultMaxConnections;
  double iteratorTimeoutSeconds = 300;
  std::size_t maxIterators = 1000;
  std::size_t iteratorMemory = std::size_t{1} << 30;  // bytes that all iterators may hold
  std::size_t maxViews = 4;                           // that are computed at the same time
  std::size_t viewMemory = std::size_t{256} << 20;    // bytes that views in progress may take
  std::size_t memory = 0;  // bytes that the process may take; 0: what the system allows
};

// The command line or the configuration file cannot be used. One line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Parses a command line; no value means that what was asked for (help, version) has been printed.
// Throws UsageError.
std::optional<Options> parseOptions(int argc, const char* const argv[]);

}  // namespace agent

#endif
