// The rows of the commands that call the agent's console.

#include <CLI/CLI.hpp>

#include "client/base/Decimal.h"
#include "client/commandline/CommandSyntax.h"
#include "client/commandline/ReadOptions.h"

namespace topoctl {
namespace {

constexpr const char* kParent = "--parent";
constexpr const char* kParentKind = "--parent-kind";
constexpr const char* kName = "--name";
constexpr const char* kKind = "--kind";
constexpr const char* kParams = "--params";
constexpr const char* kAttribute = "--attribute";
constexpr const char* kReplace = "--replace";
constexpr const char* kDryRun = "--dry-run";
constexpr const char* kFirstElement = "--first-element";

void addNodeOptions(CLI::App& command) {
  addText(command, kParent, "ID", "The node that it is below; none unless given");
  addText(command, kParentKind, "KIND",
          "What the parent is: subnetwork or element; the agent knows unless given");
  addText(command, kName, "NAME", "The name that people see; must be given");
  addText(
      command, kKind, "KIND",
      "What it is: subnetwork or element; unless given, as the class in ID says, or a subnetwork");
  addText(command, kParams, "A,B", "Its two numbers; 0,0 unless given");
  addPairs(command, kAttribute, "An attribute; once for each, in order");
}

// The kind that an ID in the spelling of tables contains.
std::optional<NodeKind> spelledKind(const std::string& id) {
  if (id.rfind("ManagedElement=", 0) == 0) {
    return NodeKind::kElement;
  }
  if (id.rfind("TopoSubnetwork=", 0) == 0) {
    return NodeKind::kSubnetwork;
  }
  return std::nullopt;
}

NodeKind readNewKind(const CLI::App& command, const std::string& id) {
  const std::optional<NodeKind> spelled = spelledKind(id);
  const NodeKind kind = readKind(command, kKind, spelled.value_or(NodeKind::kSubnetwork));
  if (spelled && kind != *spelled) {
    usageError("--kind: '" + id + "' is not the name of " +
               (kind == NodeKind::kElement ? "an element" : "a subnetwork"));
  }
  return kind;
}

void readNewNode(const CLI::App& command, const Words& words, Arguments& arguments) {
  requireWords("node create", words, 1, "an ID is missing");
  if (command.count(kName) == 0) {
    usageError("node create: --name is missing");
  }
  TypedNode& node = arguments.node;
  node.id = words.front();
  node.parent = lastTyped(command, kParent).value_or("");
  node.parentKind = readKind(command, kParentKind, NodeKind::kOfParent);
  node.name = lastTyped(command, kName).value_or("");
  node.kind = readNewKind(command, node.id);
  node.params = readNumbers(command, kParams).value_or(TypedNumbers());
  node.attributes = readPairs(command, kAttribute);
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

void addImportOptions(CLI::App& command) {
  command.add_flag(kReplace, "Replaces the network instead of adding to it");
  command.add_flag(kDryRun, "Checks and counts, and changes nothing");
  addText(command, kFirstElement, "N", "Numbers the elements of a GraphML file from N");
}

void readImport(const CLI::App& command, const Words& words, Arguments& arguments) {
  requireWords("import", words, 1, "a FILE is missing");
  arguments.file = words.front();
  arguments.replace = command.count(kReplace) > 0;
  arguments.dryRun = command.count(kDryRun) > 0;
  if (const auto typed = lastTyped(command, kFirstElement)) {
    const auto number = parseDecimal<std::int32_t>(*typed);
    if (!number || *number < 1) {
      usageError(std::string(kFirstElement) + ": '" + *typed +
                 "' is not a number from 1 to 2147483647");
    }
    arguments.firstElement = *number;
  }
}

void readNewFileName(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("backup", words, 1, "a FILE is missing");
  arguments.file = words.front();
}

void readExportName(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("export", words, 1, "a FILE is missing");
  arguments.file = words.front();
}

// A restore is an import that replaces the network.
void readRestore(const CLI::App&, const Words& words, Arguments& arguments) {
  requireWords("restore", words, 1, "a FILE is missing");
  arguments.file = words.front();
  arguments.replace = true;
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
  const Place newId = {"ID", "The node's key in the agent"};
  const Place id = {"ID", "The node's key in the agent", Values::kNode};
  const Place newName = {"NAME", "The name that people see"};
  const Place file = {"FILE", "A network file on this machine", Values::kFile};
  const Place newFile = {"FILE", "A new file on this machine", Values::kFile};
  const Place state = {"STATE", "on or off", Values::kSwitch};
  return {
      {"node create",
       "Creates a topology node",
       {{newId}, addNodeOptions, readNewNode},
       Formats::kAll,
       nullptr,
       "ID --name NAME [--parent ID] [--parent-kind KIND] [--kind KIND] [--params A,B] "
       "[--attribute NAME=VALUE]..."},
      {"node delete", "Deletes a topology node and what is below it", {{id}, nullptr, readNode}},
      {"node rename", "Gives a topology node another name", {{id, newName}, nullptr, readNewName}},
      {"import",
       "Adds the network of a file to the agent's",
       {{file}, addImportOptions, readImport}},
      {"backup",
       "Writes a copy of the agent's store to a new file",
       {{newFile}, nullptr, readNewFileName}},
      {"export",
       "Writes the agent's network, with all attributes, to a new network file",
       {{newFile}, nullptr, readExportName}},
      {"restore",
       "Replaces the agent's network by an exported file",
       {{file}, nullptr, readRestore}},
      {"test-switch", "Turns the agent's test switch on or off", {{state}, nullptr, readSwitch}},
      {"status", "How the agent is, and who receives its notifications", {}},
      {"module reload", "Takes the module out of the agent and puts it in again", {}},
  };
}

}  // namespace topoctl
