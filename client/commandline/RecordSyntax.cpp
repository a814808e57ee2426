// The rows of the commands that change single records of the agent's network: node move, node
// change, network elements, clock positions, clock links and labels.

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <optional>

#include "client/base/Decimal.h"
#include "client/commandline/CommandSyntax.h"
#include "client/commandline/ReadOptions.h"

namespace topoctl {
namespace {

constexpr const char* kParentKind = "--parent-kind";
constexpr const char* kParams = "--params";
constexpr const char* kAttribute = "--attribute";
constexpr const char* kNoAttributes = "--no-attributes";
constexpr const char* kName = "--name";
constexpr const char* kShown = "--shown";
constexpr const char* kLabel = "--label";
constexpr const char* kValues = "--values";
constexpr const char* kAEnd = "--a-end";
constexpr const char* kZEnd = "--z-end";

// "element create", as the parsed subcommand is called on the command line.
std::string nameOf(const CLI::App& command) {
  return command.get_parent()->get_name() + ' ' + command.get_name();
}

[[noreturn]] void missing(const CLI::App& command, const std::string& what) {
  usageError(nameOf(command) + ": " + what + " is missing");
}

// The word of a place. `what` names the expected word for the error, such as "an ID".
const std::string& wordAt(const CLI::App& command, const Words& words, std::size_t index,
                          const char* what) {
  if (words.size() <= index) {
    missing(command, what);
  }
  return words[index];
}

std::int32_t parseNumber(const CLI::App& command, const std::string& word) {
  const auto number = parseDecimal<std::int32_t>(word);
  if (!number) {
    usageError(nameOf(command) + ": '" + word + "' is not a number from -2147483648 to 2147483647");
  }
  return *number;
}

// ---- nodes

void addMoveOptions(CLI::App& command) {
  addText(command, kParentKind, "KIND",
          "What the parent is: subnetwork or element; the agent knows unless given");
}

void readMove(const CLI::App& command, const Words& words, Arguments& arguments) {
  TypedNode& node = arguments.node;
  node.id = wordAt(command, words, 0, "an ID");
  node.parent = wordAt(command, words, 1, "a PARENT");
  node.parentKind = readKind(command, kParentKind, NodeKind::kOfParent);
}

void addChangeOptions(CLI::App& command) {
  addText(command, kParams, "A,B", "Its two numbers");
  addPairs(command, kAttribute, "An attribute of the new list; once for each, in order");
  command.add_flag(kNoAttributes, "Removes all attributes");
}

void readChange(const CLI::App& command, const Words& words, Arguments& arguments) {
  TypedRecord& record = arguments.record;
  record.id = nodeId(wordAt(command, words, 0, "an ID"));
  record.numbers = readNumbers(command, kParams);
  const std::vector<TypedPair> attributes = readPairs(command, kAttribute);
  const bool removesAll = command.count(kNoAttributes) > 0;
  if (removesAll && !attributes.empty()) {
    usageError(std::string(kAttribute) + " and " + kNoAttributes + " exclude each other");
  }
  if (removesAll || !attributes.empty()) {
    record.attributes = attributes;
  }
  if (!record.numbers && !record.attributes) {
    missing(command, "an option");
  }
}

// ---- network elements

void addElementOptions(CLI::App& command) {
  addText(command, kName, "NAME", "The name that people see; empty unless given");
  command.add_flag(kShown, "The topology shows the element as a node of its own");
}

void readElement(const CLI::App& command, const Words& words, Arguments& arguments) {
  arguments.record.number =
      parseNumber(command, elementNumber(wordAt(command, words, 0, "a NUMBER")));
}

void readNewElement(const CLI::App& command, const Words& words, Arguments& arguments) {
  readElement(command, words, arguments);
  arguments.record.name = lastTyped(command, kName);
  arguments.on = command.count(kShown) > 0;
}

void readElementName(const CLI::App& command, const Words& words, Arguments& arguments) {
  readElement(command, words, arguments);
  arguments.record.name = wordAt(command, words, 1, "a NAME");
}

// ---- clock positions and clock links

void addPositionOptions(CLI::App& command) {
  addText(command, kLabel, "LABEL", "The name that people see");
  addText(command, kValues, "A,B", "Its two numbers");
}

void readReference(const CLI::App& command, const Words& words, Arguments& arguments) {
  arguments.record.id = nodeId(wordAt(command, words, 0, "a REFERENCE"));
}

void readPosition(const CLI::App& command, const Words& words, Arguments& arguments) {
  readReference(command, words, arguments);
  arguments.record.name = lastTyped(command, kLabel);
  arguments.record.numbers = readNumbers(command, kValues);
}

void readPositionChange(const CLI::App& command, const Words& words, Arguments& arguments) {
  readPosition(command, words, arguments);
  if (!arguments.record.name && !arguments.record.numbers) {
    missing(command, "an option");
  }
}

void addLinkOptions(CLI::App& command) {
  addText(command, kName, "NAME", "The name that people see, such as SDH/Oslo-Bergen");
  addText(command, kAEnd, "REFERENCE", "The clock position at one end, such as NE=5");
  addText(command, kZEnd, "REFERENCE", "The clock position at the other end");
}

void readLinkId(const CLI::App& command, const Words& words, Arguments& arguments) {
  arguments.record.id = clockLinkId(wordAt(command, words, 0, "an ID"));
}

// The key of a clock position at an end of a link.
std::optional<std::string> readEnd(const CLI::App& command, const char* option) {
  const std::optional<std::string> typed = lastTyped(command, option);
  return typed ? std::optional(nodeId(*typed)) : typed;
}

void readLink(const CLI::App& command, const Words& words, Arguments& arguments) {
  readLinkId(command, words, arguments);
  arguments.record.name = lastTyped(command, kName);
  arguments.record.aEnd = readEnd(command, kAEnd);
  arguments.record.zEnd = readEnd(command, kZEnd);
}

void readLinkChange(const CLI::App& command, const Words& words, Arguments& arguments) {
  readLink(command, words, arguments);
  const TypedRecord& record = arguments.record;
  if (!record.name && !record.aEnd && !record.zEnd) {
    missing(command, "an option");
  }
}

// ---- labels

void readLabelled(const CLI::App& command, const Words& words, Arguments& arguments) {
  arguments.record.number = parseNumber(command, wordAt(command, words, 0, "a TYPE"));
  arguments.record.id = wordAt(command, words, 1, "an ID");
}

void readLabel(const CLI::App& command, const Words& words, Arguments& arguments) {
  readLabelled(command, words, arguments);
  arguments.record.name = wordAt(command, words, 2, "a LABEL");
}

}  // namespace

std::vector<CommandSyntax> recordSyntax() {
  const Place id = {"ID", "The node's key in the agent", Values::kNode};
  const Place parent = {"PARENT", "The key of the new parent; '' makes the node a root",
                        Values::kNode};
  const Place newNumber = {"NUMBER", "The number of the element"};
  const Place number = {"NUMBER", "The number of the element", Values::kElement};
  const Place name = {"NAME", "The name that people see"};
  const Place newReference = {"REFERENCE", "The position's key in the agent, such as NE=5"};
  const Place reference = {"REFERENCE", "The position's key in the agent, such as NE=5",
                           Values::kClockPosition};
  const Place newLink = {"ID", "The link's key in the agent"};
  const Place link = {"ID", "The link's key in the agent", Values::kClockLink};
  const Place type = {"TYPE", "The type of the object; 201 is a clock link"};
  const Place object = {"ID", "The key of the object in the agent"};
  const Place label = {"LABEL", "The user label"};
  return {
      {"node move", "Gives a node another parent", {{id, parent}, addMoveOptions, readMove}},
      {"node change", "Replaces fields of a node", {{id}, addChangeOptions, readChange}},
      {"element create",
       "Creates a network element",
       {{newNumber}, addElementOptions, readNewElement}},
      {"element rename",
       "Gives a network element another name",
       {{number, name}, nullptr, readElementName}},
      {"element show",
       "Declares that the topology shows an element as a node",
       {{number}, nullptr, readElement}},
      {"element hide", "Ends that declaration", {{number}, nullptr, readElement}},
      {"element delete", "Deletes a network element", {{number}, nullptr, readElement}},
      {"clock-position create",
       "Creates a clock position",
       {{newReference}, addPositionOptions, readPosition}},
      {"clock-position change",
       "Replaces fields of a clock position",
       {{reference}, addPositionOptions, readPositionChange}},
      {"clock-position delete", "Deletes a clock position", {{reference}, nullptr, readReference}},
      {"clock-link create", "Creates a clock link", {{newLink}, addLinkOptions, readLink}},
      {"clock-link change",
       "Replaces fields of a clock link",
       {{link}, addLinkOptions, readLinkChange}},
      {"clock-link delete", "Deletes a clock link", {{link}, nullptr, readLinkId}},
      {"label set", "Stores a label of any object", {{type, object, label}, nullptr, readLabel}},
      {"label delete", "Deletes a stored label", {{type, object}, nullptr, readLabelled}},
  };
}

}  // namespace topoctl
