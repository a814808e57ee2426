// The options of the command line for the agent to call and the limits of the calls.

#ifndef CLIENT_BASE_AGENTACCESS_H
#define CLIENT_BASE_AGENTACCESS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace topoctl {

constexpr const char* kDefaultAgent = "corbaloc::127.0.0.1:2810/TopoManagement";
constexpr std::uint32_t kDefaultHowMany = 1000;
constexpr std::chrono::milliseconds kDefaultTimeout{30000};
constexpr std::size_t kDefaultMaxMessage = std::size_t{256} * 1024 * 1024;  // bytes
constexpr std::uint32_t kMinMaxMessage = 8192;                              // bytes

// PEM files for TLS; empty: none.
struct TlsFiles {
  std::string certificate;  // the own certificate
  std::string key;
  std::string authorities;  // certificates of the trusted authorities
  std::string revoked;      // revocation lists
};

struct AgentAccess {
  std::string reference = kDefaultAgent;    // IOR, corbaloc or corbaname; unused with an iorFile
  bool isFromEnvironment = false;           // whether $TOPO_AGENT has the reference
  std::optional<std::string> iorFile;       // path of a file that contains the reference
  std::uint32_t howMany = kDefaultHowMany;  // records in the first reply of a view; 0: no record
  std::chrono::milliseconds callTimeout = kDefaultTimeout;  // 0: no limit
  std::size_t maxMessageBytes = kDefaultMaxMessage;         // of a message in either direction
  TlsFiles tls;
};

// Records to request from an iterator in one call. An iterator answers a request for 0 records with
// an empty batch for ever, so a howMany of 0 applies to the first call of a view only.
constexpr std::uint32_t iteratorBatch(std::uint32_t howMany) {
  return howMany == 0 ? kDefaultHowMany : howMany;
}

}  // namespace topoctl

#endif
