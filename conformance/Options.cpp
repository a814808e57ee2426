#include "conformance/Options.h"

#include <CLI/CLI.hpp>
#include <sstream>
#include <string_view>

#include "conformance/HostProtocol.h"

namespace conformance {
namespace {

// Returns the reason to refuse the value of an option; "" for a valid value. CLI11 takes the "--"
// before the host's command for the value of an option without a value.
std::string problemWith(const std::string& value) {
  return value == "--" ? "a value is missing before --" : "";
}

void describe(CLI::App& app, Options& options, int& seconds) {
  app.footer(
      "Start a host: topo-conformance [OPTIONS] -- HOST ARGUMENTS...\n"
      "Check a running host: topo-conformance [OPTIONS] --agent REFERENCE\n"
      "In ARGUMENTS \"{module}\" is the path of the module that the host has to load, and\n"
      "\"{consumer}\" the reference of a consumer to which the host pushes its notifications.\n"
      "Exit status: 0 all checks have passed, 1 a rule is broken, 2 the checks could not be run.");
  app.add_option("--module", options.module, "the module; default: the installed module")
      ->type_name("PATH")
      ->check(problemWith);
  app.add_option("--probe", options.probe, "the probe module; default: the installed probe")
      ->type_name("PATH")
      ->check(problemWith);
  app.add_flag("--console", options.usesConsole,
               "operate the host through its console, as topo-agentd has, instead of its input");
  app.add_option("--agent", options.agent, "check a running host: the reference of its manager")
      ->type_name("REFERENCE")
      ->check(problemWith);
  app.add_option("--rule", options.rules,
                 "check only these rules and the rules that they need; default: all rules")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("NAME,...")
      ->check(problemWith);
  app.add_option("--timeout", seconds, "limit of each step of a check; default 20")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 3600));
  app.add_option("host", options.command, "the command that starts the host")->type_name("");
  app.set_version_flag("--version", "topo-conformance " TOPO_VERSION);
}

void requireOneHost(const Options& options) {
  if (options.agent.empty() == options.command.empty()) {
    throw UsageError("give either the command of a host, after --, or --agent REFERENCE");
  }
  if (options.usesConsole && !options.agent.empty()) {
    throw UsageError(
        "--console is for the command of a host: with --agent, a console is used when there is "
        "one");
  }
}

[[noreturn]] void refusePlaceholder(const std::string& word, const std::string& argument) {
  throw UsageError("unknown placeholder " + word + " in the argument \"" + argument +
                   "\": " + kModulePlaceholder + " and " + kConsumerPlaceholder + " are known");
}

constexpr std::string_view kWordCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_-";

// The word in braces that begins at the position, braces included; "" without one.
std::string bracedWord(const std::string& argument, std::size_t begin) {
  const std::size_t end = argument.find_first_not_of(kWordCharacters, begin + 1);
  const bool isWord = end != std::string::npos && end > begin + 1 && argument[end] == '}';
  return isWord ? argument.substr(begin, end + 1 - begin) : "";
}

// "${WORD}" is left to a shell.
void requireKnownPlaceholders(const std::vector<std::string>& command) {
  for (const std::string& argument : command) {
    for (std::size_t at = argument.find('{'); at != std::string::npos;
         at = argument.find('{', at + 1)) {
      const std::string word = bracedWord(argument, at);
      const bool isVariable = at > 0 && argument[at - 1] == '$';
      if (!word.empty() && !isVariable && word != kModulePlaceholder &&
          word != kConsumerPlaceholder) {
        refusePlaceholder(word, argument);
      }
    }
  }
}

void requireModulePlaceholder(const Options& options) {
  if (options.agent.empty() && expand(options.command, kModulePlaceholder, "") == options.command) {
    throw UsageError(std::string("the command of the host has no ") + kModulePlaceholder +
                     ", so the host cannot load the module and the probe");
  }
}

}  // namespace

Options parseOptions(int argc, const char* const argv[], const DefaultPaths& defaults) {
  Options options;
  options.module = defaults.module;
  options.probe = defaults.probe;
  int seconds = static_cast<int>(options.timeout.count());
  CLI::App app("Checks that a host of the module keeps the contracts", "topo-conformance");
  describe(app, options, seconds);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    std::ostringstream out;
    app.exit(request, out, out);
    options.notice = out.str();
    return options;
  } catch (const CLI::ParseError& failure) {
    throw UsageError(failure.what());
  }
  options.timeout = std::chrono::seconds(seconds);
  requireOneHost(options);
  requireKnownPlaceholders(options.command);
  requireModulePlaceholder(options);
  return options;
}

}  // namespace conformance
