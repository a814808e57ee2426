#include "settings.h"

#include <omniORB4/omniORB.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
// clang-format on
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>
#include <vector>

#include "incoming/transport.h"
#include "log.h"
#include "outgoingtls.h"

namespace orb {
namespace {

// The ORB reads ORBNAME=VALUE, OMNIORB_CONFIG and OMNIORB_USEHOSTNAME from the environment and has
// no switch against it. A list setting such as endPoint would be added to the settings below.
void removeSettingsFromEnvironment() {
  std::vector<std::string> names;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (text.compare(0, 3, "ORB") == 0 || text.compare(0, 8, "OMNIORB_") == 0) {
      names.push_back(text.substr(0, text.find('=')));
    }
  }
  for (const std::string& name : names) {
    unsetenv(name.c_str());
  }
}

using Settings = std::vector<std::pair<std::string, std::string>>;

// Largest size of the buffers that messages are sent from, and of the fragments of a long reply.
// With the ORB's default of 8 KiB a long reply needs four times as many system calls.
constexpr std::size_t kBufferBytes = 32768;

// The ORB checks the limit of a message when a buffer is full, so a buffer is not larger than the
// limit. The ORB has no option for the size. The threads of a running ORB read the variable, so a
// second ORB with the same size does not write it.
void setBufferSize(std::size_t maxMessageBytes) {
  constexpr std::size_t kAlignment = 8;  // of fragments
  const auto size =
      static_cast<CORBA::ULong>(std::min(kBufferBytes, maxMessageBytes) / kAlignment * kAlignment);
  if (omni::giopStream::bufferSize != size) {
    omni::giopStream::bufferSize = size;
  }
}

// Maximum number of concurrent requests of one connection; further requests wait.
constexpr std::size_t kRequestsPerConnection = 4;

// A thread of the pool serves complete requests only. The pool has enough threads for every
// connection, so that a client that does not read its replies delays no other client.
void addServing(Settings& settings, const Options& options,
                const std::shared_ptr<ServerState>& state) {
  using std::chrono::seconds;
  const auto idle = std::chrono::ceil<seconds>(options.idleTimeout);
  const auto scan = std::clamp(idle / 2, seconds(1), seconds(5));
  const std::size_t threads = options.maxConnections * kRequestsPerConnection;
  settings.emplace_back("threadPerConnectionPolicy", "0");
  settings.emplace_back("threadPoolWatchConnection", "0");
  settings.emplace_back("maxServerThreadPerConnection", std::to_string(kRequestsPerConnection));
  settings.emplace_back("maxServerThreadPoolSize", std::to_string(threads));
  settings.emplace_back("inConScanPeriod", std::to_string(idle.count()));
  settings.emplace_back("scanGranularity", std::to_string(scan.count()));
  for (const std::string& endpoint : limitedEndpoints(state)) {
    settings.emplace_back("endPoint", endpoint);
  }
}

// The ORB takes its settings as an array of name and value, terminated by a null pair.
CORBA::ORB_ptr initWithSettings(const Settings& settings) {
  const auto table = std::make_unique<const char*[][2]>(settings.size() + 1);
  for (std::size_t i = 0; i < settings.size(); ++i) {
    table[i][0] = settings[i].first.c_str();
    table[i][1] = settings[i].second.c_str();
  }
  omniORB::setLogFunction(forwardLog);
  installTls();
  removeSettingsFromEnvironment();
  // An empty name disables the configuration file. The ORB keeps the pointers to the arguments.
  static char configFile[] = "-ORBconfigFile";
  static char none[] = "";
  char* argv[] = {none, configFile, none, nullptr};
  int argc = 3;
  return CORBA::ORB_init(argc, argv, "omniORB4", table.get());
}

}  // namespace

CORBA::ORB_ptr initOrb(const Options& options, const std::shared_ptr<ServerState>& state) {
  setBufferSize(options.maxMessageBytes);
  const std::string maxMessage = std::to_string(options.maxMessageBytes);
  // Limits connecting too, because no separate connect timeout is set.
  const std::string callTimeout = std::to_string(options.callTimeout.count());
  const std::string serveTimeout = std::to_string(options.serveTimeout.count());
  Settings settings = {
      {"giopMaxMsgSize", maxMessage},
      {"clientCallTimeOutPeriod", callTimeout},
      {"serverCallTimeOutPeriod", serveTimeout},
      // Calls to one peer do not wait for each other: one of two consumers in a process may block.
      {"maxGIOPConnectionPerServer", "100"},
      // The ORB connects to the names of references, so that a certificate is checked for the name.
      {"resolveNamesForTransportRules", "0"},
      {"traceTime", "0"},      // the receiver of the log adds the time
      {"traceThreadId", "0"},  // and the thread

      {"nativeCharCodeSet", "UTF-8"},
      // Used for a peer whose reference names no code set, such as a corbaloc.
      {"defaultCharCodeSet", "UTF-8"},
  };
  if (!state) {
    // A client listens only when it activates an object.
    settings.emplace_back("endPoint", "giop:tcp:127.0.0.1:");
  } else {
    addServing(settings, options, state);
  }
  return initWithSettings(settings);
}

}  // namespace orb
