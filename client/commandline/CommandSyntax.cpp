#include "client/commandline/CommandSyntax.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

#include "client/base/Failure.h"

namespace topoctl {
namespace {

// The text itself when it does not start with the prefix.
std::string withoutPrefix(const std::string& text, std::string_view prefix) {
  return text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : text;
}

// The words as typed. The conversions of the library would interpret brackets.
Words wordsOf(const CLI::App& command, const ArgumentSyntax& syntax) {
  Words words;
  for (const Place& place : syntax.places) {
    const Words& typed = command.get_option(place.name)->results();
    words.insert(words.end(), typed.begin(), typed.end());
  }
  return words;
}

// " [--FLAG] [--OPTION TYPE] [--LIST TYPE]..." for the options of the command only.
std::string usageOfOptions(const ArgumentSyntax& syntax) {
  if (syntax.addOptions == nullptr) {
    return "";
  }
  CLI::App command;
  command.set_help_flag();
  syntax.addOptions(command);
  std::string usage;
  for (const CLI::Option* option : command.get_options()) {
    const bool isFlag = option->get_items_expected_max() == 0;
    const bool isList = option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    usage += " [" + option->get_name() + (isFlag ? "" : " " + option->get_type_name()) + "]" +
             (isList ? "..." : "");
  }
  return usage;
}

}  // namespace

const std::vector<CommandSyntax>& commandSyntax() {
  static const std::vector<CommandSyntax> table = [] {
    std::vector<CommandSyntax> all;
    for (const std::vector<CommandSyntax>& part :
         {managerSyntax(), watchSyntax(), consoleSyntax(), recordSyntax()}) {
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }();
  return table;
}

const CommandSyntax* findSyntax(const std::string& name) {
  const auto& table = commandSyntax();
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&name](const CommandSyntax& row) { return row.name == name; });
  return found == table.end() ? nullptr : &*found;
}

std::string usageOf(const CommandSyntax& command) {
  std::string usage = std::string("usage: topoctl ") + command.name;
  if (command.usage != nullptr) {
    return usage + " " + command.usage;
  }
  for (const Place& place : command.arguments.places) {
    usage += std::string(" ") + place.name;
  }
  return usage + usageOfOptions(command.arguments);
}

const std::vector<Group>& commandGroups() {
  static const std::vector<Group> table = {
      {"node", "Changes the topology: create, delete, rename, move, change"},
      {"element", "Changes network elements: create, rename, show, hide, delete"},
      {"clock-position", "Changes clock positions: create, change, delete"},
      {"clock-link", "Changes clock links: create, change, delete"},
      {"label", "Changes stored labels: set, delete"},
      {"module", "The agent's module: module reload"},
  };
  return table;
}

void usageError(const std::string& text) {
  throw Failure(ExitCode::kUsage, text);
}

TypedPair splitPair(const std::string& where, const std::string& text, const char* form) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) {
    usageError(where + ": '" + text + "' is not " + form);
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

void addArguments(CLI::App& command, const ArgumentSyntax& syntax) {
  // Declares each place as a separate option, so that "--" can be typed between any two places.
  for (const Place& place : syntax.places) {
    command.add_option(place.name, CLI::callback_t(), place.help);
  }
  if (syntax.addOptions != nullptr) {
    syntax.addOptions(command);
  }
}

std::string nodeId(const std::string& typed) {
  const std::string number = withoutPrefix(typed, "ManagedElement=");
  return number == typed ? withoutPrefix(typed, "TopoSubnetwork=") : "NE=" + number;
}

std::string elementNumber(const std::string& typed) {
  return withoutPrefix(withoutPrefix(typed, "ManagedElement="), "NE=");
}

std::string clockLinkId(const std::string& typed) {
  return withoutPrefix(typed, "ClockTopoLinkId=");
}

TypedPair objectPair(const TypedPair& typed) {
  return typed.name == "NE" ? TypedPair{"ManagedElement", typed.value} : typed;
}

Arguments readArguments(const CLI::App& command, const ArgumentSyntax& syntax) {
  Arguments arguments;
  if (syntax.read != nullptr) {
    syntax.read(command, wordsOf(command, syntax), arguments);
  }
  arguments.node.id = nodeId(arguments.node.id);
  arguments.node.parent = nodeId(arguments.node.parent);
  return arguments;
}

}  // namespace topoctl
