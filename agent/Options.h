// The command line of topo-agentd.

#ifndef AGENT_OPTIONS_H
#define AGENT_OPTIONS_H

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "agent/host/EventAccess.h"
#include "orb/orb.h"

namespace agent {

// The options with their defaults. A plain value.
struct Options {
  bool checkOnly = false;         // check the options and end
  std::filesystem::path network;  // empty: none
  std::string store = "./topo-agentd.db";
  bool createStore = false;  // make an empty store if the store does not exist
  bool checkStore = true;    // look for damage in the store at the start
  std::vector<orb::Endpoint> endpoints{{"127.0.0.1", 2810}};  // at least one
  std::optional<orb::Endpoint> publish;                       // as orb::Options::publish
  orb::TlsOptions tls;
  std::filesystem::path iorFile;  // empty: none
  std::string emsName;            // empty: the name in the network
  // Index of the only endpoint that serves console and session; empty: every endpoint.
  std::optional<std::size_t> consoleEndpoint;
  std::filesystem::path access;     // empty: the default rules
  std::string audit;                // a file, "journal", or empty: none
  std::vector<std::string> pushTo;  // ranges of consumers, besides the client's own address
  bool readOnly = false;            // refuse every change
  bool testSwitch = false;
  bool console = true;
  EventAccess eventAccess = EventAccess::kAllowed;
  std::string eventChannel;                        // empty: none
  std::size_t queueLimit = 10000;                  // notifications in the queue of a receiver
  std::size_t queueBytes = std::size_t{64} << 20;  // memory of the queue of a receiver
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
  std::size_t iteratorMemory = std::size_t{1} << 30;  // bytes of all iterators
  std::size_t maxViews = 4;                           // computed at the same time
  std::size_t viewMemory = std::size_t{256} << 20;    // bytes of all views in progress
  std::size_t memory = 0;  // bytes of the process; 0: the limit of the system

  std::optional<orb::Endpoint> metrics;  // of metrics and health; empty: none

  // The options that the configuration file sets, by their names; "FILE:LINE: " of each.
  std::map<std::string, std::string> configLines;
};

// The command line or the configuration file cannot be used. what() is one line. A plain value.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Parses a command line. Empty after --help and --version, which print their text. Throws
// UsageError. Thread-safety: one thread.
std::optional<Options> parseOptions(int argc, const char* const argv[]);

}  // namespace agent

#endif
