// The row of the command that prints notifications.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>

#include "client/base/Decimal.h"
#include "client/commandline/CommandSyntax.h"

namespace topoctl {
namespace {

constexpr const char* kListen = "--listen";
constexpr const char* kCount = "--count";

void addWatchOptions(CLI::App& command) {
  command
      .add_option(kListen, CLI::callback_t(),
                  "Where the agent reaches this machine; 127.0.0.1 and any free port unless given")
      ->type_name("HOST[:PORT]")
      ->take_last();
  command
      .add_option(kCount, CLI::callback_t(), "End after so many notifications; never unless given")
      ->type_name("N")
      ->take_last();
}

[[noreturn]] void badListen(const std::string& text) {
  usageError(std::string(kListen) + ": '" + text +
             "' is not HOST or HOST:PORT, an IPv6 address in brackets");
}

// Returns the host at the begin of the text. Sets `rest` to the text after the host.
std::string takeHost(const std::string& typed, std::string& rest) {
  const bool bracketed = typed.rfind('[', 0) == 0;
  const std::size_t end = typed.find(bracketed ? ']' : ':');
  if (bracketed && end == std::string::npos) {
    badListen(typed);
  }
  rest = end == std::string::npos ? "" : typed.substr(end + (bracketed ? 1 : 0));
  return bracketed ? typed.substr(1, end - 1) : typed.substr(0, end);
}

ListenAddress parseListen(const std::string& typed) {
  std::string rest;
  const std::string host = takeHost(typed, rest);
  const bool hostIsValid = !host.empty() && std::none_of(host.begin(), host.end(), [](char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == '[' || c == ']' || c == '/';
  });
  if (!hostIsValid) {
    badListen(typed);
  }
  if (rest.empty()) {
    return {host, 0};
  }
  const std::string text = rest.substr(1);
  const bool isDecimal = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  if (rest.front() != ':' || !isDecimal) {
    badListen(typed);
  }
  const auto port = parseDecimal<std::uint16_t>(text);
  if (!port || (*port == 0 && text != "0")) {
    usageError(std::string(kListen) + ": the port '" + text + "' is not a number from 0 to 65535");
  }
  return {host, *port};
}

void readWatch(const CLI::App& command, const Words&, Arguments& arguments) {
  const Words& listen = command.get_option(kListen)->results();
  if (!listen.empty()) {
    arguments.listen = parseListen(listen.back());
  }
  const Words& count = command.get_option(kCount)->results();
  if (!count.empty()) {
    const auto parsed = parseDecimal<std::uint32_t>(count.back());
    if (!parsed || *parsed == 0) {
      usageError(std::string(kCount) + ": '" + count.back() + "' is not a number from 1 to " +
                 std::to_string(std::numeric_limits<std::uint32_t>::max()));
    }
    arguments.count = *parsed;
  }
}

}  // namespace

std::vector<CommandSyntax> watchSyntax() {
  return {{"watch",
           "Prints what changes, until it is interrupted",
           {{}, addWatchOptions, readWatch},
           Formats::kTableAndJson,
           "events of different kinds have no columns in common",
           "[--listen HOST[:PORT]] [--count N]"}};
}

}  // namespace topoctl
