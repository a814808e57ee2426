#include "settings.h"

#include <omniORB4/omniORB.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>
#include <vector>

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

// The ORB takes its settings as an array of name and value, ended by a null pair.
CORBA::ORB_ptr initWithSettings(const std::vector<std::pair<std::string, std::string>>& settings) {
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
  std::vector<std::pair<std::string, std::string>> settings = {
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
      // A client listens too, but only if something of it is ever served.
      {"endPoint", "giop:tcp:" + (listenAt.empty() ? std::string("127.0.0.1:") : listenAt)},
  };
  return initWithSettings(settings);
}

}  // namespace orb
