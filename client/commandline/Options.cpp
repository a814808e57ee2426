#include "client/commandline/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <system_error>

#include "client/base/Decimal.h"
#include "client/base/Failure.h"
#include "client/commandline/CommandSyntax.h"

namespace topoctl {
namespace {

// More than eleven days is a typing error; the limit also keeps the milliseconds in 32 bits.
constexpr double kMaxTimeoutSeconds = 1000000;

constexpr const char* kWide = "--wide";
constexpr const char* kNoHeader = "--no-header";

// The options as typed. The functions below read the numbers, because the library accepts other
// notations than decimal and reports errors without the limits.
struct Typed {
  std::string agent;
  std::string iorFile;
  std::string howMany;
  std::string format;
  std::string timeout;
  std::string maxMessage;
  TlsFiles tls;
};

std::uint32_t parseUnsigned(const std::string& option, const std::string& text, std::uint32_t min) {
  constexpr auto kMax = std::numeric_limits<std::uint32_t>::max();
  const auto value = parseDecimal<std::uint32_t>(text);
  if (!value || *value < min) {
    usageError(option + ": '" + text + "' is not a number from " + std::to_string(min) + " to " +
               std::to_string(kMax));
  }
  return *value;
}

std::chrono::milliseconds parseTimeout(const std::string& text) {
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
  const bool isNumber = error == std::errc() && last == end && std::isfinite(seconds);
  if (!isNumber || std::signbit(seconds) || seconds > kMaxTimeoutSeconds) {
    usageError("--timeout: '" + text + "' is not a number of seconds from 0 to 1000000");
  }
  // Rounds up, because a timeout below a millisecond must not become 0, the value for no limit.
  return std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(seconds * 1000)));
}

Format parseFormat(const std::string& text) {
  if (text == "table") {
    return Format::kTable;
  }
  if (text == "json") {
    return Format::kJson;
  }
  if (text == "csv") {
    return Format::kCsv;
  }
  usageError("--format: '" + text + "' is none of table, json, csv");
}

void addOption(CLI::App& app, const std::string& name, std::string& value, const char* argument,
               const std::string& help) {
  app.add_option(name, value, help)->option_text(argument)->take_last();
}

void addOptions(CLI::App& app, Typed& typed) {
  addOption(app, "--agent", typed.agent, "REF",
            std::string("The agent: IOR, corbaloc, corbaname, tcp:HOST:PORT, tls:HOST:PORT or "
                        "unix:PATH; default $TOPO_AGENT, or ") +
                kDefaultAgent);
  addOption(app, "--ior-file", typed.iorFile, "PATH", "Read the agent's reference from this file");
  addOption(app, "--how-many", typed.howMany, "N",
            "Records in one call, 1000 unless given; with 0 the first call asks for none");
  addOption(app, "--format", typed.format, "FORMAT", "table (unless given), json or csv");
  addOption(app, "--timeout", typed.timeout, "S",
            "Seconds that one call may take, fractions allowed, 30 unless given; 0: no limit");
  addOption(
      app, "--max-message", typed.maxMessage, "BYTES",
      "Largest message that is accepted, " + std::to_string(kDefaultMaxMessage) + " unless given");
  addOption(app, "--tls-ca", typed.tls.authorities, "FILE",
            "Certificate authorities that the agent's certificate is verified with (PEM)");
  addOption(app, "--tls-cert", typed.tls.certificate, "FILE",
            "Certificate to show to the agent, followed by its chain (PEM)");
  addOption(app, "--tls-key", typed.tls.key, "FILE", "Private key of --tls-cert (PEM)");
  addOption(app, "--tls-crl", typed.tls.revoked, "FILE",
            "Revocation lists of the certificate authorities (PEM)");
  app.add_flag(kWide, "Print whole cells of tables, even if lines are longer than the terminal");
  app.add_flag(kNoHeader, "Print tables and csv without the line of the field names");
}

CLI::App& addSubcommand(CLI::App& app, const std::string& name, const std::string& help) {
  return *app.add_subcommand(name, help)
              ->fallthrough()
              ->footer("topoctl --help shows the options of all commands.");
}

void addCommands(CLI::App& app) {
  std::map<std::string, CLI::App*> groups;
  for (const Group& group : commandGroups()) {
    groups[group.name] = &addSubcommand(app, group.name, group.help);
  }
  for (const CommandSyntax& command : commandSyntax()) {
    const std::string name = command.name;
    const std::size_t space = name.find(' ');
    CLI::App& parent = space == std::string::npos ? app : *groups.at(name.substr(0, space));
    addArguments(addSubcommand(parent, name.substr(space + 1), command.help), command.arguments);
  }
}

// The innermost subcommand of the command line, or the application when there is no subcommand.
const CLI::App& innermost(const CLI::App& app) {
  const CLI::App* typed = &app;
  while (!typed->get_subcommands().empty()) {
    typed = typed->get_subcommands().front();
  }
  return *typed;
}

// "topo", "node create"; "node" for a group without a command, "" for no command.
std::string typedCommand(const CLI::App& app) {
  std::string name;
  for (const CLI::App* typed = &app; !typed->get_subcommands().empty();) {
    typed = typed->get_subcommands().front();
    name += (name.empty() ? "" : " ") + typed->get_name();
  }
  return name;
}

// The names of the commands of a group.
std::string commandsOf(const std::string& group) {
  std::string names;
  for (const CommandSyntax& command : commandSyntax()) {
    const std::string name = command.name;
    if (name.rfind(group + " ", 0) == 0) {
      names += (names.empty() ? "" : ", ") + name;
    }
  }
  return names;
}

// The usage text of the typed command, of the typed group of commands, or of topoctl.
std::string usageOfTyped(const CLI::App& app) {
  const std::string name = typedCommand(app);
  if (const CommandSyntax* const command = findSyntax(name); command != nullptr) {
    return usageOf(*command);
  }
  return name.empty() ? "\"topoctl --help\" lists the commands"
                      : "the commands are: " + commandsOf(name);
}

void checkCommand(const CLI::App& app) {
  const std::string name = typedCommand(app);
  const bool isCommand = findSyntax(name) != nullptr;
  const std::vector<std::string> remaining = app.remaining(true);
  const auto unexpected = std::find_if(remaining.begin(), remaining.end(),
                                       [](const std::string& text) { return text != "--"; });
  if (unexpected != remaining.end()) {
    const bool isOption = isCommand || unexpected->rfind('-', 0) == 0;
    usageError("'" + *unexpected + (isOption ? "' is not expected here" : "' is not a command"));
  }
  if (!isCommand) {
    usageError((name.empty() ? "" : name + ": ") + "a command is missing");
  }
}

void readAgent(const CLI::App& app, const Typed& typed, const std::string& agentOfEnvironment,
               Options& options) {
  if (app.count("--agent") > 0 && app.count("--ior-file") > 0) {
    usageError("--agent and --ior-file exclude each other");
  }
  if (app.count("--ior-file") > 0) {
    options.access.iorFile = typed.iorFile;
  } else if (app.count("--agent") > 0) {
    options.access.reference = typed.agent;
  } else if (!agentOfEnvironment.empty()) {
    options.access.reference = agentOfEnvironment;
    options.access.isFromEnvironment = true;
  }
}

void readTls(const TlsFiles& files, AgentAccess& access) {
  if (files.certificate.empty() != files.key.empty()) {
    usageError("--tls-cert and --tls-key need each other");
  }
  if (!files.revoked.empty() && files.authorities.empty()) {
    usageError("--tls-crl needs --tls-ca");
  }
  access.tls = files;
}

void readValues(const CLI::App& app, const Typed& typed, Options& options) {
  if (app.count("--how-many") > 0) {
    options.access.howMany = parseUnsigned("--how-many", typed.howMany, 0);
  }
  if (app.count("--format") > 0) {
    options.format = parseFormat(typed.format);
  }
  if (app.count("--timeout") > 0) {
    options.access.callTimeout = parseTimeout(typed.timeout);
  }
  if (app.count("--max-message") > 0) {
    options.access.maxMessageBytes =
        parseUnsigned("--max-message", typed.maxMessage, kMinMaxMessage);
  }
  readTls(typed.tls, options.access);
  options.wide = app.count(kWide) > 0;
  options.table.header = app.count(kNoHeader) == 0;
}

void checkFormat(const CommandSyntax& command, Format format) {
  const bool tableAlone = command.formats == Formats::kTable && format != Format::kTable;
  const bool notCsv = command.formats == Formats::kTableAndJson && format == Format::kCsv;
  if (tableAlone || notCsv) {
    usageError(std::string(command.name) + ": --format must be table" +
               (tableAlone ? ": " : " or json: ") + command.whyNotOthers);
  }
}

void readCommand(const CLI::App& app, Options& options) {
  options.command = typedCommand(app);
  const CommandSyntax& command = *findSyntax(options.command);  // checkCommand() found the row
  checkFormat(command, options.format);
  options.arguments = readArguments(innermost(app), command.arguments);
}

// The error about an option without its value. The text of the library begins with the name of the
// option, but names neither the value nor its possible forms.
std::string missingValue(const CLI::App& app, const CLI::ArgumentMismatch& error) {
  std::string text = error.what();
  const std::string name = text.substr(0, text.find(':'));
  for (const CLI::App* const each : {&innermost(app), &app}) {
    if (const CLI::Option* const option = each->get_option_no_throw(name); option != nullptr) {
      const std::string argument = option->get_option_text();
      return name + ": " + (argument.empty() ? option->get_type_name() : argument) +
             " is missing: " + option->get_description();
    }
  }
  return text;
}

// Fills the variables of the options. Returns the text of --help or --version, otherwise "".
std::string parse(CLI::App& app, const std::vector<std::string>& arguments) {
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    return "";
  } catch (const CLI::CallForHelp&) {
    return app.help();
  } catch (const CLI::CallForVersion& version) {
    return std::string(version.what()) + "\n";
  } catch (const CLI::ArgumentMismatch& error) {
    usageError(missingValue(app, error));
  } catch (const CLI::ParseError& error) {
    usageError(error.what());
  }
}

// Calls a function that reads the command line, and adds the usage to the text of its usage errors.
template <typename Read>
void explainingUsage(const CLI::App& app, Read read) {
  try {
    read();
  } catch (const Failure& failure) {
    usageError(failure.what() + ("; " + usageOfTyped(app)));
  }
}

constexpr const char* kDescription = "Shows what a topology agent manages.";
constexpr const char* kProgram = "topoctl";

void declare(CLI::App& app, Typed& typed) {
  app.set_version_flag("--version", "topoctl " TOPOCTL_VERSION, "Print the version and exit");
  app.require_subcommand(0, 1);
  app.allow_extras();  // checkCommand() rejects them
  addOptions(app, typed);
  addCommands(app);
}

}  // namespace

void withParser(const std::function<void(const CLI::App& parser)>& use) {
  CLI::App app(kDescription, kProgram);
  Typed typed;
  declare(app, typed);
  use(app);
}

Options parseOptions(const std::vector<std::string>& arguments,
                     const std::string& agentOfEnvironment) {
  CLI::App app(kDescription, kProgram);
  Typed typed;
  declare(app, typed);

  Options options;
  explainingUsage(app, [&] { options.notice = parse(app, arguments); });
  if (options.notice.empty()) {
    explainingUsage(app, [&] { checkCommand(app); });
    readAgent(app, typed, agentOfEnvironment, options);
    readValues(app, typed, options);
    explainingUsage(app, [&] { readCommand(app, options); });
  }
  return options;
}

}  // namespace topoctl
