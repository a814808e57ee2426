// The arguments of commands on an object that a name tells.

#include <CLI/CLI.hpp>
#include <algorithm>

#include "client/commandline/ArgumentKind.h"
#include "client/commands/SetAttribute.h"

namespace topoctl {
namespace {

constexpr const char* kName = "--name";
constexpr const char* kUnique = "--unique";

void addWholeName(CLI::App& command) {
  command
      .add_option(kName, CLI::callback_t(),
                  "A pair of the whole name, sent as given; once for each pair, in order")
      ->type_name("NAME=VALUE")
      ->take_all();
}

void addAttributeOptions(CLI::App& command) {
  addWholeName(command);
  command.add_flag(kUnique, "Ask for a refusal when another object has this user label");
}

void readWholeName(const CLI::App& command, Arguments& arguments) {
  for (const std::string& text : command.get_option(kName)->results()) {
    arguments.object.push_back(splitPair(kName, text, "NAME=VALUE"));
  }
  arguments.isWholeName = !arguments.object.empty();
}

void readSubnetwork(const CLI::App& command, const Words& words, Arguments& arguments) {
  readWholeName(command, arguments);
  if (arguments.isWholeName && !words.empty()) {
    usageError("below: ID and --name exclude each other");
  }
  if (!arguments.isWholeName && words.empty()) {
    usageError("below: an ID is missing, or a whole name given with --name");
  }
  if (!arguments.isWholeName) {
    arguments.object = {{"TopoSubnetwork", words.front()}};
  }
}

std::string attributeNames() {
  std::string names;
  for (const Attribute& attribute : attributes()) {
    names += (names.empty() ? "" : ", ") + std::string(attribute.name);
  }
  return names;
}

const Attribute& attributeOf(const Words& words) {
  if (words.empty()) {
    usageError("set: an attribute is missing; the attributes are: " + attributeNames());
  }
  const auto found = std::find_if(
      attributes().begin(), attributes().end(),
      [&words](const Attribute& attribute) { return attribute.name == words.front(); });
  if (found == attributes().end()) {
    usageError("set: '" + words.front() +
               "' is not an attribute; the attributes are: " + attributeNames());
  }
  return *found;
}

void checkCount(const std::string& where, std::size_t count, bool isWholeName) {
  const std::size_t wanted = isWholeName ? 2 : 3;
  if (count > wanted) {
    usageError(where + ": OBJECT and --name exclude each other");
  }
  if (count + 1 < wanted) {
    usageError(where + ": OBJECT (or --name) and VALUE are missing");
  }
  if (count < wanted) {
    usageError(where +
               (isWholeName ? ": VALUE is missing" : ": OBJECT (or --name) or VALUE is missing"));
  }
}

void readValue(const std::string& where, const Attribute& attribute, const std::string& text,
               Arguments& arguments) {
  if (attribute.isPairs) {
    arguments.pair = splitPair(where + ": VALUE", text, "NAME=TEXT");
  } else {
    arguments.value = text;
  }
}

void readAttribute(const CLI::App& command, const Words& words, Arguments& arguments) {
  readWholeName(command, arguments);
  const Attribute& attribute = attributeOf(words);
  const std::string where = std::string("set ") + attribute.name;
  checkCount(where, words.size(), arguments.isWholeName);
  arguments.attribute = attribute.name;
  arguments.unique = command.count(kUnique) > 0;
  if (arguments.unique && !attribute.mayBeUnique) {
    usageError(where + ": --unique is for user-label alone");
  }
  if (!arguments.isWholeName) {
    arguments.object = {splitPair(where + ": OBJECT", words[1], "CLASS=VALUE")};
  }
  readValue(where, attribute, words.back(), arguments);
}

}  // namespace

const ArgumentKind kSubnetworkArguments = {
    {{"ID", "The subnetwork, as (TopoSubnetwork, ID) of the agent's own EMS"}},
    addWholeName,
    readSubnetwork};

const ArgumentKind kAttributeArguments = {
    {{"ATTRIBUTE", "user-label, owner, native-name or info"},
     {"OBJECT", "CLASS=VALUE, an object of the agent's own EMS; left out with --name"},
     {"VALUE", "What to set; NAME=TEXT for info, where an empty TEXT removes"}},
    addAttributeOptions,
    readAttribute};

}  // namespace topoctl
