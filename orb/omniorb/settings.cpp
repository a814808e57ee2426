#include "settings.h"

#include <omniORB4/omniORB.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>
#include <vector>

#include "incoming/transport.h"
#include "log.h"

namespace orb {
namespace {

// The ORB reads ORBNAME=VALUE, OMNIORB_CONFIG and OMNIORB_USEHOSTNAME, and offers no way to switch
// that off. Settings of a list, as endPoint, would add to ours.
void forgetSettingsOfTheEnvironment() {
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

// Requests of one connection that are served at the same time; further ones wait.
constexpr std::size_t kRequestsPerConnection = 4;

// Threads serve complete requests and nothing else. There are enough for every connection, so that
// clients that do not read their replies hold up nobody.
void addServing(Settings& settings, const Options& options, const std::string& listenAt) {
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
  settings.emplace_back("endPoint", limitedEndpoint(options, listenAt));
}

// The ORB takes its settings as an array of name and value, ended by a null pair.
CORBA::ORB_ptr initWithSettings(const Settings& settings) {
  const auto table = std::make_unique<const char*[][2]>(settings.size() + 1);
  for (std::size_t i = 0; i < settings.size(); ++i) {
    table[i][0] = settings[i].first.c_str();
    table[i][1] = settings[i].second.c_str();
  }
  omniORB::setLogFunction(forwardLog);
  forgetSettingsOfTheEnvironment();
  // Without a configuration file. The ORB keeps the pointer to its name.
  static char configFile[] = "-ORBconfigFile";
  static char none[] = "";
  char* argv[] = {none, configFile, none, nullptr};
  int argc = 3;
  return CORBA::ORB_init(argc, argv, "omniORB4", table.get());
}

}  // namespace

CORBA::ORB_ptr initOrb(const Options& options, const std::string& listenAt) {
  const std::string maxMessage = std::to_string(options.maxMessageBytes);
  // For connecting too, as long as the ORB has no time-out of its own for that.
  const std::string callTimeout = std::to_string(options.callTimeout.count());
  const std::string serveTimeout = std::to_string(options.serveTimeout.count());
  Settings settings = {
      {"giopMaxMsgSize", maxMessage},
      {"clientCallTimeOutPeriod", callTimeout},
      {"serverCallTimeOutPeriod", serveTimeout},
      // Calls to one peer do not wait for each other: of two consumers in one process one may hang.
      {"maxGIOPConnectionPerServer", "100"},
      {"traceTime", "0"},      // whoever receives the log knows the time
      {"traceThreadId", "0"},  // and the thread

      {"nativeCharCodeSet", "UTF-8"},
      // Towards a peer that names none, as the object of a corbaloc does.
      {"defaultCharCodeSet", "UTF-8"},
  };
  if (listenAt.empty()) {
    // A client listens too, but only if something of it is ever served.
    settings.emplace_back("endPoint", "giop:tcp:127.0.0.1:");
  } else {
    addServing(settings, options, listenAt);
  }
  return initWithSettings(settings);
}

}  // namespace orb
