// The rows of the commands that call the agent's console.

#include <CLI/CLI.hpp>
#include <string_view>

#include "client/base/Decimal.h"
#include "client/commandline/CommandSyntax.h"

namespace topoctl {
namespace {

constexpr const char* kParent = "--parent";
constexpr const char* kParentKind = "--parent-kind";
constexpr const char* kName = "--name";
constexpr const char* kKind = "--kind";
constexpr const char* kParams = "--params";
constexpr const char* kAttribute = "--attribute";

void addText(CLI::App& command, const char* name, const char* type, const char* help) {
  command.add_option(name, CLI::callback_t(), help)->type_name(type)->take_last();
}

void addNodeOptions(CLI::App& command) {
  addText(command, kParent, "ID", "The node that it is below; none unless given");
  addText(command, kParentKind, "KIND",
          "What the parent is: subnetwork or element; the agent knows unless given");
  addText(command, kName, "NAME", "The name that people see; must be given");
  addText(command, kKind, "KIND", "What it is: subnetwork (unless given) or element");
  addText(command, kParams, "A,B", "Its two numbers; 0,0 unless given");
  command.add_option(kAttribute, CLI::callback_t(), "An attribute; once for each, in order")
      ->type_name("NAME=VALUE")
      ->take_all();
}

// The value of an option that was typed last, or `otherwise` without the option.
std::string lastTyped(const CLI::App& command, const char* option, const char* otherwise) {
  const Words& typed = command.get_option(option)->results();
  return typed.empty() ? otherwise : typed.back();
}

NodeKind parseKind(const CLI::App& command, const char* option, NodeKind otherwise) {
  const Words& typed = command.get_option(option)->results();
  if (typed.empty()) {
    return otherwise;
  }
  const std::string& text = typed.back();
  if (text != "subnetwork" && text != "element") {
    usageError(std::string(option) + ": '" + text + "' is neither subnetwork nor element");
  }
  return text == "element" ? NodeKind::kElement : NodeKind::kSubnetwork;
}

void readParams(const CLI::App& command, TypedNode& node) {
  const std::string text = lastTyped(command, kParams, "0,0");
  const std::string_view all = text;
  const std::size_t comma = all.find(',');
  const bool hasComma = comma != std::string_view::npos;
  const auto first = parseDecimal<std::int32_t>(all.substr(0, comma));
  const auto second = parseDecimal<std::int32_t>(hasComma ? all.substr(comma + 1) : "");
  if (!first || !second) {
    usageError(std::string(kParams) + ": '" + text +
               "' is not A,B, two numbers from -2147483648 to 2147483647");
  }
  node.param1 = *first;
  node.param2 = *second;
}

void requireWords(const char* command, const Words& words, std::size_t count,
                  const char* whatIsMissing) {
  if (words.size() < count) {
    usageError(std::string(command) + ": " + whatIsMissing);
  }
}

void readNewNode(const CLI::App& command, const Words& words, Arguments& arguments) {
  requireWords("node create", words, 1, "an ID is missing");
  if (command.count(kName) == 0) {
    usageError("node create: --name is missing");
  }
  TypedNode& node = arguments.node;
  node.id = words.front();
  node.parent = lastTyped(command, kParent, "");
  node.parentKind = parseKind(command, kParentKind, NodeKind::kOfParent);
  node.name = lastTyped(command, kName, "");
  node.kind = parseKind(command, kKind, NodeKind::kSubnetwork);
  readParams(command, node);
  for (const std::string& text : command.get_option(kAttribute)->results()) {
    node.attributes.push_back(splitPair(kAttribute, text, "NAME=VALUE"));
  }
}

void readNode(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("node delete", words, 1, "an ID is missing");
  arguments.node.id = words.front();
}

void readNewName(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("node rename", words, 2,
               words.empty() ? "ID and NAME are missing" : "a NAME is missing");
  arguments.node.id = words[0];
  arguments.node.name = words[1];
}

void readFileName(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("import", words, 1, "a FILE is missing");
  arguments.file = words.front();
}

void readNewFileName(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("backup", words, 1, "a FILE is missing");
  arguments.file = words.front();
}

void readSwitch(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("test-switch", words, 1, "on or off is missing");
  if (words.front() != "on" && words.front() != "off") {
    usageError("test-switch: '" + words.front() + "' is neither on nor off");
  }
  arguments.on = words.front() == "on";
}

}  // namespace

std::vector<CommandSyntax> consoleSyntax() {
  const Place id = {"ID", "The node's key in the agent"};
  const Place newName = {"NAME", "The name that people see"};
  const Place file = {"FILE", "A network file on this machine"};
  const Place newFile = {"FILE", "A new file on this machine"};
  const Place state = {"STATE", "on or off"};
  return {
      {"node create", "Creates a topology node", {{id}, addNodeOptions, readNewNode}},
      {"node delete", "Deletes a topology node and what is below it", {{id}, nullptr, readNode}},
      {"node rename", "Gives a topology node another name", {{id, newName}, nullptr, readNewName}},
      {"import", "Adds the network of a file to the agent's", {{file}, nullptr, readFileName}},
      {"backup",
       "Writes a copy of the agent's store to a new file",
       {{newFile}, nullptr, readNewFileName}},
      {"test-switch", "Turns the agent's test switch on or off", {{state}, nullptr, readSwitch}},
      {"status", "How the agent is, and who receives its notifications", {}},
      {"module reload", "Takes the module out of the agent and puts it in again", {}},
  };
}

}  // namespace topoctl
