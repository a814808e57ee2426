#include "agent/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <map>
#include <system_error>
#include <utility>
#include <vector>

#include "agent/ConfigFile.h"
#include "agent/access/AddressRange.h"

namespace agent {
namespace {

// The module beside the executable, in the lib folder of a build, or in its folder of an installed
// tree. Every place is relative to the executable, so that a tree can be moved.
std::filesystem::path defaultModule() {
  std::error_code status;
  const std::filesystem::path bin =
      std::filesystem::read_symlink("/proc/self/exe", status).parent_path();
  std::filesystem::path module;
  for (const char* const folder : {".", TOPO_INSTALLED_MODULE_FOLDER, "../lib"}) {
    module = (bin / folder / "libzu_corba_topo.so").lexically_normal();
    if (std::filesystem::exists(module, status)) {
      break;
    }
  }
  return module;
}

// The endpoint that --endpoint, or --publish, describes.
std::string checkEndpoint(const std::string& text) {
  return orb::endpointFrom(text)
             ? ""
             : "'" + text + "' is not HOST:PORT, tcp:HOST:PORT, tls:HOST:PORT or unix:PATH";
}

std::string checkPublished(const std::string& text) {
  const std::optional<orb::Endpoint> endpoint = orb::endpointFrom(text);
  return endpoint && orb::format(*endpoint) == text && endpoint->port != 0
             ? ""
             : "'" + text + "' is not HOST:PORT";
}

std::string checkMetrics(const std::string& text) {
  const std::optional<orb::Endpoint> endpoint = orb::endpointFrom(text);
  return endpoint && orb::format(*endpoint) == text ? "" : "'" + text + "' is not HOST:PORT";
}

std::string oneLine(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < ' ') {
      c = ' ';
    }
  }
  return text;
}

std::string checkSeconds(const std::string& text) {
  return text.find_first_not_of("0123456789.") == std::string::npos
             ? ""
             : "'" + text + "' is not a number of seconds";
}

std::string checkRange(const std::string& text) {
  try {
    AddressRange::parse(text);
    return "";
  } catch (const std::invalid_argument& problem) {
    return problem.what();
  }
}

// Options of the rights of clients.
void declareAccess(CLI::App& app, Options& options) {
  app.add_option(
         "--access", options.access,
         "the clients and their roles; read again on SIGHUP (default: the loopback and Unix "
         "sockets have all roles, a verified certificate may read)")
      ->type_name("FILE");
  app.add_option("--audit", options.audit,
                 "record changes and refusals, one JSON object a line, in this file (reopened on "
                 "SIGHUP) or in the journal of systemd")
      ->type_name("FILE|journal");
  app.add_option("--push-to", options.pushTo,
                 "also push notifications to consumers at these addresses (default: only to the "
                 "address of the subscribing client); may be repeated")
      ->type_name("RANGE")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(checkRange);
  app.add_flag("--read-only", options.readOnly, "refuse every change");
}

constexpr const char* kDefaultEndpoint = "127.0.0.1:2810";

// The values of --endpoint, --console-endpoint and --publish.
struct EndpointTexts {
  std::string console;                 // empty: none
  std::vector<std::string> endpoints;  // empty: the default
  std::string publish;                 // empty: none
};

// Options of the network and the store.
void declareService(CLI::App& app, Options& options) {
  app.set_version_flag("--version", std::string("topo-agentd ") + TOPO_VERSION);
  app.add_option("--network", options.network, "load this network into the store when it is new")
      ->type_name("FILE");
  app.add_option("--store", options.store, "SQLite file, or :memory:")
      ->type_name("PATH")
      ->capture_default_str();
  app.add_flag("--create", options.createStore,
               "make an empty store when there is none and --network gives no network");
  app.add_flag("!--skip-store-check", options.checkStore,
               "do not look for damage in the store at start");
  app.add_option("--ior-file", options.iorFile, "write the manager's IOR here when ready to serve")
      ->type_name("PATH");
  app.add_option("--ems-name", options.emsName,
                 "name of the managing system (default: the name in the network)")
      ->type_name("NAME");
  app.add_flag("--test-switch", options.testSwitch, "start with the test switch on");
  app.add_option("--module", options.module,
                 "the module to load (default: the module beside topo-agentd)")
      ->type_name("PATH");
  app.add_option("--naming", options.naming,
                 "also bind TopoManagement in this CosNaming service (an object reference)")
      ->type_name("REF");
}

// Options of the addresses.
void declareEndpoints(CLI::App& app, EndpointTexts& texts) {
  app.add_option("--console-endpoint", texts.console,
                 "a further address to listen on, which alone serves the console and the session "
                 "(default: every endpoint serves them)")
      ->type_name("HOST:PORT|unix:PATH")
      ->check(checkEndpoint);
  app.add_option("--endpoint", texts.endpoints,
                 "address to listen on, may be given more than once; port 0 selects a free port; "
                 "with --tls-cert a HOST:PORT means tls:")
      ->type_name("[tcp:|tls:]HOST:PORT|unix:PATH")
      ->default_str(kDefaultEndpoint)
      ->allow_extra_args(false)
      ->check(checkEndpoint);
  app.add_option("--publish", texts.publish,
                 "address in references, in place of that of the first endpoint of a host")
      ->type_name("HOST:PORT")
      ->check(checkPublished);
}

const std::map<std::string, orb::TlsOptions::Clients>& tlsClientsWords() {
  using Clients = orb::TlsOptions::Clients;
  static const std::map<std::string, Clients> words = {
      {"required", Clients::kRequired}, {"optional", Clients::kOptional}, {"none", Clients::kNone}};
  return words;
}

// Options of TLS.
void declareTls(CLI::App& app, Options& options, std::string& clients) {
  app.add_option("--tls-cert", options.tls.certificate,
                 "serve TLS with this certificate, followed by its chain (PEM)")
      ->type_name("FILE");
  app.add_option("--tls-key", options.tls.key, "private key of the certificate (PEM)")
      ->type_name("FILE");
  app.add_option("--tls-ca", options.tls.authorities, "trusted certificate authorities (PEM)")
      ->type_name("FILE");
  app.add_option("--tls-crl", options.tls.revoked,
                 "revocation lists of the certificate authorities (PEM)")
      ->type_name("FILE");
  app.add_option("--tls-clients", clients, "whether TLS clients need a certificate")
      ->type_name("WORD")
      ->capture_default_str()
      ->check(CLI::IsMember(tlsClientsWords()));
}

const std::map<std::string, EventAccess>& eventAccessWords() {
  static const std::map<std::string, EventAccess> words = {{"allowed", EventAccess::kAllowed},
                                                           {"denied", EventAccess::kDenied},
                                                           {"unknown", EventAccess::kUnknown}};
  return words;
}

// Options of events and of the console.
void declareEvents(CLI::App& app, Options& options, std::string& eventAccess) {
  app.add_option("--event-channel", options.eventChannel,
                 "also push notifications to this CosEventChannelAdmin channel")
      ->type_name("REF");
  app.add_option("--event-access", eventAccess,
                 "the answer to modules that ask for access to events")
      ->type_name("WORD")
      ->capture_default_str()
      ->check(CLI::IsMember(eventAccessWords()));
  app.add_flag("!--no-console", options.console, "serve no console");
}

// Limits of the receivers of notifications.
void declareReceivers(CLI::App& app, Options& options) {
  const CLI::Range counts(std::size_t{1}, std::size_t{1000000});
  app.add_option("--queue", options.queueLimit,
                 "notifications in the queue of a receiver; a full queue drops its oldest")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{1}, std::size_t{10000000}));
  app.add_option("--queue-memory", options.queueBytes, "memory of the queue of a receiver")
      ->type_name("BYTES")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{65536}, std::size_t{1} << 40));
  app.add_option("--max-subscribers", options.maxSubscribers, "subscribers at the same time")
      ->type_name("N")
      ->capture_default_str()
      ->check(counts);
  app.add_option("--max-subscribers-per-peer", options.maxSubscribersPerPeer,
                 "subscribers of one client address at the same time")
      ->type_name("N")
      ->capture_default_str()
      ->check(counts);
}

void declareMetrics(CLI::App& app, std::string& metrics) {
  app.add_option("--metrics", metrics,
                 "serve /metrics for Prometheus, /live and /ready over HTTP at this address")
      ->type_name("HOST:PORT")
      ->check(checkMetrics);
}

void declareLimits(CLI::App& app, Options& options) {
  app.add_option("--log-level", options.logLevel, "1 errors, 2 events, 3 traces")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(1, 3));
  app.add_option("--max-message", options.maxMessageBytes, "largest GIOP message")
      ->type_name("BYTES")
      ->capture_default_str()
      ->check(CLI::Range(orb::kMinMaxMessageBytes, orb::kMaxMaxMessageBytes));
  app.add_option("--max-request", options.maxRequestBytes,
                 "largest incoming request; an import may have --max-message")
      ->type_name("BYTES")
      ->capture_default_str()
      ->check(CLI::Range(orb::kMinMaxMessageBytes, orb::kMaxMaxMessageBytes));
  app.add_option("--max-connections", options.maxConnections,
                 "incoming connections that are open at the same time")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{1}, std::size_t{100000}));
  app.add_option("--iterator-timeout", options.iteratorTimeoutSeconds,
                 "seconds until an idle iterator is reclaimed")
      ->type_name("S")
      ->capture_default_str()
      ->check(CLI::Range(1.0, 1e6))
      ->check(checkSeconds);
  app.add_option("--max-iterators", options.maxIterators, "iterators at the same time")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{1}, std::size_t{1000000}));
}

constexpr std::size_t kMinMemory = std::size_t{1} << 20;
constexpr std::size_t kMaxMemory = std::size_t{1} << 40;

// Limits of views and their results.
void declareViewLimits(CLI::App& app, Options& options) {
  app.add_option("--iterator-memory", options.iteratorMemory, "bytes of all iterators")
      ->type_name("BYTES")
      ->capture_default_str()
      ->check(CLI::Range(kMinMemory, kMaxMemory));
  app.add_option("--max-views", options.maxViews, "views that are computed at the same time")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{1}, std::size_t{10000}));
  app.add_option("--view-memory", options.viewMemory,
                 "bytes that views may take until their replies are sent")
      ->type_name("BYTES")
      ->capture_default_str()
      ->check(CLI::Range(kMinMemory, kMaxMemory));
  app.add_option("--memory", options.memory,
                 "bytes of memory the agent may use (default: what the system allows)")
      ->type_name("BYTES")
      ->check(CLI::Range(kMinMemory, kMaxMemory));
}

// The options of the program, declared to CLI11.
class CommandLine {
 public:
  CommandLine() {
    declareService(app_, options_);
    declareEndpoints(app_, endpoints_);
    declareTls(app_, options_, tlsClients_);
    declareAccess(app_, options_);
    declareEvents(app_, options_, eventAccess_);
    declareReceivers(app_, options_);
    declareMetrics(app_, metrics_);
    declareLimits(app_, options_);
    declareViewLimits(app_, options_);
    app_.add_option("--config", config_,
                    "read options from this file, one NAME = VALUE on each line")
        ->type_name("FILE");
    app_.add_flag("--check-config", checkConfig_, "check the options and the file, and end");
  }

  // arguments: without the name of the program. Throws CLI::Error.
  void parse(std::vector<std::string> arguments) {
    std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes a vector
    app_.parse(std::move(arguments));
  }

  // REQUIRES: parse() has succeeded.
  Options options() const {
    Options result = options_;
    result.checkOnly = checkConfig_;
    setEndpoints(result);
    if (!metrics_.empty()) {
      result.metrics = orb::endpointFrom(metrics_);
    }
    result.eventAccess = eventAccessWords().at(eventAccess_);
    if (result.module.empty()) {
      result.module = defaultModule();
    }
    return result;
  }

  // The names of the options that a configuration file may have, without their dashes.
  std::vector<std::string> configNames() const {
    std::vector<std::string> names;
    for (const CLI::Option* option : app_.get_options()) {
      const std::string name = option->get_single_name();
      if (name != "help" && name != "version" && name != "config" && name != "check-config") {
        names.push_back(name);
      }
    }
    return names;
  }

  bool hasOption(const std::string& name) const {
    return app_.get_option("--" + name)->count() > 0;
  }
  const std::string& config() const { return config_; }
  CLI::App& app() { return app_; }

 private:
  // A HOST:PORT without a transport means TLS if there is a certificate.
  void setEndpoints(Options& result) const {
    result.tls.clients = tlsClientsWords().at(tlsClients_);
    const orb::Transport bare =
        result.tls.certificate.empty() ? orb::Transport::kTcp : orb::Transport::kTls;
    result.endpoints.front().transport = bare;
    if (!endpoints_.endpoints.empty()) {
      result.endpoints.clear();
    }
    for (const std::string& text : endpoints_.endpoints) {
      result.endpoints.push_back(*orb::endpointFrom(text, bare));
    }
    if (!endpoints_.console.empty()) {
      result.consoleEndpoint = result.endpoints.size();
      result.endpoints.push_back(*orb::endpointFrom(endpoints_.console, bare));
      result.endpoints.back().inReferences = false;
    }
    if (!endpoints_.publish.empty()) {
      result.publish = orb::endpointFrom(endpoints_.publish);
    }
  }

  CLI::App app_{"topo-agentd: serves a network's topology over CORBA", "topo-agentd"};
  Options options_;
  EndpointTexts endpoints_;
  std::string metrics_;
  std::string tlsClients_ = "required";
  std::string eventAccess_ = "allowed";
  std::string config_;
  bool checkConfig_ = false;
};

std::string unknownName(const std::string& name, const std::vector<std::string>& known) {
  const std::string similar = mostSimilarName(name, known);
  return "there is no option '" + name + "'" +
         (similar.empty() ? "" : ", did you mean '" + similar + "'?");
}

// The line as an argument of the command line. Throws UsageError.
std::string toArgument(const ConfigLine& line, const std::vector<std::string>& known) {
  if (std::find(known.begin(), known.end(), line.name) == known.end()) {
    throw UsageError(unknownName(line.name, known));
  }
  std::string argument = "--" + line.name + (line.value ? "=" + *line.value : "");
  try {
    CommandLine().parse({argument});
  } catch (const CLI::Error& failure) {
    throw UsageError(oneLine(failure.what()));
  }
  return argument;
}

// The lines of a configuration file, without the options that the command line has too.
struct ConfigArguments {
  std::vector<std::string> arguments;
  std::map<std::string, std::string> lines;  // as Options::configLines
};

// Throws UsageError.
ConfigArguments configArguments(const CommandLine& commandLine) {
  ConfigArguments result;
  if (commandLine.config().empty()) {
    return result;
  }
  const std::vector<std::string> known = commandLine.configNames();
  for (const ConfigLine& line : readConfigFile(commandLine.config(), {"endpoint", "push-to"})) {
    const std::string place = commandLine.config() + ":" + std::to_string(line.number) + ": ";
    try {
      std::string argument = toArgument(line, known);
      if (!commandLine.hasOption(line.name)) {
        result.arguments.push_back(std::move(argument));
        result.lines[line.name] = place;
      }
    } catch (const UsageError& failure) {
      throw UsageError(place + failure.what());
    }
  }
  return result;
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const argv[]) {
  const std::vector<std::string> given(argv + std::min(argc, 1), argv + argc);
  CommandLine commandLine;
  try {
    commandLine.parse(given);
  } catch (const CLI::Success& answered) {
    commandLine.app().exit(answered, std::cout, std::cerr);
    return std::nullopt;
  } catch (const CLI::Error& failure) {
    throw UsageError(oneLine(failure.what()) + " (see topo-agentd --help)");
  }
  ConfigArguments config = configArguments(commandLine);
  config.arguments.insert(config.arguments.end(), given.begin(), given.end());
  CommandLine complete;
  complete.parse(std::move(config.arguments));
  Options options = complete.options();
  options.configLines = std::move(config.lines);
  return options;
}

}  // namespace agent
